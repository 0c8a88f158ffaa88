#pragma once
/// A choice among named entries, and the entries.
#include "GenApi/IEnumeration.h"
#include "core/BackedNode.h"

namespace genapi {

class EnumEntryNode final : public ValueNode, public GenApi_3_0::IEnumEntry {
public:
    using ValueNode::ValueNode;

    // IEnumEntry. A faulty entry throws PropertyException.
    int64_t GetValue() const override;
    GenICam_3_0::gcstring GetSymbolic() const override;
    double GetNumericValue() override;
    bool IsSelfClearing() override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIEnumEntry ? static_cast<GenApi_3_0::IEnumEntry*>(this)
                                                  : ValueNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIEnumEntry; }
    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;

    std::string_view symbolic() const { return m_symbolic; }
    std::int64_t value() const { return m_value.constant; }
    /// False for an entry that the XML gives no value; it is never the current one.
    bool hasValue() const { return m_value.given; }
    bool hasNumericValue() const { return m_numeric.given; }
    double numericValue() const;
    /// Why the entry can't be chosen now; null when it can.
    const char* refusal();

    std::int64_t readInteger(Reading how) override;
    double readFloat(Reading how) override;
    std::int64_t minInteger() override { return value(); }
    std::int64_t maxInteger() override { return value(); }
    std::int64_t incInteger() override { return 1; }
    double minFloat() override { return numericValue(); }
    double maxFloat() override { return numericValue(); }
    double incFloat() override { return 0; }

protected:
    std::string toText(bool verify, Reading how) override;
    void fromText(const std::string& text, bool verify) override;
    bool valueCacheValid() const override { return true; }

private:
    std::string_view m_symbolic;
    IntegerSource m_value;
    FloatSource m_numeric;
    bool m_selfClearing = false;
};

class EnumerationNode final : public BackedNode, public GenApi_3_0::IEnumeration {
public:
    EnumerationNode(NodeMap& map, const NodeRecord& record, const Property* properties, std::uint32_t index);

    // IEnumeration.
    void GetSymbolics(GenApi_3_0::StringList_t& Symbolics) override;
    void GetEntries(GenApi_3_0::NodeList_t& Entries) override;
    void SetIntValue(int64_t Value, bool Verify) override;
    int64_t GetIntValue(bool Verify, bool IgnoreCache) override;
    GenApi_3_0::IEnumEntry* GetEntryByName(const GenICam_3_0::gcstring& Symbolic) override;
    GenApi_3_0::IEnumEntry* GetEntry(int64_t IntValue) override;
    GenApi_3_0::IEnumEntry* GetCurrentEntry(bool Verify, bool IgnoreCache) override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIEnumeration ? static_cast<GenApi_3_0::IEnumeration*>(this)
                                                    : BackedNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIEnumeration; }
    void link(Linker& linker, const Property& property) override;

    std::int64_t readInteger(Reading how) override;
    /// The current entry's numeric value where it has one.
    double readFloat(Reading how) override;
    void writeInteger(std::int64_t value, bool verify) override;
    void writeFloat(double value, bool verify) override;
    std::int64_t minInteger() override;
    std::int64_t maxInteger() override;
    std::int64_t incInteger() override { return 1; }
    double minFloat() override { return static_cast<double>(minInteger()); }
    double maxFloat() override { return static_cast<double>(maxInteger()); }
    double incFloat() override { return 0; }
    std::int64_t entryValue(std::string_view symbolic) override;
    std::string_view entryName(std::int64_t value) override;

protected:
    std::string toText(bool verify, Reading how) override;
    void fromText(const std::string& text, bool verify) override;

private:
    EnumEntryNode* entry(std::int64_t value) const;
    EnumEntryNode* entry(std::string_view symbolic) const;
    /// Throws OutOfRangeException for a value without an entry.
    EnumEntryNode& currentEntry(std::int64_t value) const;

    std::vector<EnumEntryNode*> m_entries;
};

} // namespace genapi
