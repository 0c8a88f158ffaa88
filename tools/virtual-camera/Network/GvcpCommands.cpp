// What GvcpServer does with each command.
#include "Device/FeatureRegisters.h"
#include "Network/GvcpServer.h"
#include "VendorRegisters.h"

#include <cerrno>
#include <system_error>

namespace vcam {

namespace {

bool IsVendor(uint32_t address) {
    return address >= kVendorFirst && address <= kVendorLast;
}

bool IsFeature(uint32_t address) {
    return address >= 0xA000 && !IsVendor(address);
}

} // namespace

void GvcpServer::Discover(const GvcpCommand& command, const Peer& from) {
    m_counters.Add(&Counters::discoveries);
    AnswerNearby(
        from,
        EncodeAnswer(Status::Success, AnswerCode(command.code), command.requestId, m_model.DiscoveryRecord()),
        command.AllowsBroadcastAnswer());
}

void GvcpServer::ForceIp(const GvcpCommand& command, const Peer& from) {
    const auto request = ParseForceIp(command);
    if (!request || request->mac != m_model.Mac())
        return; // not for this camera
    const bool restart =
        request->address == 0; // "begin your own configuration again": it comes back where it is
    Status status = Status::Success;
    if (m_channel.Owner())
        status = Status::AccessDenied;
    else if (!restart)
        status = Move(request->address, request->mask, request->gateway);
    if (status == Status::Success && !restart)
        m_counters.Add(&Counters::forcedAddresses);
    if (command.WantsAnswer() && !restart)
        AnswerNearby(from, EncodeAnswer(status, AnswerCode(command.code), command.requestId, {}),
                     command.AllowsBroadcastAnswer());
}

Status GvcpServer::Move(uint32_t address, uint32_t mask, uint32_t gateway) {
    Site site = m_site;
    site.address = address;
    site.mask = mask;
    site.gateway = gateway;
    const uint32_t host = address & ~mask;
    const bool sensible = mask != 0 && (~mask & (~mask + 1)) == 0 && host != 0 && host != ~mask;
    const bool loopbackAddress = (address >> 24) == 127;
    if (!sensible || loopbackAddress != m_site.loopback)
        return Status::InvalidParameter;
    const Site old = m_site;
    try {
        Settle(site);
        Open(site);
        m_stream.Rebind(address);
        return Status::Success;
    } catch (const std::system_error&) {
        Return(site, old);
        return Status::Error;
    }
}

// After a move that failed half way.
void GvcpServer::Return(const Site& from, const Site& to) {
    m_site = to;
    if (to.loopback)
        return;
    try {
        if (from.added && from.address != to.address)
            RemoveHostAddress(from.interface, from.address, from.mask);
        AddHostAddress(to.interface, to.address, to.mask);
    } catch (const std::system_error&) { // the interface is gone; nobody will ask at this address
    }
}

// Puts the new address on the interface and takes the old one off.
void GvcpServer::Settle(Site& site) {
    if (site.loopback || (site.address == m_site.address && site.mask == m_site.mask))
        return;
    site.added = false;
    if (site.address != m_site.address && FindHostAddress(site.address))
        throw std::system_error(EADDRINUSE, std::generic_category(),
                                "the host itself has " + Dotted(site.address));
    if (!m_site.added)
        m_displaced = m_site;
    RemoveHostAddress(m_site.interface, m_site.address, m_site.mask);
    AddHostAddress(site.interface, site.address, site.mask);
    site.added = true;
}

Status GvcpServer::Read(const Peer& from, uint32_t address, uint8_t* to, size_t length) {
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

Status GvcpServer::Write(const Peer& from, uint32_t address, const uint8_t* data, size_t length,
                         size_t& written) {
    written = 0;
    if (address == bootstrap::kControlPrivilege && length == 4) {
        const Status status = WritePrivilege(from, Get32(data));
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

Status GvcpServer::WritePrivilege(const Peer& from, uint32_t value) {
    const bool denied = m_faults.Get().denyControl && value != 0;
    const bool owned = m_channel.Owner().has_value();
    const Status status = denied ? Status::AccessDenied : m_channel.Claim(from, value, Clock::now());
    if (status != Status::Success) {
        m_counters.Add(&Counters::accessDenied);
        return status;
    }
    ShowOwner();
    if (owned && !m_channel.Owner())
        m_model.ReleaseChannels();
    return status;
}

void GvcpServer::ShowOwner() {
    const std::optional<Peer> owner = m_channel.Owner();
    RegisterMemory& memory = m_model.Memory();
    memory.Set32(bootstrap::kControlPrivilege, m_channel.Value());
    memory.Set32(bootstrap::kPrimaryPort, owner ? owner->port : 0);
    memory.Set32(bootstrap::kPrimaryAddress, owner ? owner->address : 0);
    m_controlled = owner.has_value();
}

void GvcpServer::ReadRegisters(const GvcpCommand& command, const Peer& from) {
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

void GvcpServer::WriteRegisters(const GvcpCommand& command, const Peer& from) {
    const auto writes = ParseWriteRegister(command);
    Status status = writes ? Status::Success : Status::InvalidHeader;
    uint16_t done = 0;
    for (size_t i = 0; writes && i < writes->size() && status == Status::Success; ++i) {
        Bytes value(4);
        Put32(value.data(), (*writes)[i].value);
        size_t written = 0;
        status = Write(from, (*writes)[i].address, value.data(), value.size(), written);
        if (status == Status::Success)
            ++done;
    }
    Answer(command, from, EncodeWriteAnswer(status, command.code, command.requestId, done));
}

void GvcpServer::ReadMemory(const GvcpCommand& command, const Peer& from) {
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

void GvcpServer::WriteMemory(const GvcpCommand& command, const Peer& from) {
    const auto write = ParseWriteMemory(command);
    Status status = write ? Status::Success : Status::InvalidHeader;
    size_t written = 0;
    if (write)
        status = Write(from, write->address, write->data, write->length, written);
    Answer(command, from,
           EncodeWriteAnswer(status, command.code, command.requestId, static_cast<uint16_t>(written)));
}

} // namespace vcam
