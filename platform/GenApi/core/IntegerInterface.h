#pragma once
/// IInteger for every node with an integer, and the other view of such a number as a float.
#include <algorithm>
#include <memory>

#include "GenApi/IInteger.h"
#include "core/Evaluation.h"
#include "core/NumberText.h"
#include "core/ValueNode.h"

namespace genapi {

/// Throw OutOfRangeException with the node's name and the value.
void checkIntegerRange(Node& node, std::int64_t value);
void checkIntegerIncrement(Node& node, std::int64_t value);
std::int64_t roundForNode(const Node& node, double value);

/// Base is ValueNode or RegisterNode. Derived classes say how the value is had (computeInteger, storeInteger)
/// and what their range is (ownMin, ownMax and so on).
template<class Base>
class IntegerInterface : public Base, public GenApi_3_0::IInteger {
public:
    using Base::Base;

    // IInteger.
    void SetValue(int64_t Value, bool Verify) override {
        const Operation operation(this->map());
        if (Verify)
            this->requireWritable();
        writeInteger(Value, Verify);
    }
    int64_t GetValue(bool Verify, bool IgnoreCache) override {
        const Operation operation(this->map());
        this->requireReadable();
        const std::int64_t value = readInteger({IgnoreCache});
        if (Verify)
            checkIntegerRange(*this, value);
        return value;
    }
    int64_t GetMin() override {
        const Operation operation(this->map());
        return minInteger();
    }
    int64_t GetMax() override {
        const Operation operation(this->map());
        return maxInteger();
    }
    GenApi_3_0::EIncMode GetIncMode() override {
        const Operation operation(this->map());
        this->checkFault();
        return this->validIntegers() != nullptr ? GenApi_3_0::listIncrement : GenApi_3_0::fixedIncrement;
    }
    int64_t GetInc() override {
        const Operation operation(this->map());
        return incInteger();
    }
    GenApi_3_0::int64_autovector_t GetListOfValidValues(bool bounded) override {
        const Operation operation(this->map());
        this->checkFault();
        const std::vector<std::int64_t>* all = this->validIntegers();
        if (all == nullptr)
            return {};
        if (!bounded)
            return *all;
        const std::int64_t min = minInteger();
        const std::int64_t max = maxInteger();
        GenApi_3_0::int64_autovector_t inside;
        for (const std::int64_t value : *all)
            if (value >= min && value <= max)
                inside.push_back(value);
        return inside;
    }
    GenApi_3_0::ERepresentation GetRepresentation() override {
        const Operation operation(this->map());
        return shownRepresentation();
    }
    GenICam_3_0::gcstring GetUnit() const override {
        const Operation operation(this->map());
        const std::string_view unit = const_cast<IntegerInterface&>(*this).unit();
        return {unit.data(), unit.size()};
    }
    void ImposeMin(int64_t Value) override {
        const Operation operation(this->map());
        imposed().min = Value;
        this->map().changed(*this);
    }
    void ImposeMax(int64_t Value) override {
        const Operation operation(this->map());
        imposed().max = Value;
        this->map().changed(*this);
    }

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIInteger ? static_cast<GenApi_3_0::IInteger*>(this)
                                                : Base::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIInteger; }

    // The number protocol.
    std::int64_t readInteger(Reading how) override {
        if (this->valueCached() && !how.ignoreCache)
            return this->m_cached.integer;
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Value);
        const CacheScope scope(this->map());
        const std::int64_t value = computeInteger(how);
        this->m_cached.integer = value;
        this->m_valueEpoch = scope.cacheable() ? this->map().epoch() : 0;
        return value;
    }
    double readFloat(Reading how) override { return static_cast<double>(readInteger(how)); }
    void writeInteger(std::int64_t value, bool verify) override {
        this->checkFault();
        if (verify) {
            checkIntegerRange(*this, value);
            checkIntegerIncrement(*this, value);
        }
        const Evaluation evaluation(*this, Evaluation::Write);
        storeInteger(value, verify);
    }
    void writeFloat(double value, bool verify) override { writeInteger(roundForNode(*this, value), verify); }
    std::int64_t minInteger() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Min);
        const std::int64_t own = ownMin();
        return m_imposed && m_imposed->min ? std::max(own, *m_imposed->min) : own;
    }
    std::int64_t maxInteger() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Max);
        const std::int64_t own = ownMax();
        return m_imposed && m_imposed->max ? std::min(own, *m_imposed->max) : own;
    }
    std::int64_t incInteger() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Inc);
        return std::max<std::int64_t>(1, ownInc());
    }
    double minFloat() override { return static_cast<double>(minInteger()); }
    double maxFloat() override { return static_cast<double>(maxInteger()); }
    // A float that is kept in an integer is rounded by it, not refused between two of them.
    double incFloat() override { return 0; }

protected:
    virtual std::int64_t computeInteger(Reading how) = 0;
    virtual void storeInteger(std::int64_t value, bool verify) = 0;
    virtual std::int64_t ownMin() = 0;
    virtual std::int64_t ownMax() = 0;
    virtual std::int64_t ownInc() { return 1; }

    std::string toText(bool verify, Reading how) override {
        const std::int64_t value = readInteger(how);
        if (verify)
            checkIntegerRange(*this, value);
        return formatInteger(value, shownRepresentation());
    }
    void fromText(const std::string& text, bool verify) override {
        std::int64_t value = 0;
        if (!parseInteger(text, shownRepresentation(), value))
            this->throwBadText(text, "integer");
        writeInteger(value, verify);
    }

private:
    GenApi_3_0::ERepresentation shownRepresentation() {
        const GenApi_3_0::ERepresentation given = this->representation();
        return given == GenApi_3_0::_UndefinedRepresentation ? GenApi_3_0::PureNumber : given;
    }
    ImposedRange<std::int64_t>& imposed() {
        if (!m_imposed)
            m_imposed = std::make_unique<ImposedRange<std::int64_t>>();
        return *m_imposed;
    }

    std::unique_ptr<ImposedRange<std::int64_t>> m_imposed;
};

} // namespace genapi
