#include "Network/StreamSender.h"

#include "Device/BootstrapRegisters.h"
#include "Picture/EmbeddedBlock.h"

#include <algorithm>
#include <cstring>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <system_error>

namespace vcam {

namespace {
constexpr size_t kRingBytes = size_t{64} << 20;
constexpr size_t kLeastRing = 4;
constexpr size_t kMostRing = 32;
constexpr size_t kMostResends = 4096;
constexpr uint32_t kMono8 = 0x01080001;
constexpr uint32_t kRgb8 = 0x02180014;
constexpr auto kSilentNap = std::chrono::milliseconds(10);
} // namespace

StreamSender::StreamSender(DeviceModel& model, FaultPanel& faults, CounterBoard& counters,
                           std::shared_ptr<const Scene> scene)
    : m_model(model), m_faults(faults), m_counters(counters), m_painter(std::move(scene)) {}

StreamSender::~StreamSender() {
    Stop();
}

void StreamSender::Start(uint32_t address, const std::string& interface) {
    m_address = address;
    m_interface = interface;
    OpenSocket();
    m_thread = std::thread([this] { Run(); });
}

void StreamSender::Stop() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
        m_abort = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
    m_socket.Close();
}

void StreamSender::OpenSocket() {
    m_socket = OpenUdp(m_address, 0, m_interface, false);
    const int size = 4 << 20;
    setsockopt(m_socket.Get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    m_connected = {};
    m_model.Memory().Set32(bootstrap::kStreamSourcePort, PortOf(m_socket.Get()));
}

void StreamSender::Rebind(uint32_t address) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_address = address;
    m_rebind = true;
    m_wake.notify_all();
}

void StreamSender::StartAcquisition() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_acquiring)
        return;
    m_acquiring = true;
    m_begin = true;
    m_armed = false;
    m_trigger.reset();
    m_triggerCount = 0;
    m_settingsChanged = true;
    m_wake.notify_all();
}

void StreamSender::StopAcquisition() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_acquiring = false;
    m_wake.notify_all();
}

void StreamSender::AbortAcquisition() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_acquiring = false;
    m_abort = true;
    m_wake.notify_all();
    m_frameEnded.wait(lock, [this] { return !m_inFrame; });
    if (!m_stop)
        m_abort = false;
}

void StreamSender::SettingsChanged() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_settingsChanged = true;
    m_wake.notify_all();
}

void StreamSender::FrameTrigger(double exposureUs) {
    bool accepted = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool waiting = m_acquiring && (m_armed || m_begin) && !m_trigger;
        if (waiting) {
            m_trigger = Clock::now();
            m_triggerExposureUs = exposureUs;
            ++m_triggerCount;
            accepted = true;
            m_wake.notify_all();
        }
    }
    m_counters.Add(accepted ? &Counters::triggersAccepted : &Counters::triggersMissed);
}

void StreamSender::AcquisitionTrigger() {
    bool accepted = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_acquiring && !m_armed) {
            m_armed = true;
            accepted = true;
            m_wake.notify_all();
        }
    }
    m_counters.Add(accepted ? &Counters::triggersAccepted : &Counters::triggersMissed);
}

void StreamSender::FireTestPacket() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_testPackets;
    m_wake.notify_all();
}

bool StreamSender::IsAcquiring() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_acquiring;
}

bool StreamSender::IsBusy() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_acquiring || m_inFrame;
}

void StreamSender::RequestResend(const ResendRequest& request) {
    m_counters.Add(&Counters::resendRequests);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_resends.size() >= kMostResends) { // nobody needs so many; a flood shall not fill the memory
        m_counters.Add(&Counters::resendsServed);
        return;
    }
    m_resends.push_back(request);
    m_wake.notify_all();
}

std::vector<FrameLoss> StreamSender::LossyFrames() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<FrameLoss> lossy;
    for (const LossRecord& record : m_lossy) {
        if (record.loss.missing > 0)
            lossy.push_back(record.loss);
    }
    return lossy;
}

void StreamSender::Run() {
    pthread_setname_np(pthread_self(), "vcam-stream");
    prctl(PR_SET_TIMERSLACK, 1000UL); // nanoseconds: frames leave on time
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stop) {
        if (m_rebind) {
            m_rebind = false;
            try {
                OpenSocket();
            } catch (const std::system_error&) { // the address went away again; sending counts its errors
                m_socket.Close();
            }
        } else if (!m_resends.empty()) {
            ServeResends(lock);
        } else if (m_testPackets > 0) {
            --m_testPackets;
            lock.unlock();
            SendTestPacket();
            lock.lock();
        } else if (!m_acquiring) {
            m_wake.wait(lock);
        } else {
            if (m_begin)
                BeginAcquisition();
            if (m_settingsChanged) {
                m_settingsChanged = false;
                m_settings = m_model.Settings();
                m_armed = m_armed || !m_settings.acquisitionTrigger;
            }
            const std::optional<Clock::time_point> due = NextFrameDue();
            if (!due)
                m_wake.wait(lock);
            else if (*due > Clock::now())
                m_wake.wait_until(lock, *due);
            else
                TakeFrame(lock);
        }
    }
}

// Under the lock.
void StreamSender::BeginAcquisition() {
    m_begin = false;
    m_frameIndex = 0;
    m_pacer.Restart(Clock::now());
    for (Slot& slot : m_ring)
        slot.live = false;
}

std::optional<Clock::time_point> StreamSender::NextFrameDue() const {
    if (m_settings.port == 0 || m_settings.destination == 0 || !m_armed)
        return std::nullopt;
    if (m_settings.frameTrigger) {
        if (!m_trigger)
            return std::nullopt;
        const auto micros = [](double us) {
            return std::chrono::nanoseconds(static_cast<int64_t>(us * 1000));
        };
        const double exposure = m_triggerExposureUs != 0 ? 0 : m_settings.exposureUs;
        const auto exposed = *m_trigger + micros(m_settings.frameTriggerDelayUs + exposure);
        return std::max(exposed, m_lastFrame + micros(m_settings.leastPeriodUs));
    }
    return m_model.GetConfig().unpaced ? Clock::time_point{} : m_pacer.Next();
}

void StreamSender::TakeFrame(std::unique_lock<std::mutex>& lock) {
    const Clock::time_point now = Clock::now();
    m_pacer.Begin(now, m_settings.periodUs);
    m_lastFrame = now;
    StreamSettings settings = m_settings;
    if (m_trigger && m_triggerExposureUs != 0) {
        settings.picture.exposure *= m_triggerExposureUs / settings.exposureUs;
        settings.exposureUs = m_triggerExposureUs;
    }
    const uint32_t triggers = m_triggerCount;
    m_trigger.reset();
    const Faults faults = m_faults.Get();
    if (faults.silent || faults.streamSilent) {
        if (m_model.GetConfig().unpaced)
            m_wake.wait_for(lock, kSilentNap);
        return;
    }
    m_inFrame = true;
    lock.unlock();
    SendFrame(PrepareSlot(settings, faults, triggers), settings);
    const bool adjusted = m_model.StepAutomatics();
    lock.lock();
    m_settingsChanged = m_settingsChanged || adjusted;
    m_inFrame = false;
    EndFrame();
    m_frameEnded.notify_all();
}

// Under the lock.
void StreamSender::EndFrame() {
    ++m_frameIndex;
    const uint64_t wanted = m_settings.mode == AcquisitionMode::SingleFrame  ? 1
                            : m_settings.mode == AcquisitionMode::MultiFrame ? m_settings.frameCount
                                                                             : 0;
    if (wanted != 0 && m_frameIndex >= wanted && !m_begin)
        m_acquiring = false;
}

PictureSettings StreamSender::PictureOfFrame(const StreamSettings& settings, const Faults& faults) const {
    PictureSettings picture = SettingsOfFrame(settings.picture, static_cast<uint32_t>(m_frameIndex));
    if (faults.changedWidth != 0)
        picture.width = std::max(8u, faults.changedWidth / 8 * 8);
    if (faults.changedHeight != 0)
        picture.height = std::max(2u, faults.changedHeight / 2 * 2);
    return picture;
}

// Paints the picture, or renews what changes from frame to frame in one that was painted before.
void StreamSender::Paint(Slot& slot, const PictureSettings& picture, Bytes& to) {
    const auto phases = static_cast<uint32_t>(m_ring.size());
    const auto phase = static_cast<uint32_t>(m_nextSlot);
    const auto number = static_cast<uint32_t>(m_frameIndex + 1);
    const size_t bytes = PictureBytes(picture);
    const bool painted = slot.painted == picture && slot.paintedPhases == phases && to.size() >= bytes;
    to.resize(bytes);
    if (painted)
        m_painter.Stamp(picture, phase, phases, number, to.data());
    else
        m_painter.Paint(picture, phase, phases, number, to.data());
    slot.painted = picture;
    slot.paintedPhases = phases;
}

void StreamSender::Fill(Slot& slot, const PictureSettings& picture, const StreamSettings& settings,
                        uint32_t triggers) {
    if (settings.jpegQuality > 0) {
        PictureSettings plain = picture;
        const bool colour = IsColour(picture);
        plain.pixelFormat = colour ? kRgb8 : kMono8;
        Paint(slot, plain, slot.pixels);
        slot.data = m_jpeg.Encode(slot.pixels, plain.width, plain.height, colour, settings.jpegQuality);
        return;
    }
    if (!slot.pixels.empty()) { // the data are of a compressed picture
        slot.pixels = {};
        slot.painted = {};
    }
    Paint(slot, picture, slot.data);
    if (picture.embedded == 0)
        return;
    FrameFacts facts;
    facts.timestamp = slot.description.timestamp;
    facts.number = static_cast<uint32_t>(m_frameIndex + 1);
    facts.triggers = triggers;
    facts.inputs = settings.lineInputs;
    facts.outputs = settings.lineOutputs;
    PictureSettings told = picture;
    told.exposure = picture.exposure * settings.exposureUs / settings.picture.exposure; // as the feature says
    WriteEmbeddedBlock(told, facts, slot.data.data(), slot.data.size());
}

StreamSender::Slot& StreamSender::PrepareSlot(const StreamSettings& settings, const Faults& faults,
                                              uint32_t triggers) {
    const PictureSettings picture = PictureOfFrame(settings, faults);
    if (m_frameIndex == 0) {
        const size_t room = kRingBytes / std::max<size_t>(1, PictureBytes(picture));
        m_ring.resize(
            std::clamp(room / kHdrSets * kHdrSets, kLeastRing, kMostRing)); // the sets keep their slots
    }
    m_nextSlot = (m_nextSlot + 1) % m_ring.size();
    Slot& slot = m_ring[m_nextSlot];
    slot.description = {};
    slot.description.timestamp = m_model.Ticks();
    slot.description.pixelFormat = picture.pixelFormat;
    slot.description.width = picture.width;
    slot.description.height = picture.height;
    slot.description.offsetX = picture.offsetX;
    slot.description.offsetY = picture.offsetY;
    Fill(slot, picture, settings, triggers);
    if (settings.chunkMode)
        AppendChunks(slot, settings);
    slot.data.resize(slot.data.size() + faults.extraBytes);

    slot.serial = ++m_serial;
    slot.blockId = BlockIdOfFrame(m_frameIndex);
    slot.packetPayload = settings.packetSize - static_cast<uint32_t>(kGvspPacketOverhead);
    slot.packets =
        2 + static_cast<uint32_t>((slot.data.size() + slot.packetPayload - 1) / slot.packetPayload);
    slot.attempted = 0;
    slot.missing = 0;
    slot.live = true;
    slot.onWire.assign(slot.packets, false);
    return slot;
}

void StreamSender::AppendChunks(Slot& slot, const StreamSettings& settings) {
    AppendChunkTail(slot.data, kChunkImageId, static_cast<uint32_t>(slot.data.size()));
    const auto bits = [](double value) {
        uint64_t raw = 0;
        std::memcpy(&raw, &value, sizeof raw);
        return raw;
    };
    const std::array<uint64_t, kChunkCount> values = {
        m_frameIndex + 1, slot.description.timestamp,
        bits(slot.painted.exposure * settings.exposureUs / settings.picture.exposure),
        bits(slot.painted.gain)};
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk) {
        if (((settings.chunks >> chunk) & 1) == 0)
            continue;
        Bytes content(8);
        Put64(content.data(), values[chunk]);
        AppendChunk(slot.data, kFirstChunkId + chunk, content);
    }
    slot.description.chunkBytes = static_cast<uint32_t>(slot.data.size());
    slot.description.chunkLayout = settings.chunks + 1;
}

void StreamSender::SendFrame(Slot& slot, const StreamSettings& settings) {
    m_counters.Update([&](Counters& counters) {
        ++counters.framesStarted;
        counters.packetsOfFrames += slot.packets;
    });
    if (!Connect(settings)) { // no route: not a packet of it can leave
        m_counters.Add(&Counters::framesAborted);
        return;
    }
    const Config& config = m_model.GetConfig();
    const PacketPacer pacer(Clock::now(), settings.packetSize, config.unpaced ? 0 : config.linkSpeedMbps,
                            settings.packetDelayNs);
    while (slot.attempted < slot.packets) {
        if (m_abort) {
            m_counters.Add(&Counters::framesAborted);
            return;
        }
        const uint32_t most = std::min<uint32_t>(PacketBatch::kMost, slot.packets - slot.attempted);
        const uint32_t count = pacer.Allowed(slot.attempted, Clock::now(), most);
        if (count == 0) {
            WaitForPacer(pacer.Due(slot.attempted));
            continue;
        }
        SendRange(slot, slot.attempted, count, m_faults.Get());
    }
    m_counters.Add(&Counters::framesCompleted);
}

// Sends again what was asked for meanwhile, so that a slow stream doesn't hold up its own repair.
void StreamSender::WaitForPacer(Clock::time_point due) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_resends.empty())
        ServeResends(lock);
    else if (!m_abort)
        m_wake.wait_until(lock, due);
}

bool StreamSender::Draw(uint32_t perMille, uint16_t blockId, uint32_t packet, uint32_t salt) const {
    if (perMille == 0)
        return false;
    // splitmix64 of all that names the attempt
    uint64_t x = m_model.GetConfig().seed * 0x9E3779B97F4A7C15ull;
    for (const uint64_t part : {m_frameIndex, uint64_t{blockId}, uint64_t{packet}, uint64_t{salt}}) {
        x += part + 0x9E3779B97F4A7C15ull;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
        x ^= x >> 31;
    }
    return x % 1000 < perMille;
}

} // namespace vcam
