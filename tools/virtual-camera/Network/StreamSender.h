// Takes frames and sends them as GVSP packets, on a thread of its own that sleeps while there is nothing to
// do. That thread alone owns the stream socket and the ring of frames, so that a frame is never changed while
// it is sent again.
#ifndef VCAM_NETWORK_STREAMSENDER_H
#define VCAM_NETWORK_STREAMSENDER_H

#include "Device/DeviceModel.h"
#include "Device/JpegEncoder.h"
#include "Network/Pacing.h"
#include "Network/PacketBatch.h"
#include "Network/Socket.h"
#include "Protocol/GvspCodec.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <optional>
#include <thread>

namespace vcam {

class StreamSender final : public StreamControl {
public:
    StreamSender(DeviceModel& model, FaultPanel& faults, CounterBoard& counters,
                 std::shared_ptr<const Scene> scene);
    ~StreamSender() override;

    void Start(uint32_t address, const std::string& interface);
    void Stop();
    // The camera has a new address. Only without an acquisition.
    void Rebind(uint32_t address);
    void RequestResend(const ResendRequest& request);
    std::vector<FrameLoss> LossyFrames() const;
    bool IsBusy() const; // acquiring, or still sending the last frame

    void StartAcquisition() override;
    void StopAcquisition() override;
    void AbortAcquisition() override;
    void SettingsChanged() override;
    void FrameTrigger(double exposureUs) override;
    void AcquisitionTrigger() override;
    void FireTestPacket() override;
    bool IsAcquiring() const override;

private:
    struct Slot { // one frame of the ring
        Bytes data;
        Bytes pixels; // of a picture that is compressed: the data are made of them
        PictureSettings painted;
        uint32_t paintedPhases = 0;
        FrameDescription description;
        uint64_t serial = 0; // of the frame, since the start of the camera
        uint16_t blockId = 0;
        uint32_t packetPayload = 1; // bytes of a full payload packet
        uint32_t packets = 0;       // leader and trailer included
        uint32_t attempted = 0;     // packets that had their first turn
        bool live = false;          // can be sent again
        uint32_t missing = 0;
        std::vector<bool> onWire;
    };
    struct LossRecord {
        uint64_t serial;
        FrameLoss loss;
    };

    void Run();
    std::optional<Clock::time_point> NextFrameDue() const;
    void BeginAcquisition();
    void TakeFrame(std::unique_lock<std::mutex>& lock);
    void EndFrame();
    Slot& PrepareSlot(const StreamSettings& settings, const Faults& faults, uint32_t triggers);
    PictureSettings PictureOfFrame(const StreamSettings& settings, const Faults& faults) const;
    void Paint(Slot& slot, const PictureSettings& picture, Bytes& to);
    void Fill(Slot& slot, const PictureSettings& picture, const StreamSettings& settings, uint32_t triggers);
    void AppendChunks(Slot& slot, const StreamSettings& settings);
    void SendFrame(Slot& slot, const StreamSettings& settings);
    void SendRange(Slot& slot, uint32_t first, uint32_t count, const Faults& faults);
    void WaitForPacer(Clock::time_point due);
    void ServeResends(std::unique_lock<std::mutex>& lock);
    void Resend(const ResendRequest& request);
    void SendUnavailable(uint16_t blockId, uint32_t first, uint32_t last);
    void SendTestPacket();
    void SendPackets(Slot& slot, const std::vector<uint32_t>& order, Status status);
    void CountMissing(Slot& slot, int change);
    bool Draw(uint32_t perMille, uint16_t blockId, uint32_t packet, uint32_t salt) const;
    void OpenSocket();
    bool Connect(const StreamSettings& settings);

    DeviceModel& m_model;
    FaultPanel& m_faults;
    CounterBoard& m_counters;

    mutable std::mutex m_mutex;     // guards all up to the blank line
    std::condition_variable m_wake; // the thread waits on it
    std::condition_variable m_frameEnded;
    bool m_stop = false;
    bool m_acquiring = false;
    bool m_begin = false; // an acquisition has been started and not yet begun
    bool m_inFrame = false;
    bool m_armed = false; // the acquisition has had its trigger, or needs none
    bool m_settingsChanged = true;
    std::optional<Clock::time_point> m_trigger; // of a frame that is not yet taken
    double m_triggerExposureUs = 0;             // its exposure, already over; 0: by the settings
    uint32_t m_triggerCount = 0;                // accepted since the start of the acquisition
    std::deque<ResendRequest> m_resends;
    uint32_t m_testPackets = 0;
    uint32_t m_address = 0;
    bool m_rebind = false;
    std::deque<LossRecord> m_lossy;

    std::atomic<bool> m_abort{false}; // cuts the frame under way

    // The thread's own.
    std::string m_interface;
    Painter m_painter;
    JpegEncoder m_jpeg;
    Descriptor m_socket;
    Peer m_connected;
    bool m_connectedWhole = false; // with "do not fragment"
    StreamSettings m_settings;
    FramePacer m_pacer;
    Clock::time_point m_lastFrame{};
    uint64_t m_frameIndex = 0; // since the start of the acquisition
    std::vector<Slot> m_ring;
    size_t m_nextSlot = 0;
    uint64_t m_serial = 0;
    PacketBatch m_batch;
    uint64_t m_attempts = 0; // resends so far: makes their draws differ

    std::thread m_thread;
};

} // namespace vcam

#endif
