#include "device/CameraPort.h"

#include <utility>

#include "Base/GCException.h"
#include "Camera/Boundary/OvStatus.h"
#include "device/Session.h"

namespace kolt::cc {

namespace {

// True when there is anything to do.
bool checkArguments(const void* buffer, int64_t address, int64_t length) {
    if (length < 0 || address < 0 || (buffer == nullptr && length > 0)) {
        throw INVALID_ARGUMENT_EXCEPTION(
            "register access with a null buffer or a negative number (0x%llx, %lld bytes)",
            static_cast<unsigned long long>(address), static_cast<long long>(length));
    }
    return length > 0;
}

void throwOnFailure(std::uint32_t status, const char* what, int64_t address, int64_t length) {
    const auto at = static_cast<unsigned long long>(address);
    const auto bytes = static_cast<long long>(length);
    switch (status) {
    case OV_STATUS_OK:
        return;
    case OV_STATUS_INVALID_PARAMETER:
        throw INVALID_ARGUMENT_EXCEPTION("%s of %lld bytes at 0x%llx: the camera takes no such access", what,
                                         bytes, at);
    case OV_STATUS_INVALID_ADDRESS:
        throw OUT_OF_RANGE_EXCEPTION("%s of %lld bytes at 0x%llx: the camera has no such address", what,
                                     bytes, at);
    case OV_STATUS_WRITE_PROTECTED:
        throw ACCESS_EXCEPTION("%s of %lld bytes at 0x%llx: read only", what, bytes, at);
    case OV_STATUS_ACCESS_DENIED:
        throw ACCESS_EXCEPTION("%s of %lld bytes at 0x%llx: denied by the camera", what, bytes, at);
    case OV_STATUS_PRECONDITION:
        throw ACCESS_EXCEPTION("%s of %lld bytes at 0x%llx: the camera is lost", what, bytes, at);
    case OV_STATUS_CALL_ORDER:
        throw ACCESS_EXCEPTION("%s of %lld bytes at 0x%llx: the camera is closed", what, bytes, at);
    case OV_STATUS_NETWORK:
        throw TIMEOUT_EXCEPTION("%s of %lld bytes at 0x%llx: no answer", what, bytes, at);
    default:
        throw RUNTIME_EXCEPTION("%s of %lld bytes at 0x%llx failed (status 0x%08x)", what, bytes, at, status);
    }
}

} // namespace

void CameraPort::connect(std::shared_ptr<Session> session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    session_.swap(session);
}

std::shared_ptr<Session> CameraPort::session() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return session_;
}

GenApi_3_0::EAccessMode CameraPort::GetAccessMode() const {
    const std::shared_ptr<Session> open = session();
    return open && !open->isLost() && !open->isClosing() ? GenApi_3_0::RW : GenApi_3_0::NA;
}

void CameraPort::Read(void* buffer, int64_t address, int64_t length) {
    if (!checkArguments(buffer, address, length)) {
        return;
    }
    const std::shared_ptr<Session> open = session();
    const std::uint32_t status =
        open ? open->readMemory(static_cast<std::uint64_t>(address), static_cast<std::uint8_t*>(buffer),
                                static_cast<std::size_t>(length))
             : OV_STATUS_CALL_ORDER;
    throwOnFailure(status, "reading", address, length);
}

void CameraPort::Write(const void* buffer, int64_t address, int64_t length) {
    if (!checkArguments(buffer, address, length)) {
        return;
    }
    const std::shared_ptr<Session> open = session();
    const std::uint32_t status =
        open ? open->writeMemory(static_cast<std::uint64_t>(address),
                                 static_cast<const std::uint8_t*>(buffer), static_cast<std::size_t>(length))
             : OV_STATUS_CALL_ORDER;
    throwOnFailure(status, "writing", address, length);
}

} // namespace kolt::cc
