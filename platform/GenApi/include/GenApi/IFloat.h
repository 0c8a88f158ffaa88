#pragma once
/// A double.
#include "GenApi/Container.h"
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IFloat : public virtual IValue {
public:
    virtual void SetValue(double Value, bool Verify = true) = 0;
    IFloat& operator=(double Value) {
        SetValue(Value);
        return *this;
    }
    virtual double GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    double operator()() { return GetValue(); }
    double operator*() { return GetValue(); }
    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    virtual EIncMode GetIncMode() = 0;
    /// Throws LogicalErrorException when there is none (HasInc).
    virtual double GetInc() = 0;
    /// With GetIncMode() listIncrement the values, ascending; `bounded` leaves out those beyond minimum and
    /// maximum.
    virtual double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual GenICam_3_0::gcstring GetUnit() const = 0;
    virtual EDisplayNotation GetDisplayNotation() const = 0;
    /// Digits behind the point (fnFixed, fnScientific) or in all (fnAutomatic).
    virtual int64_t GetDisplayPrecision() const = 0;
    /// Narrows the range from outside.
    virtual void ImposeMin(double Value) = 0;
    virtual void ImposeMax(double Value) = 0;
};

} // namespace GenApi_3_0
