// A camera as a device: its register space with all hooks, its XML and the settings that the registers stand
// for. It knows neither sockets nor threads; the storey above enters it from its threads and takes its orders
// by `StreamControl`.
#ifndef VCAM_DEVICE_DEVICEMODEL_H
#define VCAM_DEVICE_DEVICEMODEL_H

#include "Device/FaultPanel.h"
#include "Device/FeatureBuilder.h"
#include "Picture/Painter.h"

#include <atomic>

namespace vcam {

// What a register hook may order from the stream.
class StreamControl {
public:
    virtual ~StreamControl() = default;
    virtual void StartAcquisition() = 0;
    virtual void StopAcquisition() = 0;  // the frame under way is completed
    virtual void AbortAcquisition() = 0; // on return no packet of a frame follows
    virtual void SettingsChanged() = 0;  // the next frame is made by new settings
    virtual void FrameTrigger() = 0;
    virtual void AcquisitionTrigger() = 0;
    virtual void FireTestPacket() = 0;
    virtual bool IsAcquiring() const = 0;
};

enum class AcquisitionMode : uint32_t { SingleFrame = 1, MultiFrame = 2, Continuous = 0 };
enum class TriggerSource : uint32_t { Software = 0, Line0 = 1, Line1 = 2, Line2 = 3, Line3 = 4 };
enum class TriggerKind : uint32_t { FrameStart = 0, AcquisitionStart = 1 };

constexpr uint32_t kChunkImageId = 0x00000001;
enum class Chunk : uint32_t { FrameId = 0, Timestamp = 1, ExposureTime = 2, Gain = 3 };
constexpr uint32_t kChunkCount = 4;
constexpr uint32_t kFirstChunkId = 0x00001001; // each carries 8 bytes

// What the stream needs to know; a copy, so that a frame is made by one state of the registers.
struct StreamSettings {
    PictureSettings picture;
    AcquisitionMode mode = AcquisitionMode::Continuous;
    uint32_t frameCount = 1;
    double periodUs = 0;      // from the start of one frame to that of the next
    double leastPeriodUs = 0; // what sensor, exposure and link allow; counts for triggered frames
    bool frameTrigger = false;
    bool acquisitionTrigger = false;
    double frameTriggerDelayUs = 0;
    uint32_t packetSize = 0; // with IP and UDP headers
    bool doNotFragment = false;
    uint64_t packetDelayNs = 0;
    uint32_t destination = 0;
    uint16_t port = 0;   // 0: channel closed
    uint32_t chunks = 0; // bit for each enabled `Chunk`; chunkMode tells whether any is sent at all
    bool chunkMode = false;
};

// Bytes of a frame by these settings, chunks included.
size_t PayloadBytes(const StreamSettings& settings);

class DeviceModel {
public:
    DeviceModel(const Config& config, FaultPanel& faults, CounterBoard& counters);
    DeviceModel(const DeviceModel&) = delete;
    DeviceModel& operator=(const DeviceModel&) = delete;

    // Before the first access from outside.
    void Attach(StreamControl* stream) { m_stream = stream; }

    RegisterMemory& Memory() { return m_memory; }
    const Config& GetConfig() const { return m_config; }
    const std::string& Xml() const { return m_xml; }
    StreamSettings Settings() const;
    uint64_t Ticks() const; // nanoseconds, since the start or the last reset
    Bytes DiscoveryRecord();
    void SetNetwork(uint32_t address, uint32_t mask, uint32_t gateway);
    std::array<uint8_t, 6> Mac() const { return m_mac; }
    std::vector<Patch> Patches() const;
    const SceneGeometry& Geometry() const { return m_geometry; }
    // A rising edge from the given source.
    void Trigger(TriggerSource source);
    // One frame's work of automatic exposure and gain; true when it changed anything.
    bool StepAutomatics();
    // Back to the state after the control of the camera is gone: stream closed, parameters unlocked.
    void ReleaseChannels();
    void ApplyXmlFault();

private:
    void DefineBootstrap(FeatureBuilder& build);
    void DefineBootstrapNetwork(FeatureBuilder& build);
    void DefineBootstrapControl(FeatureBuilder& build);
    void DefineStreamChannel(FeatureBuilder& build);
    void DefineDevice(FeatureBuilder& build);
    void DefineImageFormat(FeatureBuilder& build);
    void DefineRegion(FeatureBuilder& build);
    void DefineAcquisition(FeatureBuilder& build);
    void DefineExposure(FeatureBuilder& build);
    void DefineTrigger(FeatureBuilder& build);
    void DefineTransport(FeatureBuilder& build);
    void DefineTransportNodes(FeatureBuilder& build);
    void DefineChunks(FeatureBuilder& build);
    void DefineVendor(FeatureBuilder& build);
    void DefineVendorCounters(FeatureBuilder& build);

    // Refuses while frames are acquired.
    Check WhileIdle(Check further = {}) const;
    Check WhileManual(uint32_t automatic, Check further) const;
    static double StepTowards(double now, double target);
    std::function<void()> Changed();
    void SetTimestampLatch();
    double LeastPeriodUs() const;
    double FramePeriodUs() const;
    double TransferTimeUs() const;
    uint32_t TriggerRegister(TriggerKind kind, uint32_t offset) const;

    Config m_config;
    FaultPanel& m_faults;
    CounterBoard& m_counters;
    StreamControl* m_stream = nullptr;
    RegisterMemory m_memory;
    SceneGeometry m_geometry;
    std::array<uint8_t, 6> m_mac{};
    std::string m_xml;
    Clock::time_point m_started;
    std::atomic<int64_t> m_tickZero{0}; // nanoseconds of Clock at which the ticks are 0
};

} // namespace vcam

#endif
