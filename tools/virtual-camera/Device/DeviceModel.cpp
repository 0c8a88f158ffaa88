#include "Device/DeviceModel.h"

#include "Device/BootstrapRegisters.h"
#include "Device/FeatureRegisters.h"
#include "Device/XmlFile.h"

#include <algorithm>
#include <stdexcept>

namespace vcam {

namespace {

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
    if (format == nullptr || (!TraitsOf(config.model).colour && format->layout != Layout::Mono))
        wrong("the camera does not have this pixel format");
    if (!(config.frameRate >= 0.1 && config.frameRate <= 10000))
        wrong("the frame rate must be from 0.1 to 10000");
    if (config.serial.empty() || config.serial.size() > 15 || config.userName.size() > 15)
        wrong("serial number and user name have up to 15 characters, the serial number at least one");
    if (config.rebootMs > 60000)
        wrong("a reset takes at most 60 s");
}

} // namespace

DeviceModel::DeviceModel(const Config& config, FaultPanel& faults, CounterBoard& counters,
                         std::shared_ptr<Flash> flash)
    : m_config(config)
    , m_traits(TraitsOf(config.model))
    , m_faults(faults)
    , m_counters(counters)
    , m_flash(std::move(flash))
    , m_started(Clock::now()) {
    CheckConfig(config);
    if (m_config.modelName.empty())
        m_config.modelName = m_traits.modelName;
    m_mac = config.mac;
    if (m_mac == std::array<uint8_t, 6>{})
        m_mac = MadeMac(config);
    m_tickZero = Nanoseconds(m_started);

    XmlDocument xml;
    FeatureBuilder build(m_memory, xml, WhileIdle());
    build.UserSets(m_traits.full);
    using Group = void (DeviceModel::*)(FeatureBuilder&);
    static constexpr Group kEveryCamera[] = {
        &DeviceModel::DefineBootstrap,        &DeviceModel::DefineBootstrapNetwork,
        &DeviceModel::DefineBootstrapControl, &DeviceModel::DefineStreamChannel,
        &DeviceModel::DefineInquiries,        &DeviceModel::DefineDevice,
        &DeviceModel::DefineSensor,           &DeviceModel::DefineRegionSelector,
        &DeviceModel::DefineRegion,           &DeviceModel::DefinePixelFormat,
        &DeviceModel::DefineAcquisition,      &DeviceModel::DefineRates,
        &DeviceModel::DefineExposure,         &DeviceModel::DefineGain,
        &DeviceModel::DefineTransport,        &DeviceModel::DefineControlNodes,
        &DeviceModel::DefineStreamNodes,      &DeviceModel::DefineNetworkNodes,
    };
    static constexpr Group kFullCamera[] = {
        &DeviceModel::DefineTemperature, &DeviceModel::DefineImageFormat,  &DeviceModel::DefineBinning,
        &DeviceModel::DefineCompression, &DeviceModel::DefineLineRates,    &DeviceModel::DefineTrigger,
        &DeviceModel::DefineLines,       &DeviceModel::DefineOutputs,      &DeviceModel::DefineTones,
        &DeviceModel::DefineAutoAreas,   &DeviceModel::DefineWhiteBalance, &DeviceModel::DefineHdr,
        &DeviceModel::DefineLut,         &DeviceModel::DefineFrameInfo,    &DeviceModel::DefineUserSets,
        &DeviceModel::DefineFiles,       &DeviceModel::DefineChunks,
    };
    static constexpr Group kTestRig[] = {&DeviceModel::DefineVendor, &DeviceModel::DefineVendorCounters};
    const auto define = [&](const auto& groups) {
        for (const Group group : groups)
            (this->*group)(build);
    };
    define(kEveryCamera);
    if (m_traits.full)
        define(kFullCamera);
    define(kTestRig);
    m_settings = build.Settings();
    m_xml = xml.Text(m_config.manufacturer, m_config.modelName, m_config.manufacturerInfo);
    m_memory.Define(feature::kXml, Bytes(4), Access::ReadOnly);
    m_powerUp = m_memory.Contents();
    for (const uint32_t address : m_settings)
        m_factorySettings[address] = m_powerUp.at(address);
    PowerUp();
    ApplyXmlFault();
}

void DeviceModel::PowerUp() {
    std::map<uint32_t, Bytes> registers = m_powerUp;
    registers.erase(feature::kXml); // it may be broken on purpose
    registers.erase(bootstrap::kFirstUrl);
    registers.erase(bootstrap::kStreamSourcePort); // the socket stays
    m_memory.Restore(registers);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_openFiles.clear();
        m_pulseBegan.reset();
    }
    m_tickZero = Nanoseconds(Clock::now());
    ReadFlash();
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

uint32_t DeviceModel::Word(uint32_t address, uint32_t fallback) const {
    return m_memory.Has(address) ? m_memory.Get32(address) : fallback;
}

double DeviceModel::Real(uint32_t address, double fallback) const {
    return m_memory.Has(address) ? m_memory.GetDouble(address) : fallback;
}

uint64_t DeviceModel::Ticks() const {
    return static_cast<uint64_t>(Nanoseconds(Clock::now()) - m_tickZero.load());
}

Bytes DeviceModel::DiscoveryRecord() {
    Bytes record(kDiscoveryRecordLength);
    m_memory.Read(bootstrap::kVersion, record.data(), record.size());
    return record;
}

void DeviceModel::ReleaseChannels() {
    if (m_stream != nullptr)
        m_stream->AbortAcquisition();
    m_memory.Set32(bootstrap::kStreamHostPort, 0);
    m_memory.Set32(bootstrap::kStreamDestination, 0);
    m_memory.Set32(feature::kTLParamsLocked, 0);
}

} // namespace vcam
