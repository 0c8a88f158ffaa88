#include "Network/GvcpResponder.h"

#include "VendorRegisters.h"

#include <algorithm>

namespace vcam {

namespace {

bool IsVendor(uint32_t address) {
    return address >= kVendorFirst && address <= kVendorLast;
}

bool IsFeature(uint32_t address) {
    return address >= 0xA000 && !IsVendor(address);
}

} // namespace

GvcpResponder::GvcpResponder(DeviceModel& model, FaultPanel& faults, CounterBoard& counters, Outlet& outlet)
    : m_model(model), m_faults(faults), m_counters(counters), m_outlet(outlet) {}

void GvcpResponder::Receive(Bytes bytes, const Peer& from, Clock::time_point now) {
    const Datagram datagram{std::move(bytes), from};
    if (m_faults.Silent() || now < m_bootedAt) {
        m_counters.Add(&Counters::ignoredWhileSilent);
        return;
    }
    GvcpCommand command;
    if (!ParseCommand(datagram.bytes.data(), datagram.bytes.size(), command)) {
        m_counters.Add(&Counters::badCommands);
        return;
    }
    m_counters.Add(&Counters::commands);
    m_channel.Heard(from, now);
    if (!Postpone(datagram, command, now))
        Execute(datagram, now);
    CheckReset(now);
}

// After the answer to the command that asked for it.
void GvcpResponder::CheckReset(Clock::time_point now) {
    if (!m_model.TakeResetRequest())
        return;
    m_bootedAt = now + std::chrono::milliseconds(m_model.GetConfig().rebootMs);
    m_delayed.clear();
    m_lastWrite = {};
    m_channel.Release();
    m_model.ReleaseChannels();
    m_model.PowerUp();
    m_outlet.Reboot();
    m_counters.Add(&Counters::resets);
}

void GvcpResponder::Work(Clock::time_point now) {
    CheckHeartbeat(now);
    CheckReset(now);
    for (;;) {
        const auto due = std::find_if(m_delayed.begin(), m_delayed.end(),
                                      [now](const Delayed& delayed) { return delayed.due <= now; });
        if (due == m_delayed.end())
            return;
        const Datagram datagram = std::move(due->datagram);
        m_delayed.erase(due);
        if (!m_faults.Silent())
            Execute(datagram, now);
        CheckReset(now);
    }
}

std::optional<Clock::time_point> GvcpResponder::NextDeadline() const {
    std::optional<Clock::time_point> first = HeartbeatDeadline();
    for (const Delayed& delayed : m_delayed)
        first = first ? std::min(*first, delayed.due) : delayed.due;
    return first;
}

std::optional<Clock::time_point> GvcpResponder::HeartbeatDeadline() const {
    const RegisterMemory& memory = m_model.Memory();
    if ((memory.Get32(bootstrap::kGvcpConfiguration) & bootstrap::kHeartbeatDisableBit) != 0)
        return std::nullopt;
    return m_channel.Deadline(std::chrono::milliseconds(memory.Get32(bootstrap::kHeartbeatTimeout)));
}

void GvcpResponder::CheckHeartbeat(Clock::time_point now) {
    const auto deadline = HeartbeatDeadline();
    if (!deadline || now < *deadline)
        return;
    m_channel.Release();
    ShowOwner();
    m_model.ReleaseChannels();
    m_counters.Add(&Counters::heartbeatsExpired);
}

// True when the answer is to come later, or is on its way already.
bool GvcpResponder::Postpone(const Datagram& datagram, const GvcpCommand& command, Clock::time_point now) {
    const Faults faults = m_faults.Get();
    const bool access = command.code == CommandCode::ReadRegister ||
                        command.code == CommandCode::WriteRegister ||
                        command.code == CommandCode::ReadMemory || command.code == CommandCode::WriteMemory;
    if (!access)
        return false;
    const auto pending = [&] {
        if (!faults.announcePending)
            return;
        const auto ms = static_cast<uint16_t>(std::min(faults.answerDelayMs + 50, 0xFFFFu));
        m_counters.Add(&Counters::pendingAnswers);
        m_outlet.Send(datagram.from, EncodePending(command.requestId, ms), false);
    };
    for (const Delayed& delayed : m_delayed) {
        if (delayed.datagram.from == datagram.from && delayed.datagram.bytes == datagram.bytes) {
            pending();
            return true;
        }
    }
    if (faults.answerDelayMs == 0)
        return false;
    m_delayed.push_back({now + std::chrono::milliseconds(faults.answerDelayMs), datagram});
    pending();
    return true;
}

void GvcpResponder::Execute(const Datagram& datagram, Clock::time_point now) {
    GvcpCommand command;
    if (!ParseCommand(datagram.bytes.data(), datagram.bytes.size(), command))
        return;
    const Peer& from = datagram.from;
    switch (command.code) {
    case CommandCode::Discovery:
        return Discover(command, from);
    case CommandCode::ForceIp:
        return ForceIp(command, from);
    case CommandCode::ReadRegister:
        return ReadRegisters(command, from);
    case CommandCode::ReadMemory:
        return ReadMemory(command, from);
    case CommandCode::WriteRegister:
    case CommandCode::WriteMemory:
        if (m_lastWrite.from == from && m_lastWrite.bytes == datagram.bytes)
            return m_outlet.Send(from, m_lastWriteAnswer, false);
        m_lastWriteAnswer.clear();
        m_lastWrite = datagram;
        if (command.code == CommandCode::WriteRegister)
            return WriteRegisters(command, from, now);
        return WriteMemory(command, from, now);
    case CommandCode::PacketResend:
        if (const auto request = ParsePacketResend(command))
            m_outlet.RequestResend(*request);
        return;
    default:
        return Answer(command, from,
                      EncodeAnswer(Status::NotImplemented,
                                   static_cast<uint16_t>(static_cast<uint16_t>(command.code) + 1),
                                   command.requestId, {}));
    }
}

void GvcpResponder::Answer(const GvcpCommand& command, const Peer& to, const Bytes& answer) {
    const bool write = command.code == CommandCode::WriteRegister || command.code == CommandCode::WriteMemory;
    if (write)
        m_lastWriteAnswer = answer;
    if (command.WantsAnswer())
        m_outlet.Send(to, answer, false);
}

void GvcpResponder::Discover(const GvcpCommand& command, const Peer& from) {
    m_counters.Add(&Counters::discoveries);
    m_outlet.Send(
        from,
        EncodeAnswer(Status::Success, AnswerCode(command.code), command.requestId, m_model.DiscoveryRecord()),
        command.AllowsBroadcastAnswer());
}

void GvcpResponder::ForceIp(const GvcpCommand& command, const Peer& from) {
    const auto request = ParseForceIp(command);
    if (!request || request->mac != m_model.Mac())
        return; // not for this camera
    const bool restart =
        request->address == 0; // "begin your own configuration again": it comes back where it is
    Status status = Status::Success;
    if (m_channel.Owner())
        status = Status::AccessDenied;
    else if (!restart)
        status = m_outlet.Move(request->address, request->mask, request->gateway);
    if (status == Status::Success && !restart)
        m_counters.Add(&Counters::forcedAddresses);
    if (command.WantsAnswer() && !restart)
        m_outlet.Send(from, EncodeAnswer(status, AnswerCode(command.code), command.requestId, {}),
                      command.AllowsBroadcastAnswer());
}

Status GvcpResponder::Read(const Peer& from, uint32_t address, uint8_t* to, size_t length) {
    // Whoever wonders why the control is refused may look.
    const bool open = IsVendor(address) || (address == bootstrap::kControlPrivilege && length == 4);
    if (!open && !m_channel.MayRead(from)) {
        m_counters.Add(&Counters::accessDenied);
        return Status::AccessDenied;
    }
    const Status status = m_model.Memory().Read(address, to, length);
    if (address == bootstrap::kControlPrivilege && length == 4 && m_faults.Get().denyControl)
        Put32(to, bootstrap::kControlBit);
    return status;
}

Status GvcpResponder::Write(const Peer& from, uint32_t address, const uint8_t* data, size_t length,
                            size_t& written, Clock::time_point now) {
    written = 0;
    if (address == bootstrap::kControlPrivilege && length == 4) {
        const Status status = WritePrivilege(from, Get32(data), now);
        written = status == Status::Success ? 4 : 0;
        return status;
    }
    if (!IsVendor(address) && !m_channel.MayWrite(from)) {
        m_counters.Add(&Counters::accessDenied);
        return Status::AccessDenied;
    }
    if (IsFeature(address) && m_faults.Get().refuseWrites) {
        m_counters.Add(&Counters::writesRefused);
        return Status::WriteProtect;
    }
    return m_model.Memory().Write(address, data, length, written);
}

Status GvcpResponder::WritePrivilege(const Peer& from, uint32_t value, Clock::time_point now) {
    const bool denied = m_faults.Get().denyControl && value != 0;
    const bool owned = m_channel.Owner().has_value();
    const Status status = denied ? Status::AccessDenied : m_channel.Claim(from, value, now);
    if (status != Status::Success) {
        m_counters.Add(&Counters::accessDenied);
        return status;
    }
    ShowOwner();
    if (owned && !m_channel.Owner())
        m_model.ReleaseChannels();
    return status;
}

void GvcpResponder::ShowOwner() {
    const std::optional<Peer> owner = m_channel.Owner();
    RegisterMemory& memory = m_model.Memory();
    memory.Set32(bootstrap::kControlPrivilege, m_channel.Value());
    memory.Set32(bootstrap::kPrimaryPort, owner ? owner->port : 0);
    memory.Set32(bootstrap::kPrimaryAddress, owner ? owner->address : 0);
}

void GvcpResponder::ReadRegisters(const GvcpCommand& command, const Peer& from) {
    const auto addresses = ParseReadRegister(command);
    Status status = addresses ? Status::Success : Status::InvalidHeader;
    Bytes values; // of those before the one that failed
    for (size_t i = 0; addresses && i < addresses->size() && status == Status::Success; ++i) {
        Bytes value(4);
        status = Read(from, (*addresses)[i], value.data(), value.size());
        if (status == Status::Success)
            values.insert(values.end(), value.begin(), value.end());
    }
    Answer(command, from, EncodeAnswer(status, AnswerCode(command.code), command.requestId, values));
}

void GvcpResponder::WriteRegisters(const GvcpCommand& command, const Peer& from, Clock::time_point now) {
    const auto writes = ParseWriteRegister(command);
    Status status = writes ? Status::Success : Status::InvalidHeader;
    uint16_t done = 0;
    for (size_t i = 0; writes && i < writes->size() && status == Status::Success; ++i) {
        Bytes value(4);
        Put32(value.data(), (*writes)[i].value);
        size_t written = 0;
        status = Write(from, (*writes)[i].address, value.data(), value.size(), written, now);
        if (status == Status::Success)
            ++done;
    }
    Answer(command, from, EncodeWriteAnswer(status, command.code, command.requestId, done));
}

void GvcpResponder::ReadMemory(const GvcpCommand& command, const Peer& from) {
    const auto read = ParseReadMemory(command);
    Status status = read ? Status::Success : Status::InvalidHeader;
    Bytes payload;
    if (read) {
        if (read->count > kReadMemoryMaxCount) {
            status = Status::InvalidParameter;
        } else {
            payload.resize(4 + size_t{read->count});
            Put32(payload.data(), read->address);
            status = Read(from, read->address, payload.data() + 4, read->count);
        }
    }
    if (status != Status::Success)
        payload.clear();
    Answer(command, from, EncodeAnswer(status, AnswerCode(command.code), command.requestId, payload));
}

void GvcpResponder::WriteMemory(const GvcpCommand& command, const Peer& from, Clock::time_point now) {
    const auto write = ParseWriteMemory(command);
    Status status = write ? Status::Success : Status::InvalidHeader;
    size_t written = 0;
    if (write)
        status = Write(from, write->address, write->data, write->length, written, now);
    Answer(command, from,
           EncodeWriteAnswer(status, command.code, command.requestId, static_cast<uint16_t>(written)));
}

} // namespace vcam
