#include "core/SwitchNodes.h"

#include "core/Evaluation.h"
#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;

// BooleanNode

BooleanNode::BooleanNode(NodeMap& map, const NodeRecord& record, const Property* properties,
                         std::uint32_t index)
    : BackedNode(map, record, properties, index) {}

void BooleanNode::SetValue(bool Value, bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable(std::int64_t{Value});
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
        setConstant(parseInteger(property.text, number) ? number != 0 : linker.yesNo(*this, property));
        break;
    }
    case PropertyId::OnValue:
        m_on = linker.integer(*this, property);
        break;
    case PropertyId::OffValue:
        m_off = linker.integer(*this, property);
        break;
    default:
        BackedNode::link(linker, property);
        break;
    }
}

void BooleanNode::linked(Linker& linker) {
    BackedNode::linked(linker);
    if (m_on == m_off)
        setFault("OnValue and OffValue are the same");
}

std::int64_t BooleanNode::readInteger(Reading how) {
    return cachedRead(m_cached.integer, how, [&]() -> std::int64_t {
        const std::int64_t number = readBehind(how);
        if (behind() == nullptr)
            return number;
        if (number != m_on && number != m_off)
            throw RUNTIME_EXCEPTION(
                "%s: %s holds %lld, which is neither its OnValue %lld nor its OffValue %lld", label().c_str(),
                behind()->label().c_str(), static_cast<long long>(number), static_cast<long long>(m_on),
                static_cast<long long>(m_off));
        return number == m_on ? 1 : 0;
    });
}

void BooleanNode::writeInteger(std::int64_t value, bool verify) {
    write(value != 0, verify);
}

void BooleanNode::write(bool on, bool verify) {
    checkFault();
    const std::int64_t number = on ? 1 : 0;
    const std::int64_t written = on ? m_on : m_off;
    performWrite(*this, number, [&] { writeBehind(behind() != nullptr ? written : number, verify); });
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
    try {
        performWrite(*this, {}, [&] {
            const std::int64_t command = m_command.get();
            m_running = true;
            if (behind() != nullptr)
                writeBehind(command, verify);
            else
                map().changed(*this);
        });
    } catch (...) {
        m_running = false;
        throw;
    }
}

bool CommandNode::IsDone(bool) {
    const Operation operation(map());
    checkFault();
    return done();
}

bool CommandNode::done() {
    // A register that can't be read doesn't tell; and a command that was never given isn't running.
    bool isDone = true;
    if (behind() != nullptr && IsReadable(behind()->mode(Aspect::Readable))) {
        const Evaluation evaluation(*this, Evaluation::Value);
        isDone = readBehind({true}) != m_command.get();
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
    if (property.id == PropertyId::CommandValue)
        linker.constant(*this, property, m_command);
    else if (property.id == PropertyId::pCommandValue)
        linker.reference(*this, property, m_command);
    else
        BackedNode::link(linker, property);
}

void CommandNode::linked(Linker& linker) {
    BackedNode::linked(linker);
    if (!m_command.given)
        setFault("it has neither CommandValue nor pCommandValue");
}

EAccessMode CommandNode::chainMode(Aspect aspect) {
    const EAccessMode mode = BackedNode::chainMode(aspect);
    return IsWritable(mode) && m_command.node != nullptr ? Combine(mode, neededMode(*m_command.node)) : mode;
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
