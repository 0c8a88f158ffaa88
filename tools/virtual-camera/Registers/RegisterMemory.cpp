#include "Registers/RegisterMemory.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace vcam {

void RegisterMemory::Define(uint32_t address, Bytes initial, Access access, RegisterHooks hooks) {
    if (initial.empty() || initial.size() % 4 != 0 || address % 4 != 0)
        throw std::logic_error("a register has a multiple of four bytes at a multiple of four");
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto next = m_registers.lower_bound(address);
    if (next != m_registers.end() && uint64_t{address} + initial.size() > next->first)
        throw std::logic_error("registers overlap");
    if (next != m_registers.begin()) {
        const auto before = std::prev(next);
        if (uint64_t{before->first} + before->second.content.size() > address)
            throw std::logic_error("registers overlap");
    }
    Register& made = m_registers[address];
    made.content = std::move(initial);
    made.access = access;
    made.hooks = std::move(hooks);
}

void RegisterMemory::Define32(uint32_t address, uint32_t initial, Access access, RegisterHooks hooks) {
    Bytes content(4);
    Put32(content.data(), initial);
    Define(address, std::move(content), access, std::move(hooks));
}

void RegisterMemory::DefineDouble(uint32_t address, double initial, Access access, RegisterHooks hooks) {
    Define(address, Bytes(8), access, std::move(hooks));
    SetDouble(address, initial);
}

void RegisterMemory::DefineString(uint32_t address, uint32_t length, const std::string& initial,
                                  Access access, RegisterHooks hooks) {
    Define(address, Bytes(length), access, std::move(hooks));
    SetString(address, initial);
}

void RegisterMemory::DefineCopy(uint32_t address, uint32_t copy) {
    Register original;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        original = At(address);
    }
    Define(copy, std::move(original.content), original.access, std::move(original.hooks));
}

namespace {
std::function<void()> Both(std::function<void()> first, std::function<void()> second) {
    if (!first || !second)
        return first ? first : second;
    return [first = std::move(first), second = std::move(second)] {
        first();
        second();
    };
}
} // namespace

void RegisterMemory::AddHooks(uint32_t address, RegisterHooks further) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    RegisterHooks& hooks = At(address).hooks;
    hooks.beforeRead = Both(std::move(hooks.beforeRead), std::move(further.beforeRead));
    hooks.written = Both(std::move(hooks.written), std::move(further.written));
    if (!hooks.check || !further.check) {
        if (further.check)
            hooks.check = std::move(further.check);
        return;
    }
    hooks.check = [first = std::move(hooks.check), second = std::move(further.check)](const Bytes& proposed) {
        const Status status = first(proposed);
        return status == Status::Success ? second(proposed) : status;
    };
}

bool RegisterMemory::Has(uint32_t address) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_registers.count(address) != 0;
}

Status RegisterMemory::Split(uint32_t address, size_t length, std::vector<Piece>& pieces) {
    if (address % 4 != 0 || length % 4 != 0)
        return Status::BadAlignment;
    if (length == 0)
        return Status::InvalidParameter;
    auto found = m_registers.upper_bound(address);
    if (found == m_registers.begin())
        return Status::InvalidAddress;
    --found;
    uint64_t at = address;
    while (length > 0) {
        if (found == m_registers.end() || at < found->first ||
            at >= found->first + found->second.content.size())
            return Status::InvalidAddress;
        const size_t from = static_cast<size_t>(at - found->first);
        const size_t part = std::min(length, found->second.content.size() - from);
        pieces.push_back({&found->second, from, part});
        at += part;
        length -= part;
        ++found;
    }
    return Status::Success;
}

Status RegisterMemory::Read(uint32_t address, uint8_t* to, size_t length) {
    std::vector<Piece> pieces;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const Status status = Split(address, length, pieces);
        if (status != Status::Success)
            return status;
    }
    for (const Piece& piece : pieces) {
        if (piece.target->access == Access::WriteOnly)
            return Status::AccessDenied;
        if (piece.target->hooks.beforeRead)
            piece.target->hooks.beforeRead();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Piece& piece : pieces) {
        if (piece.from + piece.length > piece.target->content.size())
            return Status::InvalidAddress; // replaced by a shorter one meanwhile
        std::memcpy(to, piece.target->content.data() + piece.from, piece.length);
        to += piece.length;
    }
    return Status::Success;
}

Status RegisterMemory::WritePiece(std::mutex& mutex, const Piece& piece, const uint8_t* from) {
    Register& target = *piece.target;
    if (target.access == Access::ReadOnly)
        return Status::WriteProtect;
    if (target.hooks.check) {
        Bytes proposed;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            proposed = target.content;
        }
        if (piece.from + piece.length > proposed.size())
            return Status::InvalidAddress;
        std::memcpy(proposed.data() + piece.from, from, piece.length);
        const Status status = target.hooks.check(proposed);
        if (status != Status::Success)
            return status;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (piece.from + piece.length > target.content.size())
            return Status::InvalidAddress;
        std::memcpy(target.content.data() + piece.from, from, piece.length);
    }
    if (target.hooks.written)
        target.hooks.written();
    return Status::Success;
}

Status RegisterMemory::Write(uint32_t address, const uint8_t* from, size_t length, size_t& written) {
    written = 0;
    std::vector<Piece> pieces;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const Status status = Split(address, length, pieces);
        if (status != Status::Success)
            return status;
    }
    for (const Piece& piece : pieces) {
        const Status status = WritePiece(m_mutex, piece, from + written);
        if (status != Status::Success)
            return status;
        written += piece.length;
    }
    return Status::Success;
}

const RegisterMemory::Register& RegisterMemory::At(uint32_t address) const {
    return m_registers.at(address);
}

RegisterMemory::Register& RegisterMemory::At(uint32_t address) {
    return m_registers.at(address);
}

uint32_t RegisterMemory::Get32(uint32_t address) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return vcam::Get32(At(address).content.data());
}

double RegisterMemory::GetDouble(uint32_t address) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Bytes& content = At(address).content;
    if (content.size() < 8)
        throw std::out_of_range("no room for a double");
    const uint64_t bits = Get64(content.data());
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string RegisterMemory::GetString(uint32_t address) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Bytes& content = At(address).content;
    return {content.begin(), std::find(content.begin(), content.end(), uint8_t{0})};
}

Bytes RegisterMemory::GetBytes(uint32_t address) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return At(address).content;
}

void RegisterMemory::Set32(uint32_t address, uint32_t value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Put32(At(address).content.data(), value);
}

void RegisterMemory::SetDouble(uint32_t address, double value) {
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Bytes& content = At(address).content;
    if (content.size() < 8)
        throw std::out_of_range("no room for a double");
    Put64(content.data(), bits);
}

void RegisterMemory::SetString(uint32_t address, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Bytes& content = At(address).content;
    std::fill(content.begin(), content.end(), uint8_t{0});
    std::copy_n(value.begin(), std::min(value.size(), content.size()), content.begin());
}

void RegisterMemory::Replace(uint32_t address, Bytes content) {
    content.resize((content.size() + 3) / 4 * 4);
    if (content.empty())
        content.resize(4);
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_registers.find(address);
    if (found == m_registers.end())
        throw std::out_of_range("no register starts here");
    const auto next = std::next(found);
    if (next != m_registers.end() && uint64_t{address} + content.size() > next->first)
        throw std::logic_error("registers overlap");
    found->second.content = std::move(content);
}

std::map<uint32_t, Bytes> RegisterMemory::Contents() const {
    std::map<uint32_t, Bytes> contents;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [address, target] : m_registers)
        contents[address] = target.content;
    return contents;
}

void RegisterMemory::Restore(const std::map<uint32_t, Bytes>& contents) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [address, content] : contents) {
        const auto found = m_registers.find(address);
        if (found != m_registers.end())
            found->second.content = content;
    }
}

} // namespace vcam
