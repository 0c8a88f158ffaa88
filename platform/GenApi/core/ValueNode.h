#pragma once
/// Nodes that have a value, in whatever form; every one of them may be a selector.
#include <optional>
#include <string>

#include "GenApi/ISelector.h"
#include "GenApi/IValue.h"
#include "core/Node.h"

namespace genapi {

class ValueNode : public Node, public virtual GenApi_3_0::IValue, public GenApi_3_0::ISelector {
public:
    using Node::Node;

    // IBase. Said here once more because each interface reaches it by a way of its own.
    GenApi_3_0::EAccessMode GetAccessMode() const override { return Node::GetAccessMode(); }
    // IValue.
    GenApi_3_0::INode* GetNode() override { return this; }
    GenICam_3_0::gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const GenICam_3_0::gcstring& ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override;
    // ISelector.
    bool IsSelector() const override;
    void GetSelectedFeatures(GenApi_3_0::FeatureList_t& list) const override;
    void GetSelectingFeatures(GenApi_3_0::FeatureList_t& list) const override;

    void* interfaceOf(GenApi_3_0::EInterfaceType type) override {
        return type == GenApi_3_0::intfIValue ? static_cast<GenApi_3_0::IValue*>(this)
                                              : Node::interfaceOf(type);
    }
    GenApi_3_0::EInterfaceType interfaceType() const override { return GenApi_3_0::intfIValue; }
    void link(Linker& linker, const Property& property) override;

protected:
    // The text forms, without checks of the access mode.
    virtual std::string toText(bool verify, Reading how) = 0;
    virtual void fromText(const std::string& text, bool verify) = 0;
    virtual bool valueCacheValid() const { return valueCached(); }
    [[noreturn]] void throwBadText(const std::string& text, const char* wanted) const;
};

/// Narrows a range from outside; kept only by the few nodes for which that was asked.
template<class T>
struct ImposedRange {
    std::optional<T> min;
    std::optional<T> max;
};

} // namespace genapi
