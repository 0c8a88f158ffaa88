#pragma once
/// A switch. As text "1" or "0"; "true" and "false" are understood too.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IBoolean : public virtual IValue {
public:
    virtual void SetValue(bool Value, bool Verify = true) = 0;
    IBoolean& operator=(bool Value) {
        SetValue(Value);
        return *this;
    }
    virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;
    bool operator()() const { return GetValue(); }
    bool operator*() const { return GetValue(); }
};

} // namespace GenApi_3_0
