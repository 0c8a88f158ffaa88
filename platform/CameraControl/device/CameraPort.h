// The camera's registers as the node map reads and writes them.
#ifndef KOLT_CAMERA_CONTROL_CAMERA_PORT_H
#define KOLT_CAMERA_CONTROL_CAMERA_PORT_H

#include <cstdint>
#include <memory>
#include <mutex>

#include "GenApi/IPort.h"

namespace kolt::cc {

class Session;

// One per handle, for all its openings. Any thread. While the device is closed or lost each access throws
// GenICam_3_0::AccessException; what else it throws: InvalidArgumentException for arguments that can't be
// right, OutOfRangeException for addresses that the device doesn't have, AccessException where it denies,
// TimeoutException and RuntimeException where it doesn't answer as it should.
class CameraPort final : public GenApi_3_0::IPort {
public:
    // Null: closed. An access that is under way keeps the former session.
    void connect(std::shared_ptr<Session> session);

    GenApi_3_0::EAccessMode GetAccessMode() const override; // RW, or NA while closed or lost
    void Read(void* buffer, int64_t address, int64_t length) override;
    void Write(const void* buffer, int64_t address, int64_t length) override;

private:
    std::shared_ptr<Session> session() const;

    mutable std::mutex mutex_; // guards session_
    std::shared_ptr<Session> session_;
};

} // namespace kolt::cc

#endif
