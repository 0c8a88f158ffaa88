#pragma once
/// One choice of an enumeration. Its access mode tells whether it can be chosen now.
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IEnumEntry : public virtual IValue {
public:
    virtual int64_t GetValue() const = 0;
    /// The entry's name inside its enumeration, such as "Mono8".
    virtual GenICam_3_0::gcstring GetSymbolic() const = 0;
    /// A number that belongs to the entry; its value when the XML gives none.
    virtual double GetNumericValue() = 0;
    /// Whether the camera goes back to another entry by itself.
    virtual bool IsSelfClearing() = 0;
};

} // namespace GenApi_3_0
