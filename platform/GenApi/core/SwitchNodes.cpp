#include "core/SwitchNodes.h"

#include "core/Evaluation.h"
#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;

// BooleanNode

BooleanNode::BooleanNode(NodeMap& map, const NodeRecord& record, const Property* properties,
                         std::uint32_t index)
    : ValueNode(map, record, properties, index) {}

void BooleanNode::SetValue(bool Value, bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable();
    write(Value, Verify);
}

bool BooleanNode::GetValue(bool, bool IgnoreCache) const {
    const Operation operation(map());
    auto& self = const_cast<BooleanNode&>(*this);
    self.requireReadable();
    return self.readInteger({IgnoreCache}) != 0;
}

void BooleanNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Value: {
        std::int64_t number = 0;
        if (parseInteger(property.text, number))
            m_state = number != 0;
        else
            m_state = linker.yesNo(*this, property);
        m_value.given = true;
        break;
    }
    case PropertyId::pValue:
        linker.reference(*this, property, m_value);
        break;
    case PropertyId::OnValue:
        m_on = linker.integer(*this, property);
        break;
    case PropertyId::OffValue:
        m_off = linker.integer(*this, property);
        break;
    default:
        ValueNode::link(linker, property);
        break;
    }
}

void BooleanNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (!m_value.given)
        setFault("it has neither Value nor pValue");
    if (m_on == m_off)
        setFault("OnValue and OffValue are the same");
}

void BooleanNode::valueChildren(std::vector<Node*>& children) const {
    if (m_value.node != nullptr)
        children.push_back(m_value.node);
}

EAccessMode BooleanNode::chainMode(Aspect aspect) {
    return m_value.node != nullptr ? m_value.node->mode(aspect) : RW;
}

std::int64_t BooleanNode::readInteger(Reading how) {
    if (valueCached() && !how.ignoreCache)
        return m_cached.integer;
    checkFault();
    const Evaluation evaluation(*this, Evaluation::Value);
    const CacheScope scope(map());
    if (m_value.node != nullptr) {
        const std::int64_t number = m_value.node->readInteger(how);
        if (number != m_on && number != m_off)
            throw RUNTIME_EXCEPTION(
                "%s: %s holds %lld, which is neither its OnValue %lld nor its OffValue %lld", label().c_str(),
                m_value.node->label().c_str(), static_cast<long long>(number), static_cast<long long>(m_on),
                static_cast<long long>(m_off));
        m_cached.integer = number == m_on ? 1 : 0;
    } else {
        m_cached.integer = m_state ? 1 : 0;
    }
    m_valueEpoch = scope.cacheable() ? map().epoch() : 0;
    return m_cached.integer;
}

void BooleanNode::writeInteger(std::int64_t value, bool verify) {
    write(value != 0, verify);
}

void BooleanNode::write(bool on, bool verify) {
    checkFault();
    const Evaluation evaluation(*this, Evaluation::Write);
    if (m_value.node != nullptr) {
        m_value.node->writeInteger(on ? m_on : m_off, verify);
        return;
    }
    m_state = on;
    drop();
    map().changed(*this);
}

std::string BooleanNode::toText(bool, Reading how) {
    return readInteger(how) != 0 ? "1" : "0";
}

void BooleanNode::fromText(const std::string& text, bool verify) {
    bool on = false;
    if (!parseBoolean(text, on))
        throwBadText(text, "1, 0, true or false");
    write(on, verify);
}

// CommandNode

void CommandNode::Execute(bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable();
    execute(Verify);
}

void CommandNode::execute(bool verify) {
    checkFault();
    const Evaluation evaluation(*this, Evaluation::Write);
    const std::int64_t command = m_command.get();
    m_running = true;
    if (m_value.node != nullptr) {
        try {
            m_value.node->writeInteger(command, verify);
        } catch (...) {
            m_running = false;
            throw;
        }
        return; // the node behind it has told all who depend on it
    }
    map().changed(*this);
}

bool CommandNode::IsDone(bool) {
    const Operation operation(map());
    checkFault();
    return done();
}

bool CommandNode::done() {
    // A register that can't be read doesn't tell; and a command that was never given isn't running.
    bool isDone = true;
    if (m_value.node != nullptr && IsReadable(m_value.node->mode(Aspect::Readable))) {
        const Evaluation evaluation(*this, Evaluation::Value);
        isDone = m_value.node->readInteger({true}) != m_command.get();
    }
    if (isDone && m_running) {
        m_running = false;
        map().changed(*this);
    }
    return isDone;
}

void CommandNode::poll() {
    if (m_running)
        done();
}

void CommandNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Value:
        linker.constant(*this, property, m_value);
        break;
    case PropertyId::pValue:
        linker.reference(*this, property, m_value);
        break;
    case PropertyId::CommandValue:
        linker.constant(*this, property, m_command);
        break;
    case PropertyId::pCommandValue:
        linker.reference(*this, property, m_command);
        break;
    default:
        ValueNode::link(linker, property);
        break;
    }
}

void CommandNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (!m_value.given)
        setFault("it has neither Value nor pValue");
    if (!m_command.given)
        setFault("it has neither CommandValue nor pCommandValue");
}

void CommandNode::valueChildren(std::vector<Node*>& children) const {
    if (m_value.node != nullptr)
        children.push_back(m_value.node);
}

EAccessMode CommandNode::chainMode(Aspect aspect) {
    EAccessMode mode = m_value.node != nullptr ? m_value.node->mode(aspect) : RW;
    if (IsWritable(mode) && m_command.node != nullptr)
        mode = Combine(mode, neededMode(*m_command.node));
    return mode;
}

std::string CommandNode::toText(bool, Reading) {
    return done() ? "0" : "1";
}

void CommandNode::fromText(const std::string& text, bool verify) {
    bool on = false;
    if (!parseBoolean(text, on))
        throwBadText(text, "1 or 0");
    if (on)
        execute(verify);
}

} // namespace genapi
