#pragma once
/// A switch. As text "1" or "0"; "true" and "false" are understood too.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IBoolean : public virtual IValue {
public:
    virtual void SetValue(bool Value, bool Verify = true) = 0;
    virtual IBoolean& operator=(bool Value) = 0;
    virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;
    virtual bool operator()() const = 0;
    virtual bool operator*() const = 0;
};

} // namespace GenApi_3_0
