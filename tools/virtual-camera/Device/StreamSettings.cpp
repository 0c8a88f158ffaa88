// From the registers to what the stream and the painter need to know.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"
#include "Device/JpegEncoder.h"
#include "Protocol/GvspCodec.h"

#include <algorithm>
#include <cmath>

namespace vcam {

using namespace feature;

namespace {

constexpr double kLineTimeUs = 2.0; // the sensor reads a line in this time
constexpr uint32_t kBlankLines = 20;
constexpr double kNominalLineExposure = 20.0; // a line is exposed with more light

} // namespace

bool IsColour(const PictureSettings& settings) {
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    return format != nullptr && format->layout != Layout::Mono;
}

size_t PayloadBytes(const StreamSettings& settings) {
    size_t bytes = PictureBytes(settings.picture);
    if (settings.jpegQuality > 0) { // a small picture can become longer than it was
        const PictureSettings& picture = settings.picture;
        bytes = std::max(bytes, JpegEncoder::Bound(picture.width, picture.height, IsColour(picture)));
    }
    if (settings.chunkMode) {
        bytes += 8; // id and length of the picture's own chunk
        for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
            bytes += (settings.chunks >> chunk) & 1 ? 16 : 0;
    }
    return bytes;
}

double DeviceModel::NominalExposure() const {
    return m_traits.lineScan ? kNominalLineExposure : kNominalExposure;
}

PictureSettings DeviceModel::Picture() const {
    PictureSettings p;
    const uint32_t region = ActiveRegion() * kRegionStride;
    p.width = m_memory.Get32(kWidth + region);
    p.height = m_memory.Get32(kHeight + region);
    p.offsetX = Word(kOffsetX + region, 0);
    p.offsetY = Word(kOffsetY + region, 0);
    p.binningHorizontal = Binning(0);
    p.binningVertical = Binning(1);
    p.pixelFormat = m_memory.Get32(kPixelFormat);
    p.reverseX = On(kReverseX);
    p.reverseY = On(kReverseY);
    p.testPattern = static_cast<TestPattern>(Word(kTestPattern, 0));
    // The painter knows one scale of light.
    const double light = kNominalExposure / NominalExposure();
    p.exposure = m_memory.GetDouble(kExposureTime) * light;
    p.gain = m_memory.GetDouble(kGain);
    p.blackLevel = static_cast<int32_t>(Word(kBrightness, 0));
    if (m_traits.colour) {
        for (uint32_t component = 0; component < p.balance.size(); ++component)
            p.balance[component] = m_memory.Get32(kBalanceRatio + 4 * component);
        p.hueEnable = On(kHueEnable);
        p.hue = static_cast<int32_t>(m_memory.Get32(kHue));
        p.saturationEnable = On(kSaturationEnable);
        p.saturation = static_cast<int32_t>(m_memory.Get32(kSaturation));
    }
    p.gammaEnable = On(kGammaEnable);
    p.gammaCurve = static_cast<GammaCurve>(Word(kGammaSelector, static_cast<uint32_t>(GammaCurve::Power)));
    p.gamma = Real(kGamma, 1.0);
    p.sharpnessEnable = On(kSharpnessEnable);
    p.sharpness = static_cast<int32_t>(Word(kSharpness, 0));
    p.hdrEnable = On(kHdrEnable);
    for (uint32_t set = 0; set < kHdrSets; ++set) {
        p.hdr[set].exposure = Word(kHdrShutter + set * kHdrStride, 1) * light;
        p.hdr[set].gain = Real(kHdrGain + set * kHdrStride, 0);
    }
    p.embedded = Word(kImageCompressionMode, 0) == 0 ? Word(kFrameInfoMask, 0) : 0;
    p.lookupEnable = On(kLutEnable);
    const std::lock_guard<std::mutex> lock(m_mutex);
    p.lookup = m_lookup;
    return p;
}

StreamSettings DeviceModel::Settings() const {
    StreamSettings s;
    s.picture = Picture();
    s.exposureUs = m_memory.GetDouble(kExposureTime);
    s.mode = static_cast<AcquisitionMode>(m_memory.Get32(kAcquisitionMode));
    s.frameCount = Word(kAcquisitionFrameCount, 1);
    s.periodUs = FramePeriodUs();
    s.leastPeriodUs = LeastPeriodUs();
    s.frameTrigger = On(TriggerRegister(TriggerKind::FrameStart, kTriggerModeOffset));
    s.acquisitionTrigger = On(TriggerRegister(TriggerKind::AcquisitionStart, kTriggerModeOffset));
    s.frameTriggerDelayUs = Real(TriggerRegister(TriggerKind::FrameStart, kTriggerDelayOffset), 0);
    const uint32_t size = m_memory.Get32(bootstrap::kStreamPacketSize);
    s.packetSize = size & bootstrap::kPacketSizeMask;
    s.doNotFragment = (size & bootstrap::kDoNotFragmentBit) != 0;
    s.packetDelayNs = m_memory.Get32(bootstrap::kStreamPacketDelay);
    s.destination = m_memory.Get32(bootstrap::kStreamDestination);
    s.port = static_cast<uint16_t>(m_memory.Get32(bootstrap::kStreamHostPort));
    s.chunkMode = On(kChunkModeActive);
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
        s.chunks |= (Word(kChunkEnable + 4 * chunk, 0) & 1) << chunk;
    if (On(kImageCompressionMode))
        s.jpegQuality = static_cast<uint8_t>(m_memory.Get32(kImageCompressionQuality));
    const uint32_t levels = LineLevels();
    for (uint32_t line = 0; line < kLines; ++line) {
        uint8_t& side = IsInput(line) ? s.lineInputs : s.lineOutputs;
        side = static_cast<uint8_t>(side | (levels & (1u << line)));
    }
    return s;
}

double DeviceModel::TransferTimeUs() const {
    const uint32_t packetSize = m_memory.Get32(bootstrap::kStreamPacketSize) & bootstrap::kPacketSizeMask;
    const double perPacket = packetSize - static_cast<uint32_t>(kGvspPacketOverhead);
    const double packets = std::ceil(static_cast<double>(PictureBytes(Picture())) / perPacket) + 2;
    double each = m_memory.Get32(bootstrap::kStreamPacketDelay) / 1000.0;
    if (m_config.linkSpeedMbps > 0)
        each += packetSize * 8.0 / m_config.linkSpeedMbps;
    return packets * each;
}

double DeviceModel::LinePeriodUs() const {
    const double height = m_memory.Get32(kHeight + ActiveRegion() * kRegionStride);
    double period = std::max({kLineTimeUs, m_memory.GetDouble(kExposureTime), TransferTimeUs() / height});
    if (On(kAcquisitionLineRateEnable))
        period = std::max(period, 1e6 / m_memory.GetDouble(kAcquisitionLineRate));
    return period;
}

double DeviceModel::LeastPeriodUs() const {
    const uint32_t lines = m_memory.Get32(kHeight + ActiveRegion() * kRegionStride);
    if (m_traits.lineScan)
        return lines * LinePeriodUs();
    const double readout = (lines * Binning(1) + kBlankLines) * kLineTimeUs;
    double exposure = m_memory.GetDouble(kExposureTime);
    if (On(kHdrEnable)) { // the sets take turns, so the longest of them counts
        for (uint32_t set = 0; set < kHdrSets; ++set)
            exposure =
                std::max<double>(set == 0 ? 0 : exposure, m_memory.Get32(kHdrShutter + set * kHdrStride));
    }
    return std::max({readout, exposure, TransferTimeUs()});
}

double DeviceModel::FramePeriodUs() const {
    double period = LeastPeriodUs();
    if (!m_traits.lineScan && On(kAcquisitionFrameRateEnable))
        period = std::max(period, 1e6 / m_memory.GetDouble(kAcquisitionFrameRate));
    return period;
}

} // namespace vcam
