#pragma once
/// Texts: StringReg in a register, String in the XML or in front of another text; and the categories that
/// group features.
#include "GenApi/ICategory.h"
#include "GenApi/IString.h"
#include "core/Evaluation.h"
#include "core/RegisterNode.h"

namespace genapi {

/// Base is ValueNode or RegisterNode.
template<class Base>
class StringInterface : public Base, public GenApi_3_0::IString {
public:
    using Base::Base;

    // IString.
    void SetValue(const GenICam_3_0::gcstring& Value, bool Verify) override {
        const Operation operation(this->map());
        if (Verify)
            this->requireWritable(&Value.str());
        this->writeText(Value.str(), Verify);
    }
    GenICam_3_0::gcstring GetValue(bool, bool IgnoreCache) override {
        const Operation operation(this->map());
        this->requireReadable();
        return this->readText({IgnoreCache});
    }
    int64_t GetMaxLength() override {
        const Operation operation(this->map());
        this->checkFault();
        return this->maxTextLength();
    }

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIString ? static_cast<GenApi_3_0::IString*>(this)
                                               : Base::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIString; }

protected:
    std::string toText(bool, Reading how) override { return this->readText(how); }
    void fromText(const std::string& text, bool verify) override { this->writeText(text, verify); }
};

class StringRegNode final : public StringInterface<RegisterNode> {
public:
    using StringInterface::StringInterface;

    /// Up to the first zero byte.
    std::string readText(Reading how) override;
    /// The rest of the register is filled with zeros.
    void writeText(const std::string& text, bool verify) override;
    std::int64_t maxTextLength() override { return length(); }
};

class StringNode final : public StringInterface<ValueNode> {
public:
    using StringInterface::StringInterface;

    void link(Linker& linker, const Property& property) override;
    void linked(Linker& linker) override;
    void valueChildren(std::vector<Node*>& children) const override;

    std::string readText(Reading how) override;
    void writeText(const std::string& text, bool verify) override;
    std::int64_t maxTextLength() override;

protected:
    GenApi_3_0::EAccessMode chainMode(Aspect aspect) override;

private:
    Node* m_node = nullptr;
    std::string m_text;
    bool m_given = false;
};

class CategoryNode final : public ValueNode, public GenApi_3_0::ICategory {
public:
    using ValueNode::ValueNode;

    void GetFeatures(GenApi_3_0::FeatureList_t& Features) const override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfICategory ? static_cast<GenApi_3_0::ICategory*>(this)
                                                 : ValueNode::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfICategory; }
    void link(Linker& linker, const Property& property) override;

protected:
    /// Its name.
    std::string toText(bool, Reading) override { return std::string(name()); }
    void fromText(const std::string& text, bool verify) override;
};

} // namespace genapi
