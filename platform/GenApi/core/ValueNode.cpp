#include "core/ValueNode.h"

#include "core/Evaluation.h"
#include "core/Linker.h"
#include "core/NodeMap.h"

namespace genapi {

using namespace GenApi_3_0;
using GenICam_3_0::gcstring;

gcstring ValueNode::ToString(bool Verify, bool IgnoreCache) {
    const Operation operation(map());
    requireReadable();
    return toText(Verify, {IgnoreCache});
}

void ValueNode::FromString(const gcstring& ValueStr, bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable(&ValueStr.str());
    checkFault();
    fromText(ValueStr.str(), Verify);
}

bool ValueNode::IsValueCacheValid() const {
    const Operation operation(map());
    return valueCacheValid();
}

bool ValueNode::IsSelector() const {
    FeatureList_t selected; // what the XML names need not be there
    GetSelectedFeatures(selected);
    return !selected.empty();
}

void ValueNode::GetSelectedFeatures(FeatureList_t& list) const {
    list.clear();
    for (const Property& property : *this)
        if (property.id == PropertyId::pSelected)
            if (auto* value = dynamic_cast<IValue*>(map().find(property.text)))
                list.push_back(value);
}

void ValueNode::GetSelectingFeatures(FeatureList_t& list) const {
    list.clear();
    const Node* last = nullptr;
    const auto [begin, end] = map().referrers(*this);
    for (const NodeMap::Referrer* referrer = begin; referrer != end; ++referrer) {
        if (referrer->property != PropertyId::pSelected || referrer->node == last)
            continue;
        last = referrer->node;
        if (auto* value = dynamic_cast<IValue*>(referrer->node))
            list.push_back(value);
    }
}

void ValueNode::link(Linker& linker, const Property& property) {
    if (property.id != PropertyId::pSelected) {
        Node::link(linker, property);
        return;
    }
    // Whatever the XML says of addresses and invalidators: under another selector the selected value is
    // another.
    if (Node* selected = linker.ifThere(property.text))
        linker.invalidates(*this, *selected);
}

void ValueNode::throwBadText(const std::string& text, const char* wanted) const {
    throw INVALID_ARGUMENT_EXCEPTION("%s: '%s' is no %s", label().c_str(), text.c_str(), wanted);
}

} // namespace genapi
