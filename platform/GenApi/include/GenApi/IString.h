#pragma once
/// A text.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IString : public virtual IValue {
public:
    virtual void SetValue(const GenICam_3_0::gcstring& Value, bool Verify = true) = 0;
    virtual IString& operator=(const GenICam_3_0::gcstring& Value) = 0;
    virtual GenICam_3_0::gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual GenICam_3_0::gcstring operator()() = 0;
    virtual GenICam_3_0::gcstring operator*() = 0;
    /// In bytes, without an end mark.
    virtual int64_t GetMaxLength() = 0;
};

} // namespace GenApi_3_0
