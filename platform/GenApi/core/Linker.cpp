#include "core/Linker.h"

#include <string>

#include "core/NodeMap.h"
#include "core/NumberText.h"
#include "core/PortNode.h"

namespace genapi {

namespace {

constexpr std::size_t maxEdges = 16'000'000; // 128 MB; the largest cameras have some 100 000

} // namespace

void Linker::badText(Node& from, const Property& property, const char* wanted) {
    from.setFault(std::string(PropertyName(property.id)) + " is '" + std::string(property.text) +
                  "', which is no " + wanted);
}

void Linker::badName(Node& from, const Property& property, const Node* named, const char* wanted) {
    std::string fault =
        std::string(PropertyName(property.id)) + " names '" + std::string(property.text) + "', which ";
    if (named == nullptr)
        fault += "doesn't exist";
    else
        fault += "is of the kind " + std::string(KindName(named->kind())) + " and no " + wanted;
    from.setFault(fault);
}

Node* Linker::number(Node& from, const Property& property) {
    Node* named = m_map.find(property.text);
    if (named == nullptr || !isNumber(named->kind())) {
        badName(from, property, named, "number");
        return nullptr;
    }
    depends(from, *named);
    return named;
}

Node* Linker::text(Node& from, const Property& property) {
    Node* named = m_map.find(property.text);
    if (named == nullptr || !isText(named->kind())) {
        badName(from, property, named, "text");
        return nullptr;
    }
    depends(from, *named);
    return named;
}

PortNode* Linker::port(Node& from, const Property& property) {
    Node* named = m_map.find(property.text);
    if (named == nullptr || named->kind() != NodeKind::Port) {
        badName(from, property, named, "port");
        return nullptr;
    }
    depends(from, *named);
    return static_cast<PortNode*>(named);
}

Node* Linker::ifThere(std::string_view name) const {
    return m_map.find(name);
}

void Linker::constant(Node& from, const Property& property, IntegerSource& source) {
    source.node = nullptr;
    source.constant = integer(from, property);
    source.given = true;
}

void Linker::constant(Node& from, const Property& property, FloatSource& source) {
    source.node = nullptr;
    source.given = true;
    if (!parseFloat(property.text, source.constant))
        badText(from, property, "number");
}

void Linker::reference(Node& from, const Property& property, IntegerSource& source) {
    source.node = number(from, property);
    source.given = true;
}

void Linker::reference(Node& from, const Property& property, FloatSource& source) {
    source.node = number(from, property);
    source.given = true;
}

std::int64_t Linker::integer(Node& from, const Property& property) {
    std::int64_t value = 0;
    if (!parseInteger(property.text, value))
        badText(from, property, "integer");
    return value;
}

bool Linker::yesNo(Node& from, const Property& property) {
    bool value = false;
    if (!parseBoolean(property.text, value))
        badText(from, property, "yes or no");
    return value;
}

GenApi_3_0::EAccessMode Linker::accessMode(Node& from, const Property& property) {
    using namespace GenApi_3_0;
    for (const auto& [text, mode] : {std::pair{"RW", RW}, {"RO", RO}, {"WO", WO}, {"NA", NA}, {"NI", NI}})
        if (property.text == text)
            return mode;
    badText(from, property, "access mode");
    return NI;
}

GenApi_3_0::EVisibility Linker::visibility(Node& from, const Property& property) {
    using namespace GenApi_3_0;
    for (const auto& [text, visibility] :
         {std::pair{"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}})
        if (property.text == text)
            return visibility;
    badText(from, property, "visibility");
    return Invisible;
}

void Linker::add(std::uint32_t source, std::uint32_t dependent) {
    if (m_edges.size() >= maxEdges)
        throw RUNTIME_EXCEPTION("%s: the XML has more than %zu dependencies up to here",
                                m_map.nodes()[source]->label().c_str(), maxEdges);
    m_edges.push_back({source, dependent});
}

void Linker::depends(Node& dependent, Node& source) {
    add(source.index(), dependent.index());
}

void Linker::invalidates(Node& source, Node& dependent) {
    m_declared.emplace_back(&source, &dependent);
}

void Linker::addDeclared() {
    std::vector<std::uint32_t> seen(m_map.nodes().size(), 0);
    std::vector<Node*> below;
    std::uint32_t round = 0;
    for (const auto& [source, dependent] : m_declared) {
        ++round;
        below.assign(1, dependent);
        seen[dependent->index()] = round;
        for (std::size_t i = 0; i < below.size(); ++i) {
            add(source->index(), below[i]->index() | declaredEdge);
            std::size_t known = below.size();
            below[i]->valueChildren(below);
            for (std::size_t child = known; child < below.size(); ++child)
                if (seen[below[child]->index()] != round) {
                    seen[below[child]->index()] = round;
                    below[known++] = below[child];
                }
            below.resize(known);
        }
    }
}

void Linker::finish() {
    addDeclared();
    std::vector<std::uint32_t>& first = m_map.m_firstEdge;
    first.assign(m_map.nodes().size() + 1, 0);
    for (const Edge& edge : m_edges)
        ++first[edge.source + 1];
    for (std::size_t i = 1; i < first.size(); ++i)
        first[i] += first[i - 1];
    m_map.m_edges.resize(m_edges.size());
    std::vector<std::uint32_t> next(first.begin(), first.end() - 1);
    for (const Edge& edge : m_edges)
        m_map.m_edges[next[edge.source]++] = edge.dependent;
}

} // namespace genapi
