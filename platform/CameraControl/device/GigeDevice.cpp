#include "device/GigeDevice.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <utility>

#include "device/AlignedSpan.h"
#include "device/PacketProbe.h"
#include "device/ReceiveBuffer.h"
#include "device/RingStream.h"
#include "device/Statuses.h"
#include "find/GvcpClient.h"
#include "find/GvcpCodec.h"
#include "find/Ipv4.h"
#include "find/XmlFetch.h"

namespace kolt::cc {

namespace {

constexpr std::uint32_t kTickFrequency = 0x093C; // high half, then low
constexpr std::uint32_t kStreamChannelPort = 0x0D00;
constexpr std::uint32_t kStreamChannelPacket = 0x0D04; // size in the low half, and:
constexpr std::uint32_t kFireTestPacket = 0x8000'0000;
constexpr std::uint32_t kDoNotFragment = 0x4000'0000;
constexpr std::uint32_t kPacketSizeBits = 0xFFFF;
constexpr gint64 kLargestPacket = 0xFFFF;
constexpr std::uint32_t kStreamChannelAddress = 0x0D18;
constexpr std::uint32_t kGvspConfiguration = 0x0960;     // of GigE Vision 2.0
constexpr std::uint32_t kExtendedBlockIds = 0x4000'0000; // its bit: GVSP headers of 20 bytes

// Microseconds that a frame waits for lost packets. Long enough for a host that doesn't get to its packets
// for a moment (Aravis gives a frame up by the clock, even when the missing packets lie in the socket), short
// enough for the frames behind it, which wait as well.
constexpr guint kFrameRetention = 200'000;

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32;

GObjectPtr<GInetAddress> inetAddress(std::uint32_t ip) {
    return GObjectPtr<GInetAddress>(g_inet_address_new_from_string(toText(ip).c_str()));
}

// The number of an attribute of the first element, such as SchemaMinorVersion="1"; -1 where it is missing.
int rootAttribute(std::string_view xml, std::string_view name) {
    const std::size_t root = xml.find("<RegisterDescription");
    if (root == std::string_view::npos) {
        return -1;
    }
    const std::string_view element = xml.substr(root, xml.find('>', root) - root);
    std::size_t at = element.find(name);
    if (at == std::string_view::npos) {
        return -1;
    }
    at = element.find_first_of("\"'", at);
    int value = -1;
    for (++at; at < element.size() && element[at] >= '0' && element[at] <= '9' && value < 1000; ++at) {
        value = (value < 0 ? 0 : value * 10) + (element[at] - '0');
    }
    return value;
}

// What can be asked without control of the camera: is it there, is it free, where is its XML.
std::uint32_t survey(const GvcpPeer& peer, const Logger& log, std::vector<std::uint8_t>& xml,
                     DiscoveryAnswer& answer) {
    GvcpClient client(peer);
    std::uint32_t status = client.discover(answer);
    if (status != OV_STATUS_OK) {
        log(LogLevel::error, "%s does not answer (0x%08x)", toText(peer.ip).c_str(), status);
        return status;
    }
    std::uint32_t privilege = 0;
    status = client.readRegister(gvcp::kControlChannelPrivilege, privilege);
    if (status == OV_STATUS_ACCESS_DENIED ||
        (status == OV_STATUS_OK && (privilege & (gvcp::kExclusiveAccess | gvcp::kControlAccess)) != 0)) {
        log(LogLevel::error, "%s is held by somebody else", toText(peer.ip).c_str());
        return OV_STATUS_ACCESS_DENIED;
    }
    // Before Aravis reads it: Aravis would fetch from a web server, and believe any length.
    status = fetchXml(
        [&](std::uint64_t address, std::uint8_t* destination, std::size_t length) {
            return address + length > kAddressSpace
                       ? OV_STATUS_INVALID_ADDRESS
                       : client.readMemory(static_cast<std::uint32_t>(address), destination, length);
        },
        xml);
    if (status == OV_STATUS_OK && !isWellFormed(xml)) {
        status = OV_STATUS_PACKET;
    }
    if (status != OV_STATUS_OK) {
        log(LogLevel::error, "%s: no usable XML (0x%08x)", toText(peer.ip).c_str(), status);
    }
    return status;
}

} // namespace

bool wantsRegisterAccess(std::string_view xml) {
    const int major = rootAttribute(xml, "SchemaMajorVersion");
    const int minor = rootAttribute(xml, "SchemaMinorVersion");
    return major == 0 || (major == 1 && minor == 0);
}

std::unique_ptr<GigeDevice> GigeDevice::open(const OpenRequest& request, std::uint32_t& status) {
    const _OV_CC_GIGE_DEVICE_INFO_& record = request.device.transport.gige;
    GvcpPeer peer;
    peer.ip = record.currentIp;
    peer.localIp = record.hostInterface != 0 ? record.hostInterface : routeSource(record.currentIp);
    if (peer.ip == 0 || peer.localIp == 0) {
        status = OV_STATUS_NETWORK;
        return nullptr;
    }
    std::vector<std::uint8_t> xml;
    DiscoveryAnswer answer;
    status = survey(peer, request.log, xml, answer);
    if (status != OV_STATUS_OK) {
        return nullptr;
    }
    GErrorHolder error;
    GObjectPtr<ArvDevice> arv(
        arv_gv_device_new(inetAddress(peer.localIp).get(), inetAddress(peer.ip).get(), error.out()));
    if (!arv) {
        request.log(LogLevel::error, "opening %s: %s", toText(peer.ip).c_str(), error.text());
        status = statusFromError(error.get());
        status = status == OV_STATUS_NETWORK ? OV_STATUS_BUSY : status;
        return nullptr;
    }
    // Aravis' own word of a loss is not asked for: it comes seconds after that of LivenessMonitor, and while
    // its heartbeat thread says it, that thread holds a reference to the device. Were it the last one, the
    // thread would wait for its own end, and GLib end the process.
    std::unique_ptr<GigeDevice> device(new GigeDevice(std::move(arv), request.log, {}));
    device->ip_ = peer.ip;
    device->localIp_ = peer.localIp;
    device->registerAccess_ = wantsRegisterAccess({reinterpret_cast<const char*>(xml.data()), xml.size()});
    device->bigEndian_ = (answer.deviceMode & 0x8000'0000u) != 0;
    device->takeXml(std::move(xml));
    status = device->takeExclusiveControl();
    return status == OV_STATUS_OK ? std::move(device) : nullptr;
}

std::uint32_t GigeDevice::takeExclusiveControl() {
    // Aravis opens a camera that it may not control all the same.
    if (arv_gv_device_is_controller(gv()) == 0) {
        return OV_STATUS_ACCESS_DENIED;
    }
    arv_gv_device_set_packet_size_adjustment(gv(), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    std::uint32_t status = writeRegister(gvcp::kControlChannelPrivilege, gvcp::kExclusiveAccess);
    if (status != OV_STATUS_OK) {
        // Control shared with readers is still control; the device refuses the exclusive kind.
        log()(LogLevel::info, "no exclusive access (0x%08x), only control", status);
    }
    status = readRegister(gvcp::kControlChannelPrivilege, privilege_);
    if (status == OV_STATUS_OK) {
        status = readRegister(gvcp::kHeartbeatTimeout, heartbeat_);
    }
    if (status != OV_STATUS_OK) {
        return status == OV_STATUS_NETWORK ? OV_STATUS_BUSY : status;
    }
    return (privilege_ & (gvcp::kExclusiveAccess | gvcp::kControlAccess)) != 0 ? OV_STATUS_OK
                                                                               : OV_STATUS_ACCESS_DENIED;
}

std::uint32_t GigeDevice::readRegister(std::uint64_t address, std::uint32_t& value) {
    GErrorHolder error;
    guint32 read = 0;
    arv_device_read_register(arv(), address, &read, error.out());
    value = read;
    return statusFromError(error.get());
}

std::uint32_t GigeDevice::writeRegister(std::uint64_t address, std::uint32_t value) {
    GErrorHolder error;
    arv_device_write_register(arv(), address, value, error.out());
    return statusFromError(error.get());
}

std::uint32_t GigeDevice::readAsRegister(std::uint64_t address, std::uint8_t* destination) {
    std::uint32_t value = 0;
    const std::uint32_t status = readRegister(address, value);
    store32(destination, bigEndian_ ? value : __builtin_bswap32(value));
    return status;
}

std::uint32_t GigeDevice::writeAsRegister(std::uint64_t address, const std::uint8_t* source, bool bigEndian) {
    const std::uint32_t value = load32(source);
    return writeRegister(address, bigEndian ? value : __builtin_bswap32(value));
}

std::uint32_t GigeDevice::readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) {
    if (address >= kAddressSpace || length > kAddressSpace - address) {
        return OV_STATUS_INVALID_ADDRESS;
    }
    const AlignedSpan span = alignedAround(address, length);
    if (span.isExact(length)) {
        return registerAccess_ && length == 4 ? readAsRegister(address, destination)
                                              : AravisBase::readMemory(address, destination, length);
    }
    std::vector<std::uint8_t> around(span.length);
    const std::uint32_t status = AravisBase::readMemory(span.address, around.data(), span.length);
    if (status == OV_STATUS_OK) {
        std::memcpy(destination, around.data() + span.skip, length);
    }
    return status;
}

std::uint32_t GigeDevice::writeAligned(std::uint64_t address, const std::uint8_t* source,
                                       std::size_t length) {
    if (registerAccess_ && length == 4) {
        return writeAsRegister(address, source, bigEndian_);
    }
    const std::uint32_t status = AravisBase::writeMemory(address, source, length);
    if (status == OV_STATUS_GVCP_NOT_IMPLEMENTED && length == 4) {
        return writeAsRegister(address, source, true); // WRITEMEM is optional for devices
    }
    return status;
}

std::uint32_t GigeDevice::writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length) {
    if (address >= kAddressSpace || length > kAddressSpace - address) {
        return OV_STATUS_INVALID_ADDRESS;
    }
    const AlignedSpan span = alignedAround(address, length);
    if (span.isExact(length)) {
        return writeAligned(address, source, length);
    }
    // The protocol can't write less than 4 bytes: those around are written back as they are.
    std::vector<std::uint8_t> around(span.length);
    const std::uint32_t status = AravisBase::readMemory(span.address, around.data(), span.length);
    if (status != OV_STATUS_OK) {
        return status;
    }
    std::memcpy(around.data() + span.skip, source, length);
    return writeAligned(span.address, around.data(), around.size());
}

void GigeDevice::closeStreamChannel() {
    writeRegister(kStreamChannelPort, 0);
}

std::int32_t GigeDevice::packetSize() {
    GErrorHolder error;
    const guint size = arv_gv_device_get_packet_size(gv(), error.out());
    return error ? 0 : static_cast<std::int32_t>(size);
}

std::uint32_t GigeDevice::largestThinkableSize() {
    gint64 least = 0;
    gint64 most = 0;
    GErrorHolder error;
    arv_device_get_integer_feature_bounds(arv(), "GevSCPSPacketSize", &least, &most, error.out());
    GErrorHolder none; // without an increment it is 1
    const gint64 step =
        std::max<gint64>(arv_device_get_integer_feature_increment(arv(), "GevSCPSPacketSize", none.out()), 1);
    const gint64 largest = std::min<gint64>({most, pathMtu(localIp_, ip_), kLargestPacket});
    return error || least <= 0 || largest < least
               ? 0
               : static_cast<std::uint32_t>(largest - (largest - least) % step);
}

std::uint32_t GigeDevice::tryLargestSize() {
    constexpr int kTries = 2; // a single packet may be lost for other reasons
    constexpr std::chrono::milliseconds kPatience(20);
    std::uint32_t before = 0;
    const std::uint32_t size = largestThinkableSize();
    PacketProbe probe(localIp_, ip_);
    if (size == 0 || probe.port() == 0 || arv_device_get_feature(arv(), "GevSCPSFireTestPacket") == nullptr ||
        readRegister(kStreamChannelPacket, before) != OV_STATUS_OK ||
        writeRegister(kStreamChannelAddress, localIp_) != OV_STATUS_OK ||
        writeRegister(kStreamChannelPort, probe.port()) != OV_STATUS_OK) {
        return 0;
    }
    const std::uint32_t order = (before & ~kPacketSizeBits) | kDoNotFragment | kFireTestPacket | size;
    bool came = false;
    for (int i = 0; i < kTries && !came; ++i) {
        came = writeRegister(kStreamChannelPacket, order) == OV_STATUS_OK && probe.arrives(size, kPatience);
    }
    writeRegister(kStreamChannelPacket, before & ~kFireTestPacket);
    return came ? size : 0;
}

std::int32_t GigeDevice::optimalPacketSize() {
    // Mostly the largest that host and camera can carry goes through: then there is nothing to search.
    if (const std::uint32_t largest = tryLargestSize()) {
        closeStreamChannel();
        return static_cast<std::int32_t>(largest);
    }
    const std::int32_t before = packetSize();
    GErrorHolder error;
    const guint best = arv_gv_device_auto_packet_size(gv(), error.out());
    if (error) {
        log()(LogLevel::error, "packet size not found out: %s", error.text());
    }
    if (before > 0) {
        GErrorHolder ignored;
        arv_gv_device_set_packet_size(gv(), before, ignored.out());
    }
    closeStreamChannel(); // Aravis leaves it pointing at the socket of its test
    // A camera without test packets: what it uses now is the best that is known.
    return error || best == 0 ? before : static_cast<std::int32_t>(best);
}

TransportDevice::Control GigeDevice::askControl() {
    std::uint32_t privilege = 0;
    std::uint32_t status = readRegister(gvcp::kControlChannelPrivilege, privilege);
    if (status == OV_STATUS_ACCESS_DENIED) {
        return Control::lost;
    }
    if (status != OV_STATUS_OK) {
        return Control::unknown;
    }
    if (privilege != privilege_) {
        return Control::lost;
    }
    // Another host may hold the camera in the same way as we did, which reads the same. Only who controls it
    // may write, so one register is written as it is.
    status = writeRegister(gvcp::kHeartbeatTimeout, heartbeat_);
    if (status == OV_STATUS_ACCESS_DENIED) {
        return Control::lost;
    }
    return isAnswer(status) ? Control::held : Control::unknown;
}

std::uint64_t GigeDevice::ticksPerSecond() {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
    const bool known = readRegister(kTickFrequency, high) == OV_STATUS_OK &&
                       readRegister(kTickFrequency + 4, low) == OV_STATUS_OK;
    return known ? (std::uint64_t{high} << 32) | low : 0;
}

std::shared_ptr<FrameSource> GigeDevice::ownStream(const StreamSettings& settings, const StreamShape& shape,
                                                   const FrameSource::Hooks& hooks) {
    constexpr std::size_t kLeastPacketData = 256; // less: the camera did not tell
    if (!settings.packetSocket || shape.packetData < kLeastPacketData) {
        return nullptr;
    }
    const RingStream::Road road{ip_, localIp_, ticksPerSecond()};
    std::shared_ptr<RingStream> stream = RingStream::create(road, settings, shape, hooks);
    if (!stream || writeRegister(kStreamChannelAddress, localIp_) != OV_STATUS_OK ||
        writeRegister(kStreamChannelPort, stream->port()) != OV_STATUS_OK) {
        log()(LogLevel::info, "no packet socket, a plain one");
        return nullptr;
    }
    return stream;
}

// Aravis' own packet socket is not wanted: where one may be used, ownStream() has done it.
void GigeDevice::prepareStream(const StreamSettings&) {
    arv_gv_device_set_stream_options(gv(), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
}

void GigeDevice::tuneStream(ArvStream* stream, const StreamSettings& settings, const StreamShape& shape) {
    g_object_set(stream, "packet-resend",
                 settings.resend ? ARV_GV_STREAM_PACKET_RESEND_ALWAYS : ARV_GV_STREAM_PACKET_RESEND_NEVER,
                 "frame-retention", kFrameRetention, nullptr);
    // Aravis enlarges the socket's buffer when the first packet has come, which is too late for the rest of
    // the first frame: so it is done here. By Aravis where the socket can't be found.
    const std::uint16_t port = arv_gv_stream_get_port(ARV_GV_STREAM(stream));
    if (!enlargeReceiveBuffer(port, receiveBufferFor(shape.payload))) {
        g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
    }
}

std::size_t GigeDevice::packetData() {
    constexpr std::size_t kHeaders = 20 + 8; // IP, UDP
    const std::int32_t packet = packetSize();
    std::uint32_t configuration = 0;
    const bool extended = readRegister(kGvspConfiguration, configuration) == OV_STATUS_OK &&
                          (configuration & kExtendedBlockIds) != 0;
    const std::size_t header = kHeaders + (extended ? 20 : 8);
    return packet > static_cast<std::int32_t>(header) ? static_cast<std::size_t>(packet) - header : 1;
}

} // namespace kolt::cc
