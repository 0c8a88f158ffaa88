#include "find/XmlFetch.h"

#include <algorithm>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "Camera/Boundary/OvStatus.h"
#include "find/GvcpCodec.h"
#include "find/XmlLocation.h"
#include "find/XmlUnpack.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

// A piece is a hundred round trips or so: often enough to look at the clock.
constexpr std::size_t kPiece = std::size_t{64} << 10;

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

std::uint32_t readLocal(const MemoryReader& read, const XmlLocation& location, Clock::time_point deadline,
                        Bytes& stored) {
    if (location.length > kMaxStoredXmlBytes || location.address > UINT64_MAX - location.length)
        return OV_STATUS_PACKET;
    const auto length = static_cast<std::size_t>(location.length);
    // Grown as it comes: a length that the camera only claims costs nothing.
    while (stored.size() < length) {
        if (Clock::now() >= deadline)
            return OV_STATUS_NETWORK;
        const std::size_t done = stored.size();
        const std::size_t piece = std::min(kPiece, length - done);
        stored.resize(done + piece);
        const std::uint32_t status = read(location.address + done, stored.data() + done, piece);
        if (status != OV_STATUS_OK)
            return status;
    }
    return OV_STATUS_OK;
}

std::uint32_t readFile(const XmlLocation& location, Bytes& stored) {
    // A relative path would depend on where the program was started.
    if (location.name.front() != '/')
        return OV_STATUS_RESOURCE;
    // Without O_NONBLOCK a camera could name a pipe and hold us for ever.
    const Descriptor file(::open(location.name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info {};
    if (file.get() < 0 || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode))
        return OV_STATUS_RESOURCE;
    for (;;) {
        const std::size_t done = stored.size();
        stored.resize(done + kPiece);
        const ssize_t got = ::read(file.get(), stored.data() + done, kPiece);
        stored.resize(done + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0)
            return OV_STATUS_RESOURCE;
        if (got == 0)
            return OV_STATUS_OK;
        if (stored.size() > kMaxStoredXmlBytes)
            return OV_STATUS_PACKET;
    }
}

std::uint32_t fetchFrom(const MemoryReader& read, std::uint32_t urlRegister, Clock::time_point deadline,
                        Bytes& xml) {
    std::string url(gvcp::kUrlSize, '\0');
    std::uint32_t status = read(urlRegister, reinterpret_cast<std::uint8_t*>(url.data()), url.size());
    if (status != OV_STATUS_OK)
        return status;
    const XmlLocation location = parseXmlLocation(url);
    Bytes stored;
    switch (location.kind) {
    case XmlLocation::Kind::none:
        return OV_STATUS_PACKET;
    case XmlLocation::Kind::remote:
        // Deliberate: a camera doesn't make this host call another.
        return OV_STATUS_NOT_SUPPORTED;
    case XmlLocation::Kind::local:
        status = readLocal(read, location, deadline, stored);
        break;
    case XmlLocation::Kind::file:
        status = readFile(location, stored);
        break;
    }
    return status != OV_STATUS_OK ? status : unpackXml(stored, kMaxXmlBytes, xml);
}

} // namespace

std::uint32_t fetchXml(const MemoryReader& read, Bytes& xml, std::chrono::milliseconds patience) {
    const auto deadline = Clock::now() + patience;
    xml.clear();
    const std::uint32_t first = fetchFrom(read, gvcp::kFirstUrl, deadline, xml);
    if (first == OV_STATUS_OK)
        return first;
    // A camera that is gone or refuses won't do better for the second one.
    if (first == OV_STATUS_NETWORK || first == OV_STATUS_ACCESS_DENIED)
        return first;
    const std::uint32_t second = fetchFrom(read, gvcp::kSecondUrl, deadline, xml);
    // Where neither gives it, the first one's reason is the better explanation.
    return second == OV_STATUS_OK ? second : first;
}

} // namespace kolt::cc
