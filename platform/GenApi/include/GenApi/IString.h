#pragma once
/// A text.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IString : public virtual IValue {
public:
    virtual void SetValue(const GenICam_3_0::gcstring& Value, bool Verify = true) = 0;
    IString& operator=(const GenICam_3_0::gcstring& Value) {
        SetValue(Value);
        return *this;
    }
    virtual GenICam_3_0::gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    GenICam_3_0::gcstring operator()() { return GetValue(); }
    GenICam_3_0::gcstring operator*() { return GetValue(); }
    /// In bytes, without an end mark.
    virtual int64_t GetMaxLength() = 0;
};

} // namespace GenApi_3_0
