#include "Device/DeviceModel.h"

#include "Device/BootstrapRegisters.h"
#include "Device/FeatureRegisters.h"
#include "Device/XmlFile.h"
#include "Protocol/GvspCodec.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vcam {

namespace {

constexpr double kLineTimeUs = 2.0; // the sensor reads a line in this time
constexpr uint32_t kBlankLines = 20;

int64_t Nanoseconds(Clock::time_point at) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(at.time_since_epoch()).count();
}

// Locally administered, and as different as serial numbers and addresses are (FNV-1a). The address counts
// since cameras of several processes, all with the serial number of the default, may hear the same
// broadcasts.
std::array<uint8_t, 6> MadeMac(const Config& config) {
    uint32_t hash = 2166136261u;
    for (const char c : config.serial + '@' + config.address)
        hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    std::array<uint8_t, 6> mac{0x02, 0x4B};
    Put32(mac.data() + 2, hash);
    return mac;
}

void CheckConfig(const Config& config) {
    const auto wrong = [](const char* what) { throw std::invalid_argument(what); };
    if (config.sensorWidth < 64 || config.sensorWidth > 16384 || config.sensorWidth % 16 != 0)
        wrong("the sensor's width must be a multiple of 16 from 64 to 16384");
    if (config.sensorHeight < 64 || config.sensorHeight > 16384 || config.sensorHeight % 4 != 0)
        wrong("the sensor's height must be a multiple of 4 from 64 to 16384");
    const PixelFormat* format = FindPixelFormat(config.pixelFormat);
    if (format == nullptr || (config.model == Model::Mono && format->layout != Layout::Mono))
        wrong("the camera does not have this pixel format");
    if (!(config.frameRate >= 0.1 && config.frameRate <= 10000))
        wrong("the frame rate must be from 0.1 to 10000");
    if (config.serial.empty() || config.serial.size() > 15 || config.userName.size() > 15)
        wrong("serial number and user name have up to 15 characters, the serial number at least one");
}

} // namespace

size_t PayloadBytes(const StreamSettings& settings) {
    size_t bytes = PictureBytes(settings.picture);
    if (settings.chunkMode) {
        bytes += 8; // id and length of the picture's own chunk
        for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
            bytes += (settings.chunks >> chunk) & 1 ? 16 : 0;
    }
    return bytes;
}

DeviceModel::DeviceModel(const Config& config, FaultPanel& faults, CounterBoard& counters)
    : m_config(config)
    , m_faults(faults)
    , m_counters(counters)
    , m_geometry(config.sensorWidth, config.sensorHeight)
    , m_started(Clock::now()) {
    CheckConfig(config);
    if (m_config.modelName.empty())
        m_config.modelName = config.model == Model::Colour ? "KV-2000C" : "KV-2000M";
    m_mac = config.mac;
    if (m_mac == std::array<uint8_t, 6>{})
        m_mac = MadeMac(config);
    m_tickZero = Nanoseconds(m_started);

    XmlDocument xml;
    FeatureBuilder build(m_memory, xml);
    DefineBootstrap(build);
    DefineBootstrapNetwork(build);
    DefineBootstrapControl(build);
    DefineStreamChannel(build);
    DefineDevice(build);
    DefineImageFormat(build);
    DefineRegion(build);
    DefineAcquisition(build);
    DefineExposure(build);
    DefineTrigger(build);
    DefineTransport(build);
    DefineTransportNodes(build);
    DefineChunks(build);
    DefineVendor(build);
    DefineVendorCounters(build);
    m_xml = xml.Text(m_config.manufacturer, m_config.modelName, m_config.manufacturerInfo);
    m_memory.Define(feature::kXml, Bytes(4), Access::ReadOnly);
    ApplyXmlFault();
}

void DeviceModel::ApplyXmlFault() {
    XmlFile file = MakeXmlFile(m_xml, m_config.zippedXml, m_faults.Get().xml, feature::kXml);
    m_memory.Replace(feature::kXml, std::move(file.content));
    m_memory.SetString(bootstrap::kFirstUrl, file.location);
}

Check DeviceModel::WhileIdle(Check further) const {
    return [this, further = std::move(further)](const Bytes& proposed) {
        if (m_stream != nullptr && m_stream->IsAcquiring())
            return Status::WriteProtect;
        return further ? further(proposed) : Status::Success;
    };
}

std::function<void()> DeviceModel::Changed() {
    return [this] {
        if (m_stream != nullptr)
            m_stream->SettingsChanged();
    };
}

uint64_t DeviceModel::Ticks() const {
    return static_cast<uint64_t>(Nanoseconds(Clock::now()) - m_tickZero.load());
}

Bytes DeviceModel::DiscoveryRecord() {
    Bytes record(kDiscoveryRecordLength);
    m_memory.Read(bootstrap::kVersion, record.data(), record.size());
    return record;
}

void DeviceModel::SetNetwork(uint32_t address, uint32_t mask, uint32_t gateway) {
    m_memory.Set32(bootstrap::kCurrentIp, address);
    m_memory.Set32(bootstrap::kCurrentMask, mask);
    m_memory.Set32(bootstrap::kCurrentGateway, gateway);
}

uint32_t DeviceModel::TriggerRegister(TriggerKind kind, uint32_t offset) const {
    return feature::kTriggerSets + static_cast<uint32_t>(kind) * feature::kTriggerSetStride + offset;
}

StreamSettings DeviceModel::Settings() const {
    StreamSettings s;
    s.picture.width = m_memory.Get32(feature::kWidth);
    s.picture.height = m_memory.Get32(feature::kHeight);
    s.picture.offsetX = m_memory.Get32(feature::kOffsetX);
    s.picture.offsetY = m_memory.Get32(feature::kOffsetY);
    s.picture.pixelFormat = m_memory.Get32(feature::kPixelFormat);
    s.picture.reverseX = m_memory.Get32(feature::kReverseX) != 0;
    s.picture.reverseY = m_memory.Get32(feature::kReverseY) != 0;
    s.picture.testPattern = static_cast<TestPattern>(m_memory.Get32(feature::kTestPattern));
    s.picture.exposure = m_memory.GetDouble(feature::kExposureTime);
    s.picture.gain = m_memory.GetDouble(feature::kGain);
    s.mode = static_cast<AcquisitionMode>(m_memory.Get32(feature::kAcquisitionMode));
    s.frameCount = m_memory.Get32(feature::kAcquisitionFrameCount);
    s.periodUs = FramePeriodUs();
    s.leastPeriodUs = LeastPeriodUs();
    s.frameTrigger =
        m_memory.Get32(TriggerRegister(TriggerKind::FrameStart, feature::kTriggerModeOffset)) != 0;
    s.acquisitionTrigger =
        m_memory.Get32(TriggerRegister(TriggerKind::AcquisitionStart, feature::kTriggerModeOffset)) != 0;
    s.frameTriggerDelayUs =
        m_memory.GetDouble(TriggerRegister(TriggerKind::FrameStart, feature::kTriggerDelayOffset));
    const uint32_t size = m_memory.Get32(bootstrap::kStreamPacketSize);
    s.packetSize = size & bootstrap::kPacketSizeMask;
    s.doNotFragment = (size & bootstrap::kDoNotFragmentBit) != 0;
    s.packetDelayNs = m_memory.Get32(bootstrap::kStreamPacketDelay);
    s.destination = m_memory.Get32(bootstrap::kStreamDestination);
    s.port = static_cast<uint16_t>(m_memory.Get32(bootstrap::kStreamHostPort));
    s.chunkMode = m_memory.Get32(feature::kChunkModeActive) != 0;
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
        s.chunks |= (m_memory.Get32(feature::kChunkEnable + 4 * chunk) & 1) << chunk;
    return s;
}

double DeviceModel::TransferTimeUs() const {
    const uint32_t packetSize = m_memory.Get32(bootstrap::kStreamPacketSize) & bootstrap::kPacketSizeMask;
    const double perPacket = packetSize - static_cast<uint32_t>(kGvspPacketOverhead);
    PictureSettings picture;
    picture.width = m_memory.Get32(feature::kWidth);
    picture.height = m_memory.Get32(feature::kHeight);
    picture.pixelFormat = m_memory.Get32(feature::kPixelFormat);
    const double packets = std::ceil(static_cast<double>(PictureBytes(picture)) / perPacket) + 2;
    double each = m_memory.Get32(bootstrap::kStreamPacketDelay) / 1000.0;
    if (m_config.linkSpeedMbps > 0)
        each += packetSize * 8.0 / m_config.linkSpeedMbps;
    return packets * each;
}

double DeviceModel::LeastPeriodUs() const {
    const double readout = (m_memory.Get32(feature::kHeight) + kBlankLines) * kLineTimeUs;
    return std::max({readout, m_memory.GetDouble(feature::kExposureTime), TransferTimeUs()});
}

double DeviceModel::FramePeriodUs() const {
    double period = LeastPeriodUs();
    if (m_memory.Get32(feature::kAcquisitionFrameRateEnable) != 0)
        period = std::max(period, 1e6 / m_memory.GetDouble(feature::kAcquisitionFrameRate));
    return period;
}

std::vector<Patch> DeviceModel::Patches() const {
    const PictureSettings s = Settings().picture;
    const std::array<uint16_t, 256> curve = ToneCurve(s);
    const auto toned = [&curve](uint8_t value) { return static_cast<uint8_t>(curve[value] >> 4); };
    std::vector<Patch> patches;
    if (s.testPattern != TestPattern::Off)
        return patches;
    for (const ScenePatch& scene : m_geometry.Patches()) {
        const Rect& place = scene.place;
        if (place.x < s.offsetX || place.y < s.offsetY || place.x + place.width > s.offsetX + s.width ||
            place.y + place.height > s.offsetY + s.height)
            continue;
        Patch patch;
        patch.name = scene.name;
        patch.x = place.x - s.offsetX;
        patch.y = place.y - s.offsetY;
        patch.width = place.width;
        patch.height = place.height;
        if (s.reverseX)
            patch.x = s.width - patch.x - patch.width;
        if (s.reverseY)
            patch.y = s.height - patch.y - patch.height;
        patch.red = toned(scene.colour.red);
        patch.green = toned(scene.colour.green);
        patch.blue = toned(scene.colour.blue);
        patches.push_back(patch);
    }
    return patches;
}

void DeviceModel::Trigger(TriggerSource source) {
    if (m_stream == nullptr)
        return;
    for (const TriggerKind kind : {TriggerKind::AcquisitionStart, TriggerKind::FrameStart}) {
        const bool on = m_memory.Get32(TriggerRegister(kind, feature::kTriggerModeOffset)) != 0;
        const uint32_t wanted = m_memory.Get32(TriggerRegister(kind, feature::kTriggerSourceOffset));
        if (!on || wanted != static_cast<uint32_t>(source))
            continue;
        if (kind == TriggerKind::FrameStart)
            m_stream->FrameTrigger();
        else
            m_stream->AcquisitionTrigger();
    }
}

void DeviceModel::ReleaseChannels() {
    if (m_stream != nullptr)
        m_stream->AbortAcquisition();
    m_memory.Set32(bootstrap::kStreamHostPort, 0);
    m_memory.Set32(bootstrap::kStreamDestination, 0);
    m_memory.Set32(feature::kTLParamsLocked, 0);
}

} // namespace vcam
