// A camera's registers in memory, behind the interface that a node map is connected to. Counts and records
// every access, and fails, blocks or dawdles on demand. Any thread may call anything at any time.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "GenApi/IPort.h"

namespace support {

class MemoryPort : public GenApi_3_0::IPort {
public:
    enum class Order { Big, Little };
    struct Access {
        bool write;
        std::int64_t address;
        std::vector<std::uint8_t> bytes; // as read or written; empty when the access failed
    };

    MemoryPort() = default;
    explicit MemoryPort(const std::vector<std::uint8_t>& memory, std::int64_t address = 0) {
        Store(address, memory);
    }

    // IPort. Memory never written reads as 0; every address is there.
    GenApi_3_0::EAccessMode GetAccessMode() const override;
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

    // The memory from the camera's side: neither counted nor recorded, never failing.
    void Store(std::int64_t address, const std::vector<std::uint8_t>& bytes);
    std::vector<std::uint8_t> Load(std::int64_t address, std::size_t length) const;
    void StoreInteger(std::int64_t address, std::size_t length, std::uint64_t value,
                      Order order = Order::Big);
    std::uint64_t LoadInteger(std::int64_t address, std::size_t length, Order order = Order::Big) const;
    void StoreText(std::int64_t address, std::size_t length, const std::string& text);

    std::uint64_t Reads() const;
    std::uint64_t Writes() const;
    // Since the last Forget. Recording can be switched off where only the counts matter.
    std::vector<Access> Accesses() const;
    void Record(bool on);
    // Forgets counts and accesses.
    void Forget();

    void SetAccessMode(GenApi_3_0::EAccessMode mode);
    // The next count accesses of the kind throw RuntimeException with this text; the memory stays as it is.
    void FailReads(std::uint64_t count, const std::string& text = "the port fails");
    void FailWrites(std::uint64_t count, const std::string& text = "the port fails");
    // Called before each access, outside of all locks of the port; may throw whatever a port throws.
    void OnAccess(std::function<void(bool write, std::int64_t address, std::int64_t length)> hook);
    // Called after each write, likewise: to let the camera act (clear a command, change another register).
    void OnWritten(std::function<void(std::int64_t address, std::int64_t length)> hook);
    // From now on accesses wait until Unblock.
    void Block();
    void Unblock();
    // Waits until at least one access is waiting. False after 30 s.
    bool WaitForBlocked() const;
    void SetDelayMicroseconds(unsigned delay);

private:
    struct Page {
        std::uint8_t bytes[256] = {};
    };

    // What stands before each access: block, delay, hook, failure on demand. Throws.
    void Enter(bool write, std::int64_t address, std::int64_t length);
    void CopyIn(std::int64_t address, const std::uint8_t* from, std::size_t length);
    void CopyOut(std::int64_t address, std::uint8_t* to, std::size_t length) const;

    mutable std::mutex m_mutex; // guards all below
    mutable std::condition_variable m_changed;
    std::unordered_map<std::uint64_t, Page> m_pages;
    std::vector<Access> m_accesses;
    std::uint64_t m_reads = 0;
    std::uint64_t m_writes = 0;
    std::uint64_t m_failReads = 0;
    std::uint64_t m_failWrites = 0;
    std::string m_failText;
    std::function<void(bool, std::int64_t, std::int64_t)> m_onAccess;
    std::function<void(std::int64_t, std::int64_t)> m_onWritten;
    GenApi_3_0::EAccessMode m_mode = GenApi_3_0::RW;
    unsigned m_delay = 0;
    unsigned m_waiting = 0;
    bool m_blocked = false;
    bool m_record = true;
};

} // namespace support
