#pragma once
/// Where an Integer or a Float has its value from: the XML, another node, or one of several of these by an
/// index.
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "core/Linker.h"
#include "core/NumberText.h"

namespace genapi {

template<class T>
class ValueChoice {
public:
    /// True when the property was one of these.
    bool link(Node& owner, Linker& linker, const Property& property) {
        switch (property.id) {
        case PropertyId::Value:
            linker.constant(owner, property, m_plain);
            return true;
        case PropertyId::pValue:
            linker.reference(owner, property, m_plain);
            return true;
        case PropertyId::pValueCopy:
            if (Node* copy = linker.number(owner, property))
                m_copies.push_back(copy);
            return true;
        case PropertyId::pIndex:
            indexed().index = linker.number(owner, property);
            return true;
        case PropertyId::ValueIndexed:
        case PropertyId::pValueIndexed: {
            Source<T> source;
            linkSource(owner, linker, property, source);
            std::int64_t at = 0;
            if (!parseInteger(property.attribute, at))
                owner.setFault(std::string(PropertyName(property.id)) + " has the index '" +
                               std::string(property.attribute) + "', which is no integer");
            indexed().entries.emplace_back(at, source);
            return true;
        }
        case PropertyId::ValueDefault:
        case PropertyId::pValueDefault:
            linkSource(owner, linker, property, indexed().fallback);
            return true;
        default:
            return false;
        }
    }

    void linked(Node& owner) {
        if (m_indexed) {
            if (m_indexed->index == nullptr)
                owner.setFault("it has indexed values and no pIndex");
            const auto byIndex = [](const auto& left, const auto& right) { return left.first < right.first; };
            std::stable_sort(m_indexed->entries.begin(), m_indexed->entries.end(), byIndex);
        } else if (!m_plain.given) {
            owner.setFault("it has neither Value nor pValue");
        }
    }

    /// The source that counts now. Throws RuntimeException when the index has none.
    Source<T>& current(Node& owner) {
        if (!m_indexed)
            return m_plain;
        const std::int64_t at = m_indexed->index->checkedInteger();
        const auto entry =
            std::lower_bound(m_indexed->entries.begin(), m_indexed->entries.end(), at,
                             [](const auto& left, std::int64_t index) { return left.first < index; });
        if (entry != m_indexed->entries.end() && entry->first == at)
            return entry->second;
        if (!m_indexed->fallback.given)
            throw RUNTIME_EXCEPTION("%s: %s is %lld, for which it has no value", owner.label().c_str(),
                                    m_indexed->index->label().c_str(), static_cast<long long>(at));
        return m_indexed->fallback;
    }

    /// Null when the value isn't had from one node alone.
    Node* node() const { return m_plain.node; }
    Node* index() const { return m_indexed ? m_indexed->index : nullptr; }
    const std::vector<Node*>& copies() const { return m_copies; }

    void children(std::vector<Node*>& all) const {
        const auto add = [&all](Node* node) {
            if (node != nullptr)
                all.push_back(node);
        };
        add(m_plain.node);
        if (m_indexed) {
            add(m_indexed->fallback.node);
            for (const auto& entry : m_indexed->entries)
                add(entry.second.node);
        }
    }

private:
    struct Indexed {
        Node* index = nullptr;
        std::vector<std::pair<std::int64_t, Source<T>>> entries; // by index
        Source<T> fallback;
    };

    static void linkSource(Node& owner, Linker& linker, const Property& property, Source<T>& source) {
        if (NamesANode(property.id))
            linker.reference(owner, property, source);
        else
            linker.constant(owner, property, source);
    }

    Indexed& indexed() {
        if (!m_indexed)
            m_indexed = std::make_unique<Indexed>();
        return *m_indexed;
    }

    Source<T> m_plain;
    std::unique_ptr<Indexed> m_indexed;
    std::vector<Node*> m_copies;
};

} // namespace genapi
