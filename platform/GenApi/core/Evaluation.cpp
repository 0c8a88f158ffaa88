#include "core/Evaluation.h"

#include "core/NumberText.h"

namespace genapi {

namespace {

constexpr int maxDepth = 200; // of nodes that depend on one another; cameras need some 20
// Evaluations of one operation: without a bound, a chain of nodes that each ask the next one twice takes for
// ever.
constexpr int maxSteps = 10000;

const char* stepName(Evaluation::Step step) {
    switch (step) {
    case Evaluation::Value:
    case Evaluation::Write:
        return "its value";
    case Evaluation::Min:
    case Evaluation::Max:
        return "its range";
    case Evaluation::Inc:
        return "its increment";
    case Evaluation::Address:
        return "its address";
    case Evaluation::Error:
        return "its error";
    default:
        return "its access mode";
    }
}

} // namespace

Evaluation::Evaluation(Node& node, Step step, const Written& written)
    : m_node(node), m_outer(node.map().m_evaluation), m_written(written), m_step(step) {
    NodeMap& map = node.map();
    if ((node.m_busy & step) != 0)
        throw RUNTIME_EXCEPTION("%s: %s depends on itself", node.label().c_str(), stepName(step));
    if (map.m_depth >= maxDepth)
        throw RUNTIME_EXCEPTION("%s is reached through more than %d other nodes", node.label().c_str(),
                                maxDepth);
    if (++map.m_steps > maxSteps)
        throw RUNTIME_EXCEPTION("%s: more than %d nodes have to be asked for it", node.label().c_str(),
                                maxSteps);
    node.m_busy = static_cast<std::uint16_t>(node.m_busy | step);
    ++map.m_depth;
    map.m_evaluation = this;
}

Evaluation::~Evaluation() {
    m_node.m_busy = static_cast<std::uint16_t>(m_node.m_busy & ~m_step);
    --m_node.map().m_depth;
    m_node.map().m_evaluation = m_outer;
}

const Evaluation* Evaluation::outermost(const NodeMap& map) {
    const Evaluation* first = map.m_evaluation;
    while (first != nullptr && first->m_outer != nullptr)
        first = first->m_outer;
    return first;
}

std::string Evaluation::blame(const Node& node) {
    const Evaluation* first = outermost(node.map());
    return (first != nullptr && &first->m_node != &node ? first->purpose() + ": " : "") + node.label();
}

std::string Evaluation::asked(const Node& node) {
    const Evaluation* first = outermost(node.map());
    return first != nullptr && &first->m_node == &node ? first->purpose() + ": " : blame(node) + ", ";
}

std::string Evaluation::purpose() const {
    const std::string label = m_node.label();
    switch (m_step) {
    case Value:
        return label + " can't be read";
    case Write:
        return label + " can't be " + writtenText(m_node, m_written);
    case Min:
        return label + " can't tell its minimum";
    case Max:
        return label + " can't tell its maximum";
    case Inc:
        return label + " can't tell its increment";
    case Address:
        return label + " can't tell where it lies";
    case Error:
        return label + " was " + writtenText(m_node, m_written) + " and can't tell whether that worked";
    default:
        return label + " can't tell its access mode";
    }
}

std::string writtenText(Node& node, const Written& written) {
    if (const auto* integer = std::get_if<std::int64_t>(&written)) {
        const std::string_view entry = node.entryName(*integer);
        return "set to " + std::to_string(*integer) +
               (entry.empty() ? "" : " ('" + std::string(entry) + "')");
    }
    if (const auto* floating = std::get_if<double>(&written))
        return "set to " + formatFloat(*floating);
    if (const auto* text = std::get_if<const std::string*>(&written))
        return "set to '" + **text + "'";
    return node.kind() == NodeKind::Command ? "executed" : "written";
}

} // namespace genapi
