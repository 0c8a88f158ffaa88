#pragma once
/// IFloat for every node with a float, and the other view of such a number as an integer.
#include "core/NumberInterface.h"

namespace genapi {

/// The integers that lie in a range of floats.
std::int64_t integerAtLeast(double min);
std::int64_t integerAtMost(double max);

template<class Base>
class FloatInterface : public NumberInterface<double, Base> {
public:
    using NumberInterface<double, Base>::NumberInterface;

    // IFloat.
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
    GenApi_3_0::EDisplayNotation GetDisplayNotation() const override {
        const Operation operation(this->map());
        return const_cast<FloatInterface&>(*this).shownNotation();
    }
    int64_t GetDisplayPrecision() const override {
        const Operation operation(this->map());
        return const_cast<FloatInterface&>(*this).shownPrecision();
    }

    // The number protocol.
    double readFloat(Reading how) override { return this->readOwn(this->m_cached.floating, how); }
    std::int64_t readInteger(Reading how) override { return roundForNode(*this, readFloat(how)); }
    void writeFloat(double value, bool verify) override { this->writeOwn(value, verify); }
    void writeInteger(std::int64_t value, bool verify) override {
        writeFloat(static_cast<double>(value), verify);
    }
    double minFloat() override { return this->minOwn(); }
    double maxFloat() override { return this->maxOwn(); }
    double incFloat() override { return this->incOwn(); }
    std::int64_t minInteger() override { return integerAtLeast(minFloat()); }
    std::int64_t maxInteger() override { return integerAtMost(maxFloat()); }
    std::int64_t incInteger() override { return 1; }

protected:
    std::string toText(bool verify, Reading how) override {
        const double value = readFloat(how);
        if (verify)
            checkRange(*this, value);
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
};

} // namespace genapi
