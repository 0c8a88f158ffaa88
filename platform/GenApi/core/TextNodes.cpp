#include "core/TextNodes.h"

#include <algorithm>
#include <limits>

namespace genapi {

using namespace GenApi_3_0;

// StringRegNode

std::string StringRegNode::readText(Reading how) {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::int64_t size = length();
    const char* text = reinterpret_cast<const char*>(bytes(how, size));
    return {text, std::find(text, text + size, '\0')};
}

void StringRegNode::writeText(const std::string& text, bool) {
    const std::int64_t size = length();
    if (text.size() > static_cast<std::size_t>(size))
        throw OUT_OF_RANGE_EXCEPTION("%s: '%s' has %zu bytes, more than the %lld that fit",
                                     Evaluation::blame(*this).c_str(), text.c_str(), text.size(),
                                     static_cast<long long>(size));
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size), 0);
    std::copy(text.begin(), text.end(), bytes.begin());
    performWrite(*this, &text, [&] { writeBytes(bytes.data(), size); });
}

// StringNode

void StringNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Value:
        m_text = property.text;
        m_given = true;
        break;
    case PropertyId::pValue:
        m_node = linker.text(*this, property);
        m_given = true;
        break;
    default:
        ValueNode::link(linker, property);
        break;
    }
}

void StringNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (!m_given)
        setFault("it has neither Value nor pValue");
}

void StringNode::valueChildren(std::vector<Node*>& children) const {
    if (m_node != nullptr)
        children.push_back(m_node);
}

EAccessMode StringNode::chainMode(Aspect aspect) {
    return m_node != nullptr ? m_node->mode(aspect) : RW;
}

std::string StringNode::readText(Reading how) {
    checkFault();
    if (m_node == nullptr)
        return m_text;
    const Evaluation evaluation(*this, Evaluation::Value);
    return m_node->readText(how);
}

void StringNode::writeText(const std::string& text, bool verify) {
    checkFault();
    performWrite(*this, &text, [&] {
        if (m_node != nullptr) {
            m_node->writeText(text, verify);
            return;
        }
        m_text = text;
        drop();
        map().changed(*this);
    });
}

std::int64_t StringNode::maxTextLength() {
    checkFault();
    const Evaluation evaluation(*this, Evaluation::Max);
    return m_node != nullptr ? m_node->maxTextLength() : std::numeric_limits<std::int64_t>::max();
}

// CategoryNode

void CategoryNode::GetFeatures(FeatureList_t& Features) const {
    Features.clear();
    for (const Property& property : *this)
        if (property.id == PropertyId::pFeature)
            if (auto* value = dynamic_cast<IValue*>(map().find(property.text)))
                Features.push_back(value);
}

void CategoryNode::link(Linker& linker, const Property& property) {
    if (property.id != PropertyId::pFeature) {
        ValueNode::link(linker, property);
        return;
    }
    if (Node* feature = linker.ifThere(property.text))
        feature->setFeature();
}

void CategoryNode::fromText(const std::string&, bool) {
    throw ACCESS_EXCEPTION("%s can't be written: it is a category", label().c_str());
}

} // namespace genapi
