#pragma once
/// What IInteger and IFloat have in common, for every node with a number.
#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"
#include "core/Evaluation.h"
#include "core/NumberText.h"
#include "core/ValueNode.h"

namespace genapi {

/// The number protocol of nodes for one of the two types, so that templates need not tell them apart.
template<class T>
struct NumberOf;

template<>
struct NumberOf<std::int64_t> {
    using Interface = GenApi_3_0::IInteger;
    static constexpr GenApi_3_0::EInterfaceType type = GenApi_3_0::intfIInteger;
    static constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    static constexpr std::int64_t noIncrement = 1;

    static std::int64_t read(Node& node, Reading how) { return node.readInteger(how); }
    static void write(Node& node, std::int64_t value, bool verify) { node.writeInteger(value, verify); }
    static std::int64_t min(Node& node) { return node.minInteger(); }
    static std::int64_t max(Node& node) { return node.maxInteger(); }
    static std::int64_t inc(Node& node) { return node.incInteger(); }
    static const std::vector<std::int64_t>* valid(Node& node) { return node.validIntegers(); }
};

template<>
struct NumberOf<double> {
    using Interface = GenApi_3_0::IFloat;
    static constexpr GenApi_3_0::EInterfaceType type = GenApi_3_0::intfIFloat;
    static constexpr double smallest = std::numeric_limits<double>::lowest();
    static constexpr double largest = std::numeric_limits<double>::max();
    static constexpr double noIncrement = 0;

    static double read(Node& node, Reading how) { return node.readFloat(how); }
    static void write(Node& node, double value, bool verify) { node.writeFloat(value, verify); }
    static double min(Node& node) { return node.minFloat(); }
    static double max(Node& node) { return node.maxFloat(); }
    static double inc(Node& node) { return node.incFloat(); }
    static const std::vector<double>* valid(Node& node) { return node.validFloats(); }
};

/// Throw OutOfRangeException with the node's name and the value.
void checkRange(Node& node, std::int64_t value);
void checkRange(Node& node, double value);
void checkIncrement(Node& node, std::int64_t value);
void checkIncrement(Node& node, double value);
std::int64_t roundForNode(const Node& node, double value);

/// Base is ValueNode or RegisterNode. Derived classes say how the value is had (compute, store) and what
/// their range is (ownMin, ownMax and so on).
template<class T, class Base>
class NumberInterface : public Base, public NumberOf<T>::Interface {
    using Number = NumberOf<T>;

public:
    using Base::Base;

    // IInteger and IFloat.
    void SetValue(T Value, bool Verify) override {
        const Operation operation(this->map());
        if (Verify)
            this->requireWritable(Value);
        Number::write(*this, Value, Verify);
    }
    T GetValue(bool Verify, bool IgnoreCache) override {
        const Operation operation(this->map());
        this->requireReadable();
        const T value = Number::read(*this, {IgnoreCache});
        if (Verify)
            checkRange(*this, value);
        return value;
    }
    T GetMin() override {
        const Operation operation(this->map());
        return Number::min(*this);
    }
    T GetMax() override {
        const Operation operation(this->map());
        return Number::max(*this);
    }
    std::vector<T> GetListOfValidValues(bool bounded) override {
        const Operation operation(this->map());
        this->checkFault();
        const std::vector<T>* all = Number::valid(*this);
        if (all == nullptr)
            return {};
        if (!bounded)
            return *all;
        const T min = Number::min(*this);
        const T max = Number::max(*this);
        std::vector<T> inside;
        std::copy_if(all->begin(), all->end(), std::back_inserter(inside),
                     [min, max](T value) { return value >= min && value <= max; });
        return inside;
    }
    GenApi_3_0::ERepresentation GetRepresentation() override {
        const Operation operation(this->map());
        return shownRepresentation();
    }
    GenICam_3_0::gcstring GetUnit() const override {
        const Operation operation(this->map());
        const std::string_view unit = const_cast<NumberInterface&>(*this).unit();
        return {unit.data(), unit.size()};
    }
    void ImposeMin(T Value) override {
        const Operation operation(this->map());
        imposed().min = Value;
        this->map().changed(*this);
    }
    void ImposeMax(T Value) override {
        const Operation operation(this->map());
        imposed().max = Value;
        this->map().changed(*this);
    }

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == Number::type ? static_cast<typename Number::Interface*>(this)
                                    : Base::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return Number::type; }

protected:
    virtual T compute(Reading how) = 0;
    virtual void store(T value, bool verify) = 0;
    virtual T ownMin() = 0;
    virtual T ownMax() = 0;
    virtual T ownInc() { return Number::noIncrement; }

    // The number protocol in the node's own type.
    T readOwn(T& cached, Reading how) {
        return this->cachedRead(cached, how, [&] { return compute(how); });
    }
    void writeOwn(T value, bool verify) {
        this->checkFault();
        if (verify) {
            checkRange(*this, value);
            checkIncrement(*this, value);
        }
        performWrite(*this, value, [&] { store(value, verify); });
    }
    T minOwn() {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Min);
        const T own = ownMin();
        return m_imposed && m_imposed->min ? std::max(own, *m_imposed->min) : own;
    }
    T maxOwn() {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Max);
        const T own = ownMax();
        return m_imposed && m_imposed->max ? std::min(own, *m_imposed->max) : own;
    }
    T incOwn() {
        this->checkFault();
        const Evaluation evaluation(*this, Evaluation::Inc);
        return ownInc();
    }
    GenApi_3_0::ERepresentation shownRepresentation() {
        const GenApi_3_0::ERepresentation given = this->representation();
        return given == GenApi_3_0::_UndefinedRepresentation ? GenApi_3_0::PureNumber : given;
    }

private:
    ImposedRange<T>& imposed() {
        if (!m_imposed)
            m_imposed = std::make_unique<ImposedRange<T>>();
        return *m_imposed;
    }

    std::unique_ptr<ImposedRange<T>> m_imposed;
};

} // namespace genapi
