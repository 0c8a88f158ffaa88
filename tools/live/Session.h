#ifndef LIVE_SESSION_H
#define LIVE_SESSION_H

#include "CameraRecord.h"
#include "FrameMailbox.h"
#include "Statistics.h"
#include "StatusText.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace live {

/// The devices in sight, copied out of the library's list. At most half a second.
Failure ListDevices(std::vector<DeviceRecord>& devices);

/// The device answers and nobody else holds it.
bool IsFree(const DeviceRecord& device);

/// One camera from opening to closing, in the order of calls that the camera library wants: make a handle,
/// take control, register for the disconnect message, choose buffers and packet size, start, fetch frames on
/// a thread of its own ("live-grab"), stop, close. Its operations are for one thread; the grab thread and the
/// library's message thread only touch what is atomic or guarded below, the mailbox, and the wake-up.
class Session {
public:
    struct Settings {
        uint32_t buffers = 8;
        bool dropIncomplete = false;
        bool optimalPacketSize = false;
        uint32_t packetBytes = 0;         ///< 0: leave it as it is
        uint64_t frameLimit = 0;          ///< the grab thread ends after so many frames; 0: never
        size_t firstCapacity = 64U << 20; ///< bytes of a frame buffer; it grows when a frame is larger
    };

    explicit Session(FrameMailbox& frames) : frames_(frames) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { Close(); }

    /// Takes exclusive control. `device` may be a remote record: Device() is then filled from the camera.
    Failure Open(const DeviceRecord& device, const Settings& settings);
    const DeviceRecord& Device() const { return device_; }

    /// What happened on the way and should be told, a line each.
    const std::vector<std::string>& Notes() const { return notes_; }

    Failure ReadXml(std::string& xml);
    Failure Start();
    /// Ends the stream; frames and counters stay. Harmless when none runs.
    void Stop();
    /// Stops, and gives the camera back. Harmless when nothing is open.
    void Close();

    /// Readable when one of the three below has become true.
    int Fd() const { return changed_.Fd(); }
    bool IsLost() const { return isLost_; }
    bool IsLimitReached() const { return received_ >= settings_.frameLimit && settings_.frameLimit > 0; }
    /// Why the grab thread gave up, if it did.
    Failure GrabFailure() const;

    /// Frames and the library's counters. The caller adds what it knows itself (time, pictures shown).
    void Count(Sample& sample) const;

private:
    static void OnMessage(uint32_t message, void* session);
    void SetPacketSize();
    Failure Abandon(const char* call, uint32_t status);
    void Grab();
    /// False: the thread is to end.
    bool GrabOne();
    bool OnRefused(const Frame& frame);
    bool OnFault(uint32_t status);
    void GiveUp(const char* call, uint32_t status);

    FrameMailbox& frames_;
    Settings settings_;
    DeviceRecord device_{};
    std::vector<std::string> notes_;
    void* handle_ = nullptr;
    bool isGrabbing_ = false;
    size_t wantedCapacity_ = 0; // grab thread
    Wakeup changed_;
    std::atomic<bool> isLost_{false};
    std::atomic<bool> isStopping_{false};
    std::atomic<uint64_t> received_{0};
    std::atomic<uint64_t> incomplete_{0};
    std::atomic<uint64_t> oversize_{0};
    std::atomic<uint64_t> grabErrors_{0};
    mutable std::mutex mutex_; // guards grabFailure_, and isStopping_ where somebody waits for it
    std::condition_variable stopping_;
    Failure grabFailure_;
    std::thread grabber_;
};

} // namespace live

#endif
