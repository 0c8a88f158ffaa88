#pragma once
/// IFloat for every node with a float, and the other view of such a number as an integer.
#include <algorithm>
#include <memory>

#include "GenApi/IFloat.h"
#include "core/Evaluation.h"
#include "core/NumberText.h"
#include "core/ValueNode.h"

namespace genapi {

/// Throw OutOfRangeException with the node's name and the value.
void checkFloatRange(Node& node, double value);
void checkFloatIncrement(Node& node, double value);
std::int64_t roundForNode(const Node& node, double value);
/// The integers that lie in a range of floats.
std::int64_t integerAtLeast(double min);
std::int64_t integerAtMost(double max);

/// Base is ValueNode or RegisterNode. Derived classes say how the value is had (computeFloat, storeFloat) and
/// what their range is.
template<class Base>
class FloatInterface : public Base, public GenApi_3_0::IFloat {
public:
    using Base::Base;

    // IFloat.
    void SetValue(double Value, bool Verify) override {
        const Operation operation(this->map());
        if (Verify)
            this->requireWritable();
        writeFloat(Value, Verify);
    }
    double GetValue(bool Verify, bool IgnoreCache) override {
        const Operation operation(this->map());
        this->requireReadable();
        const double value = readFloat({IgnoreCache});
        if (Verify)
            checkFloatRange(*this, value);
        return value;
    }
    double GetMin() override {
        const Operation operation(this->map());
        return minFloat();
    }
    double GetMax() override {
        const Operation operation(this->map());
        return maxFloat();
    }
    bool HasInc() override {
        const Operation operation(this->map());
        return incFloat() > 0;
    }
    GenApi_3_0::EIncMode GetIncMode() override {
        const Operation operation(this->map());
        this->checkFault();
        if (this->validFloats() != nullptr)
            return GenApi_3_0::listIncrement;
        return incFloat() > 0 ? GenApi_3_0::fixedIncrement : GenApi_3_0::noIncrement;
    }
    double GetInc() override {
        const Operation operation(this->map());
        const double inc = incFloat();
        if (!(inc > 0))
            throw LOGICAL_ERROR_EXCEPTION("%s has no increment", this->label().c_str());
        return inc;
    }
    GenApi_3_0::double_autovector_t GetListOfValidValues(bool bounded) override {
        const Operation operation(this->map());
        this->checkFault();
        const std::vector<double>* all = this->validFloats();
        if (all == nullptr)
            return {};
        if (!bounded)
            return *all;
        const double min = minFloat();
        const double max = maxFloat();
        GenApi_3_0::double_autovector_t inside;
        for (const double value : *all)
            if (value >= min && value <= max)
                inside.push_back(value);
        return inside;
    }
    GenApi_3_0::ERepresentation GetRepresentation() override {
        const Operation operation(this->map());
        const GenApi_3_0::ERepresentation given = this->representation();
        return given == GenApi_3_0::_UndefinedRepresentation ? GenApi_3_0::PureNumber : given;
    }
    GenICam_3_0::gcstring GetUnit() const override {
        const Operation operation(this->map());
        const std::string_view unit = const_cast<FloatInterface&>(*this).unit();
        return {unit.data(), unit.size()};
    }
    GenApi_3_0::EDisplayNotation GetDisplayNotation() const override {
        const Operation operation(this->map());
        return const_cast<FloatInterface&>(*this).shownNotation();
    }
    int64_t GetDisplayPrecision() const override {
        const Operation operation(this->map());
        return const_cast<FloatInterface&>(*this).shownPrecision();
    }
    void ImposeMin(double Value) override {
        const Operation operation(this->map());
        imposed().min = Value;
        this->map().changed(*this);
    }
    void ImposeMax(double Value) override {
        const Operation operation(this->map());
        imposed().max = Value;
        this->map().changed(*this);
    }

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIFloat ? static_cast<GenApi_3_0::IFloat*>(this)
                                              : Base::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIFloat; }

    // The number protocol.
    double readFloat(Reading how) override {
        if (this->valueCached() && !how.ignoreCache)
            return this->m_cached.floating;
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Value);
        const CacheScope scope(this->map());
        const double value = computeFloat(how);
        this->m_cached.floating = value;
        this->m_valueEpoch = scope.cacheable() ? this->map().epoch() : 0;
        return value;
    }
    std::int64_t readInteger(Reading how) override { return roundForNode(*this, readFloat(how)); }
    void writeFloat(double value, bool verify) override {
        this->checkFault();
        if (verify) {
            checkFloatRange(*this, value);
            checkFloatIncrement(*this, value);
        }
        const Evaluation evaluation(*this, Evaluation::Write);
        storeFloat(value, verify);
    }
    void writeInteger(std::int64_t value, bool verify) override {
        writeFloat(static_cast<double>(value), verify);
    }
    double minFloat() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Min);
        const double own = ownMin();
        return m_imposed && m_imposed->min ? std::max(own, *m_imposed->min) : own;
    }
    double maxFloat() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Max);
        const double own = ownMax();
        return m_imposed && m_imposed->max ? std::min(own, *m_imposed->max) : own;
    }
    double incFloat() override {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Inc);
        return ownInc();
    }
    std::int64_t minInteger() override { return integerAtLeast(minFloat()); }
    std::int64_t maxInteger() override { return integerAtMost(maxFloat()); }
    std::int64_t incInteger() override { return 1; }

protected:
    virtual double computeFloat(Reading how) = 0;
    virtual void storeFloat(double value, bool verify) = 0;
    virtual double ownMin() = 0;
    virtual double ownMax() = 0;
    /// 0 for none.
    virtual double ownInc() { return 0; }

    std::string toText(bool verify, Reading how) override {
        const double value = readFloat(how);
        if (verify)
            checkFloatRange(*this, value);
        const bool plain = this->displayPrecision() < 0 && shownNotation() == GenApi_3_0::fnAutomatic;
        return plain ? formatFloat(value) : formatFloat(value, shownNotation(), shownPrecision());
    }
    void fromText(const std::string& text, bool verify) override {
        double value = 0;
        if (!parseFloat(text, value))
            this->throwBadText(text, "number");
        writeFloat(value, verify);
    }

private:
    GenApi_3_0::EDisplayNotation shownNotation() {
        const GenApi_3_0::EDisplayNotation given = this->displayNotation();
        return given == GenApi_3_0::_UndefinedEDisplayNotation ? GenApi_3_0::fnAutomatic : given;
    }
    std::int64_t shownPrecision() {
        const std::int64_t given = this->displayPrecision();
        return given < 0 ? 6 : given;
    }
    ImposedRange<double>& imposed() {
        if (!m_imposed)
            m_imposed = std::make_unique<ImposedRange<double>>();
        return *m_imposed;
    }

    std::unique_ptr<ImposedRange<double>> m_imposed;
};

} // namespace genapi
