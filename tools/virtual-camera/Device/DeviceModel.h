// A camera as a device: its register space with all hooks, its XML and the settings that the registers stand
// for. It knows neither sockets nor threads; the storey above enters it from its threads and takes its orders
// by `StreamControl`.
#ifndef VCAM_DEVICE_DEVICEMODEL_H
#define VCAM_DEVICE_DEVICEMODEL_H

#include "Device/FaultPanel.h"
#include "Device/FeatureBuilder.h"
#include "Device/Flash.h"
#include "Device/ModelTraits.h"
#include "Picture/Painter.h"
#include "Picture/SceneMeasure.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace vcam {

// What a register hook may order from the stream.
class StreamControl {
public:
    virtual ~StreamControl() = default;
    virtual void StartAcquisition() = 0;
    virtual void StopAcquisition() = 0;  // the frame under way is completed
    virtual void AbortAcquisition() = 0; // on return no packet of a frame follows
    virtual void SettingsChanged() = 0;  // the next frame is made by new settings
    // The frame is exposed as the settings say, or for so many microseconds when that isn't 0.
    virtual void FrameTrigger(double exposureUs) = 0;
    virtual void AcquisitionTrigger() = 0;
    virtual void FireTestPacket() = 0;
    virtual bool IsAcquiring() const = 0;
};

enum class AcquisitionMode : uint32_t { SingleFrame = 1, MultiFrame = 2, Continuous = 0 };
enum class TriggerSource : uint32_t { Software = 0, Line0 = 1, Line1 = 2, Line2 = 3, Line3 = 4 };
enum class TriggerKind : uint32_t { FrameStart = 0, AcquisitionStart = 1 };
enum class TriggerActivation : uint32_t { RisingEdge = 0, FallingEdge = 1, AnyEdge = 2 };

constexpr double kMostGain = 24; // decibels

constexpr uint32_t kChunkImageId = 0x00000001;
enum class Chunk : uint32_t { FrameId = 0, Timestamp = 1, ExposureTime = 2, Gain = 3 };
constexpr uint32_t kChunkCount = 4;
constexpr uint32_t kFirstChunkId = 0x00001001; // each carries 8 bytes

// What the stream needs to know; a copy, so that a frame is made by one state of the registers.
struct StreamSettings {
    PictureSettings picture;
    double exposureUs = kNominalExposure; // as the feature says; the painter's may be on another scale
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
    uint8_t jpegQuality = 0; // 0: pictures go as they are
    uint8_t lineInputs = 0;  // levels, bit 0 is Line0
    uint8_t lineOutputs = 0;
};

// Where a camera finds itself after a reset.
struct NetworkStart {
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0;
};

// Whether the pixel format carries colours, a mosaic's included; compressed pictures are RGB then.
bool IsColour(const PictureSettings& settings);
// The most bytes that a frame by these settings can have, chunks included.
size_t PayloadBytes(const StreamSettings& settings);

class DeviceModel {
public:
    // `flash` is taken up as it is; by default the camera is fresh from its maker.
    DeviceModel(const Config& config, FaultPanel& faults, CounterBoard& counters,
                std::shared_ptr<Flash> flash = std::make_shared<Flash>());
    DeviceModel(const DeviceModel&) = delete;
    DeviceModel& operator=(const DeviceModel&) = delete;

    // Before the first access from outside. `wake` is called, on any thread, when a reset is asked for.
    void Attach(StreamControl* stream, std::function<void()> wake = {}) {
        m_stream = stream;
        m_wake = std::move(wake);
    }
    // True once after DeviceReset was executed; whoever asks then does the reset.
    bool TakeResetRequest() { return m_resetRequested.exchange(false); }

    RegisterMemory& Memory() { return m_memory; }
    const Config& GetConfig() const { return m_config; }
    const ModelTraits& Traits() const { return m_traits; }
    const std::string& Xml() const { return m_xml; }
    StreamSettings Settings() const;
    uint64_t Ticks() const; // nanoseconds, since the start or the last reset
    Bytes DiscoveryRecord();
    void SetNetwork(uint32_t address, uint32_t mask, uint32_t gateway);
    const std::array<uint8_t, 6>& Mac() const { return m_mac; }
    // What the camera looks at; made at the first call.
    std::shared_ptr<const Scene> LookedAt() const;
    std::vector<Patch> Patches() const;
    // A software trigger.
    void SoftwareTrigger();
    // The level at an input line, 0 to 3. Edges are triggers; a line that is an output now takes none.
    void SetLine(uint32_t line, bool high);
    // A pulse, too short to be seen but by edges. The line is low afterwards.
    void PulseLine(uint32_t line);
    // One frame's work of the automatic functions; true when it changed anything.
    bool StepAutomatics();
    // Back to the state after the control of the camera is gone: stream closed, parameters unlocked.
    void ReleaseChannels();
    void ApplyXmlFault();
    // The registers as after power-up, the default user set loaded. Faults and counters stay.
    void PowerUp();
    // The persistent address, if one is configured and switched on.
    std::optional<NetworkStart> PersistentNetwork() const;

private:
    void DefineBootstrap(FeatureBuilder& build);
    void DefineBootstrapNetwork(FeatureBuilder& build);
    void DefineBootstrapControl(FeatureBuilder& build);
    void DefineStreamChannel(FeatureBuilder& build);
    void DefineDevice(FeatureBuilder& build);
    void DefineTemperature(FeatureBuilder& build);
    void DefineInquiries(FeatureBuilder& build);
    void DefineSensor(FeatureBuilder& build);
    void DefinePixelFormat(FeatureBuilder& build);
    void DefineImageFormat(FeatureBuilder& build);
    void DefineRegionSelector(FeatureBuilder& build);
    void DefineRegion(FeatureBuilder& build);
    void DefineBinning(FeatureBuilder& build);
    void DefineCompression(FeatureBuilder& build);
    void DefineAcquisition(FeatureBuilder& build);
    void DefineRates(FeatureBuilder& build);
    void DefineLineRates(FeatureBuilder& build);
    void DefineExposure(FeatureBuilder& build);
    void DefineGain(FeatureBuilder& build);
    void DefineTones(FeatureBuilder& build);
    void DefineWhiteBalance(FeatureBuilder& build);
    void DefineAutoAreas(FeatureBuilder& build);
    void DefineTrigger(FeatureBuilder& build);
    void DefineLines(FeatureBuilder& build);
    void DefineOutputs(FeatureBuilder& build);
    void DefineHdr(FeatureBuilder& build);
    void DefineLut(FeatureBuilder& build);
    void DefineFrameInfo(FeatureBuilder& build);
    void DefineUserSets(FeatureBuilder& build);
    void DefineFiles(FeatureBuilder& build);
    void DefineFileAccess(FeatureBuilder& build);
    void DefineTransport(FeatureBuilder& build);
    void DefineStreamNodes(FeatureBuilder& build);
    void DefineControlNodes(FeatureBuilder& build);
    void DefineNetworkNodes(FeatureBuilder& build);
    void DefineChunks(FeatureBuilder& build);
    void DefineChunkValues(FeatureBuilder& build);
    void DefineVendor(FeatureBuilder& build);
    void DefineVendorLines(FeatureBuilder& build);
    void DefineVendorCounters(FeatureBuilder& build);

    // Refuses while frames are acquired.
    Check WhileIdle(Check further = {}) const;
    std::function<void()> Changed();
    void SetTimestampLatch();
    // The register, or the fallback where the model has none.
    uint32_t Word(uint32_t address, uint32_t fallback) const;
    double Real(uint32_t address, double fallback) const;
    bool On(uint32_t address) const { return Word(address, 0) != 0; }

    SceneMeans Measure(uint32_t usage) const;
    bool StepBrightness(bool exposing, bool amplifying);
    bool StepWhiteBalance();
    void EndOnce(uint32_t automatic, bool stepped);
    double NominalExposure() const; // microseconds that let the scene out as it is
    double LeastExposure() const;
    double MostExposure() const;
    double LeastPeriodUs() const;
    double FramePeriodUs() const;
    double LinePeriodUs() const;
    double TransferTimeUs() const;
    uint32_t TriggerRegister(TriggerKind kind, uint32_t offset) const;
    void TriggerBy(TriggerSource source, bool rising);
    bool IsInput(uint32_t line) const;
    uint32_t LineLevels() const; // as LineStatusAll shows them
    uint32_t Binning(uint32_t direction) const;
    uint32_t ActiveRegion() const;
    // A register whose value and the partner's must fit together below the maximum; the first two are
    // addresses.
    struct Neighbour {
        uint32_t maximum, partner, least, step;
    };
    void FitBeside(uint32_t address, const Neighbour& neighbour);
    // Brings sizes and places back into what the sensor with its binning has.
    void FitRegions();
    void FitAutoAreas();
    PictureSettings Picture() const;
    void ReadLookup();

    void LoadUserSet(uint32_t set);
    void SaveUserSet(uint32_t set);
    struct FileOrder {
        uint32_t file = 0, mode = 0, offset = 0, length = 0;
        uint32_t moved = 0; // bytes
    };
    void FileOperation();
    bool OpenFileNow(FileOrder& order);
    bool CloseFile(FileOrder& order);
    bool ReadFile(FileOrder& order);
    bool WriteFile(FileOrder& order);
    bool DeleteFile(FileOrder& order);
    void ReadFlash();
    void KeepNetwork();

    Config m_config;
    const ModelTraits& m_traits;
    FaultPanel& m_faults;
    CounterBoard& m_counters;
    std::shared_ptr<Flash> m_flash;
    StreamControl* m_stream = nullptr;
    std::function<void()> m_wake;
    std::atomic<bool> m_resetRequested{false};
    RegisterMemory m_memory;
    std::array<uint8_t, 6> m_mac{};
    std::string m_xml;
    std::vector<uint32_t> m_settings;            // registers that user sets keep
    std::map<uint32_t, Bytes> m_factorySettings; // these as the maker set them
    std::map<uint32_t, Bytes> m_powerUp;         // every register
    Clock::time_point m_started;
    std::atomic<int64_t> m_tickZero{0}; // nanoseconds of Clock at which the ticks are 0

    mutable std::mutex m_mutex; // guards all below
    mutable std::shared_ptr<const Scene> m_scene;
    std::shared_ptr<const LookupTable> m_lookup;   // what the registers of the table hold
    uint32_t m_lineLevels = 0;                     // electrical, of all lines
    std::optional<Clock::time_point> m_pulseBegan; // of a frame trigger that lasts as long as the exposure
    struct OpenFile {
        uint32_t mode = 0;
        Bytes content;
    };
    std::map<uint32_t, OpenFile> m_openFiles; // by FileSelector
};

} // namespace vcam

#endif
