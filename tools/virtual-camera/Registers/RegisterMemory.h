// The register space of a device: registers of any length in multiples of four bytes, each with its access
// mode and hooks.
//
// Two sides use it. The outer side (`Read`, `Write`: what arrives over the network) is held to alignment,
// access modes and checks, and runs the hooks. The inner side (`Get…`, `Set…`: the device itself) is held to
// nothing and runs no hook. Hooks run on the caller's thread and without the lock, so a hook may enter the
// memory again, wait for a thread that does, or take as long as it likes. All operations may be called on any
// thread; `Define` only before the first use.
#ifndef VCAM_REGISTERS_REGISTERMEMORY_H
#define VCAM_REGISTERS_REGISTERMEMORY_H

#include "Protocol/GvcpCodec.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace vcam {

enum class Access : uint8_t { ReadOnly, ReadWrite, WriteOnly };

// Any may be empty.
struct RegisterHooks {
    std::function<void()> beforeRead; // bring the content up to date
    std::function<Status(const Bytes& proposed)>
        check;                     // anything but Success refuses the write, nothing is stored
    std::function<void()> written; // after the content was stored
};

class RegisterMemory {
public:
    // Throws std::logic_error when the length is no multiple of four, or two registers overlap.
    void Define(uint32_t address, Bytes initial, Access access, RegisterHooks hooks = {});
    void Define32(uint32_t address, uint32_t initial, Access access, RegisterHooks hooks = {});
    void DefineDouble(uint32_t address, double initial, Access access, RegisterHooks hooks = {});
    void DefineString(uint32_t address, uint32_t length, const std::string& initial, Access access,
                      RegisterHooks hooks = {});

    // Another register with the content, access and hooks that `address` has now.
    void DefineCopy(uint32_t address, uint32_t copy);
    // Further hooks of a register that is defined already, after those that it has; the first refusal counts.
    // Throws std::out_of_range where no register starts.
    void AddHooks(uint32_t address, RegisterHooks further);
    bool Has(uint32_t address) const; // a register starts here

    // The outer side. An access may span registers that follow each other without a gap.
    Status Read(uint32_t address, uint8_t* to, size_t length);
    // `written` counts the bytes that were stored; when a register refuses, those before it stay written.
    Status Write(uint32_t address, const uint8_t* from, size_t length, size_t& written);

    // The inner side. An address where no register starts throws std::out_of_range.
    uint32_t Get32(uint32_t address) const;
    double GetDouble(uint32_t address) const;
    std::string GetString(uint32_t address) const;
    Bytes GetBytes(uint32_t address) const;
    void Set32(uint32_t address, uint32_t value);
    void SetDouble(uint32_t address, double value);
    void SetString(uint32_t address, const std::string& value); // cut to the register's length
    void Replace(uint32_t address, Bytes content);              // may change the length of the last register
    // The content of every register, and back; for what a device keeps and restores as a whole. No hook runs.
    std::map<uint32_t, Bytes> Contents() const;
    void Restore(const std::map<uint32_t, Bytes>& contents); // addresses without a register are passed over

private:
    struct Register {
        Bytes content;
        Access access = Access::ReadOnly;
        RegisterHooks hooks; // never changed after Define, so they are called without the lock
    };
    struct Piece { // the part of an access that falls on one register
        Register* target;
        size_t from;
        size_t length;
    };

    Status Split(uint32_t address, size_t length, std::vector<Piece>& pieces);
    static Status WritePiece(std::mutex& mutex, const Piece& piece, const uint8_t* from);
    const Register& At(uint32_t address) const;
    Register& At(uint32_t address);

    mutable std::mutex m_mutex; // guards the content of every register and the map itself
    std::map<uint32_t, Register> m_registers;
};

} // namespace vcam

#endif
