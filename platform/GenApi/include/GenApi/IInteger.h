#pragma once
/// A 64-bit integer.
#include "GenApi/Container.h"
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IInteger : public virtual IValue {
public:
    virtual void SetValue(int64_t Value, bool Verify = true) = 0;
    IInteger& operator=(int64_t Value) {
        SetValue(Value);
        return *this;
    }
    virtual int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    int64_t operator()() { return GetValue(); }
    int64_t operator*() { return GetValue(); }
    virtual int64_t GetMin() = 0;
    virtual int64_t GetMax() = 0;
    virtual EIncMode GetIncMode() = 0;
    /// At least 1.
    virtual int64_t GetInc() = 0;
    /// With GetIncMode() listIncrement the values, ascending; `bounded` leaves out those beyond minimum and
    /// maximum.
    virtual int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual GenICam_3_0::gcstring GetUnit() const = 0;
    /// Narrows the range from outside.
    virtual void ImposeMin(int64_t Value) = 0;
    virtual void ImposeMax(int64_t Value) = 0;
};

} // namespace GenApi_3_0
