#pragma once
/// Bytes at an address of a port.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IRegister : public virtual IValue {
public:
    /// `Length` must be the register's own for a number, and at most that for others
    /// (InvalidArgumentException).
    virtual void Set(const uint8_t* pBuffer, int64_t Length, bool Verify = true) = 0;
    virtual void Get(uint8_t* pBuffer, int64_t Length, bool Verify = false, bool IgnoreCache = false) = 0;
    /// In bytes.
    virtual int64_t GetLength() = 0;
    virtual int64_t GetAddress() = 0;
};

} // namespace GenApi_3_0
