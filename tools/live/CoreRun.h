#ifndef LIVE_CORE_RUN_H
#define LIVE_CORE_RUN_H

#include "ArgumentParser.h"
#include "CameraRecord.h"
#include "Descriptor.h"
#include "Statistics.h"
#include "Window.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

class QCamera;

namespace live {

/// The run of --core: the same window and figures as LiveRun, but the camera is a QCamera of the main
/// program, whose own threads fetch, convert and draw. The calling thread handles the window and says the
/// figures; it sleeps until one of its descriptors has something to say.
class CoreRun {
public:
    CoreRun(const Options& options, StopSignals& signals) : options_(options), signals_(signals) {}
    CoreRun(const CoreRun&) = delete;
    CoreRun& operator=(const CoreRun&) = delete;
    ~CoreRun();

    /// An exit code.
    int Run();

private:
    using Clock = std::chrono::steady_clock;

    int Open();
    int Complaint(const char* call, int code) const;
    void SetPacketSize();
    int SaveXml();
    int Stream();
    int Finish(int exitCode);
    int Screenshot();
    void Wait(Clock::time_point until);
    Clock::time_point Deadline() const;
    void OnWindowEvents();
    void TakeShape();
    void Place();
    void Report();
    Sample TakeSample() const;

    const Options& options_;
    StopSignals& signals_;
    Wakeup changed_; ///< raised by the camera's threads
    std::atomic<bool> isLost_{false};
    std::atomic<bool> isSizeChanged_{false};
    std::unique_ptr<Window> window_;
    QCamera* camera_ = nullptr; ///< one reference is ours
    DeviceRecord device_{};
    bool hasShape_ = false;
    bool isStopWanted_ = false;
    std::string format_;
    Clock::time_point begin_; ///< --seconds counts from here
    std::optional<Beat> beat_;
    Sample start_;
    Sample before_;
};

} // namespace live

#endif
