#pragma once
/// A choice among named entries.
#include "GenApi/Container.h"
#include "GenApi/IEnumEntry.h"
#include "GenApi/IValue.h"

namespace GenApi_3_0 {

class GENAPI_API IEnumeration : public virtual IValue {
public:
    /// Names of the entries that can be chosen now.
    virtual void GetSymbolics(StringList_t& Symbolics) = 0;
    /// All entries, in the XML's order.
    virtual void GetEntries(NodeList_t& Entries) = 0;
    IEnumeration& operator=(const GenICam_3_0::gcstring& ValueStr) {
        FromString(ValueStr);
        return *this;
    }
    virtual void SetIntValue(int64_t Value, bool Verify = true) = 0;
    GenICam_3_0::gcstring operator*() { return ToString(); }
    virtual int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) = 0;
    /// Null when there is no such entry.
    virtual IEnumEntry* GetEntryByName(const GenICam_3_0::gcstring& Symbolic) = 0;
    virtual IEnumEntry* GetEntry(int64_t IntValue) = 0;
    /// Null when the camera holds a value that no entry has.
    virtual IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) = 0;
};

} // namespace GenApi_3_0
