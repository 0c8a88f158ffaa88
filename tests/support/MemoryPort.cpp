#include "support/MemoryPort.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "Base/GCException.h"

namespace support {

using Guard = std::lock_guard<std::mutex>;

GenApi_3_0::EAccessMode MemoryPort::GetAccessMode() const {
    const Guard guard(m_mutex);
    return m_mode;
}

void MemoryPort::Enter(bool write, std::int64_t address, std::int64_t length) {
    std::unique_lock<std::mutex> lock(m_mutex);
    write ? ++m_writes : ++m_reads;
    if (m_blocked) {
        ++m_waiting;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_blocked; });
        --m_waiting;
    }
    const unsigned delay = m_delay;
    const auto hook = m_onAccess;
    if (delay > 0 || hook) {
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::microseconds(delay));
        if (hook) {
            hook(write, address, length);
        }
        lock.lock();
    }
    std::uint64_t& failures = write ? m_failWrites : m_failReads;
    if (failures > 0 || length < 0) {
        failures -= failures > 0 ? 1 : 0;
        if (m_record) {
            m_accesses.push_back({write, address, {}});
        }
        throw RUNTIME_EXCEPTION(length < 0 ? std::string("negative length") : m_failText);
    }
}

void MemoryPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    Enter(false, address, length);
    const Guard guard(m_mutex);
    auto* const to = static_cast<std::uint8_t*>(buffer);
    CopyOut(address, to, static_cast<std::size_t>(length));
    if (m_record) {
        m_accesses.push_back({false, address, {to, to + length}});
    }
}

void MemoryPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    Enter(true, address, length);
    std::function<void(std::int64_t, std::int64_t)> hook;
    {
        const Guard guard(m_mutex);
        const auto* const from = static_cast<const std::uint8_t*>(buffer);
        CopyIn(address, from, static_cast<std::size_t>(length));
        if (m_record) {
            m_accesses.push_back({true, address, {from, from + length}});
        }
        hook = m_onWritten;
    }
    if (hook) {
        hook(address, length);
    }
}

void MemoryPort::CopyIn(std::int64_t address, const std::uint8_t* from, std::size_t length) {
    auto at = static_cast<std::uint64_t>(address);
    while (length > 0) {
        const std::size_t offset = at % sizeof(Page);
        const std::size_t count = std::min(length, sizeof(Page) - offset);
        std::memcpy(m_pages[at / sizeof(Page)].bytes + offset, from, count);
        at += count;
        from += count;
        length -= count;
    }
}

void MemoryPort::CopyOut(std::int64_t address, std::uint8_t* to, std::size_t length) const {
    auto at = static_cast<std::uint64_t>(address);
    while (length > 0) {
        const std::size_t offset = at % sizeof(Page);
        const std::size_t count = std::min(length, sizeof(Page) - offset);
        const auto page = m_pages.find(at / sizeof(Page));
        if (page == m_pages.end()) {
            std::memset(to, 0, count);
        } else {
            std::memcpy(to, page->second.bytes + offset, count);
        }
        at += count;
        to += count;
        length -= count;
    }
}

void MemoryPort::Store(std::int64_t address, const std::vector<std::uint8_t>& bytes) {
    const Guard guard(m_mutex);
    CopyIn(address, bytes.data(), bytes.size());
}

std::vector<std::uint8_t> MemoryPort::Load(std::int64_t address, std::size_t length) const {
    const Guard guard(m_mutex);
    std::vector<std::uint8_t> bytes(length);
    CopyOut(address, bytes.data(), length);
    return bytes;
}

void MemoryPort::StoreInteger(std::int64_t address, std::size_t length, std::uint64_t value, Order order) {
    std::vector<std::uint8_t> bytes(length);
    for (std::size_t i = 0; i < length; ++i) {
        bytes[order == Order::Big ? length - 1 - i : i] =
            static_cast<std::uint8_t>(i < 8 ? value >> (8 * i) : 0);
    }
    Store(address, bytes);
}

std::uint64_t MemoryPort::LoadInteger(std::int64_t address, std::size_t length, Order order) const {
    const std::vector<std::uint8_t> bytes = Load(address, length);
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < length; ++i) {
        value = value << 8 | bytes[order == Order::Big ? i : length - 1 - i];
    }
    return value;
}

void MemoryPort::StoreText(std::int64_t address, std::size_t length, const std::string& text) {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    bytes.resize(length);
    Store(address, bytes);
}

std::uint64_t MemoryPort::Reads() const {
    const Guard guard(m_mutex);
    return m_reads;
}

std::uint64_t MemoryPort::Writes() const {
    const Guard guard(m_mutex);
    return m_writes;
}

std::vector<MemoryPort::Access> MemoryPort::Accesses() const {
    const Guard guard(m_mutex);
    return m_accesses;
}

void MemoryPort::Record(bool on) {
    const Guard guard(m_mutex);
    m_record = on;
}

void MemoryPort::Forget() {
    const Guard guard(m_mutex);
    m_accesses.clear();
    m_reads = m_writes = 0;
}

void MemoryPort::SetAccessMode(GenApi_3_0::EAccessMode mode) {
    const Guard guard(m_mutex);
    m_mode = mode;
}

void MemoryPort::FailReads(std::uint64_t count, const std::string& text) {
    const Guard guard(m_mutex);
    m_failReads = count;
    m_failText = text;
}

void MemoryPort::FailWrites(std::uint64_t count, const std::string& text) {
    const Guard guard(m_mutex);
    m_failWrites = count;
    m_failText = text;
}

void MemoryPort::OnAccess(std::function<void(bool, std::int64_t, std::int64_t)> hook) {
    const Guard guard(m_mutex);
    m_onAccess = std::move(hook);
}

void MemoryPort::OnWritten(std::function<void(std::int64_t, std::int64_t)> hook) {
    const Guard guard(m_mutex);
    m_onWritten = std::move(hook);
}

void MemoryPort::Block() {
    const Guard guard(m_mutex);
    m_blocked = true;
}

void MemoryPort::Unblock() {
    const Guard guard(m_mutex);
    m_blocked = false;
    m_changed.notify_all();
}

bool MemoryPort::WaitForBlocked() const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_waiting > 0; });
}

void MemoryPort::SetDelayMicroseconds(unsigned delay) {
    const Guard guard(m_mutex);
    m_delay = delay;
}

} // namespace support
