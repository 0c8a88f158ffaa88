#pragma once
/// IInteger for every node with an integer, and the other view of such a number as a float.
#include "core/NumberInterface.h"

namespace genapi {

template<class Base>
class IntegerInterface : public NumberInterface<std::int64_t, Base> {
public:
    using NumberInterface<std::int64_t, Base>::NumberInterface;

    // IInteger.
    GenApi_3_0::EIncMode GetIncMode() override {
        const Operation operation(this->map());
        this->checkFault();
        return this->validIntegers() != nullptr ? GenApi_3_0::listIncrement : GenApi_3_0::fixedIncrement;
    }
    int64_t GetInc() override {
        const Operation operation(this->map());
        return incInteger();
    }

    // The number protocol.
    std::int64_t readInteger(Reading how) override { return this->readOwn(this->m_cached.integer, how); }
    double readFloat(Reading how) override { return static_cast<double>(readInteger(how)); }
    void writeInteger(std::int64_t value, bool verify) override { this->writeOwn(value, verify); }
    void writeFloat(double value, bool verify) override { writeInteger(roundForNode(*this, value), verify); }
    std::int64_t minInteger() override { return this->minOwn(); }
    std::int64_t maxInteger() override { return this->maxOwn(); }
    std::int64_t incInteger() override { return std::max<std::int64_t>(1, this->incOwn()); }
    double minFloat() override { return static_cast<double>(minInteger()); }
    double maxFloat() override { return static_cast<double>(maxInteger()); }
    // A float that is kept in an integer is rounded by it, not refused between two of them.
    double incFloat() override { return 0; }

protected:
    std::string toText(bool verify, Reading how) override {
        const std::int64_t value = readInteger(how);
        if (verify)
            checkRange(*this, value);
        return formatInteger(value, this->shownRepresentation());
    }
    void fromText(const std::string& text, bool verify) override {
        std::int64_t value = 0;
        if (!parseInteger(text, this->shownRepresentation(), value))
            this->throwBadText(text, "integer");
        writeInteger(value, verify);
    }
};

} // namespace genapi
