// Finding 16 cameras behind 4 interfaces, reading device memory, and unpacking an XML: each beside Aravis and
// beside the bound that the system sets. Runs in network namespaces of its own (wants root).
#include <algorithm>
#include <arpa/inet.h>
#include <arv.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <zip.h>
#include <zlib.h>

#include "VirtualCamera.h"
#include "find/DeviceFinder.h"
#include "find/GigeDiscovery.h"
#include "find/GvcpClient.h"
#include "find/Ipv4.h"
#include "find/XmlUnpack.h"
#include "support/NetworkNamespace.h"

namespace {

using namespace kolt;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMemory = 512 * 1024;

double milliseconds(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(int rounds, const std::function<double()>& measure) {
    std::vector<double> values;
    for (int i = 0; i < rounds; ++i)
        values.push_back(measure());
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void row(const char* what, double ms, double reference, const char* remark) {
    std::printf("  %-46s %9.3f ms  %7.2f x  %s\n", what, ms, ms / reference, remark);
}

// One datagram of `ask` bytes there, one of `answer` bytes back, between two sockets on two threads.
class Echo {
public:
    Echo(std::size_t ask, std::size_t answer) : ask_(ask), answer_(answer) {
        for (int& fd : fd_) {
            fd = ::socket(AF_INET, SOCK_DGRAM, 0);
            sockaddr_in address{};
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            socklen_t size = sizeof address;
            if (::bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0)
                std::perror("bind");
            ::getsockname(fd, reinterpret_cast<sockaddr*>(&peer_[&fd - fd_]), &size);
        }
        thread_ = std::thread([this] {
            Bytes buffer(2048);
            while (::recv(fd_[1], buffer.data(), buffer.size(), 0) > 1)
                send(1, answer_);
        });
    }
    ~Echo() {
        send(0, 1);
        thread_.join();
        ::close(fd_[0]);
        ::close(fd_[1]);
    }
    void once() {
        Bytes buffer(2048);
        send(0, ask_);
        if (::recv(fd_[0], buffer.data(), buffer.size(), 0) < 0)
            std::perror("recv");
    }

private:
    void send(int from, std::size_t size) {
        const Bytes bytes(size);
        const auto& to = peer_[1 - from];
        ::sendto(fd_[from], bytes.data(), size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }
    std::size_t ask_;
    std::size_t answer_;
    int fd_[2];
    sockaddr_in peer_[2]{};
    std::thread thread_;
};

void discovery() {
    test::NetworkNamespace host;
    std::vector<std::unique_ptr<test::NetworkNamespace>> sites;
    std::vector<std::unique_ptr<vcam::VirtualCamera>> cameras;
    for (int i = 0; i < 4; ++i) {
        const std::string net = "10.1." + std::to_string(i) + ".";
        sites.push_back(std::make_unique<test::NetworkNamespace>());
        test::NetworkNamespace::cable(host, "kh" + std::to_string(i), net + "1/24", *sites.back(), "kc0",
                                      net + "2/24");
        const test::NamespaceScope inside(*sites.back());
        for (int k = 0; k < 4; ++k) {
            vcam::Config config;
            config.interface = "kc0";
            config.address = net + std::to_string(10 + k);
            config.serial = "B" + std::to_string(i * 4 + k);
            cameras.push_back(std::make_unique<vcam::VirtualCamera>(config));
            cameras.back()->Start();
        }
    }
    const test::NamespaceScope inside(host);
    Echo echo(8, 256);
    const double bound = median(51, [&] {
        return milliseconds([&] {
            for (int i = 0; i < 16; ++i)
                echo.once();
        });
    });
    unsigned fewest = 16;
    const double last = median(21, [&] {
        cc::DiscoveryQuestion question;
        cc::wholeHostQuestion(question);
        unsigned seen = 0;
        question.stopWhen = [&](const cc::FoundCamera&) { return ++seen >= 16; };
        return milliseconds([&] { cc::discoverGige(question); });
    });
    const double call = median(5, [&] {
        return milliseconds([&] {
            _OV_CC_DEVICE_INFO_LIST_ list{};
            cc::enumerateDevices(5, &list);
            fewest = std::min(fewest, list.deviceCount);
        });
    });
    unsigned aravisCount = 0;
    const double aravis = median(3, [&] {
        return milliseconds([&] {
            arv_update_device_list();
            aravisCount = arv_get_n_devices();
        });
    });
    std::printf("16 cameras behind 4 interfaces (medians)\n");
    row("16 datagrams of 256 bytes there and back", bound, bound, "bound: bare sockets");
    row("until the last of the 16 answers", last, bound, "");
    row("OV_CC_EnumDevices, the whole window", call, aravis,
        ("of Aravis; found " + std::to_string(fewest)).c_str());
    row("arv_update_device_list", aravis, aravis, ("peer; found " + std::to_string(aravisCount)).c_str());
}

void memory() {
    test::NetworkNamespace host;
    const test::NamespaceScope inside(host);
    vcam::Config config;
    config.faults.xml = vcam::XmlFault::Huge; // something large to read
    vcam::VirtualCamera camera(config);
    camera.Start();
    cc::GvcpPeer peer;
    peer.ip = cc::ipv4(127, 0, 0, 1);
    cc::GvcpClient client(peer);
    std::string url(512, '\0');
    client.readMemory(cc::gvcp::kFirstUrl, reinterpret_cast<std::uint8_t*>(url.data()), url.size());
    const auto address =
        static_cast<std::uint32_t>(std::strtoul(url.c_str() + url.find(';') + 1, nullptr, 16));
    Bytes data(kMemory);
    Echo echo(16, 548);
    const double bound = median(7, [&] {
        return milliseconds([&] {
            for (std::size_t done = 0; done < kMemory; done += cc::gvcp::kMaxReadMemory)
                echo.once();
        });
    });
    const double ours = median(7, [&] {
        return milliseconds([&] {
            if (client.readMemory(address, data.data(), data.size()) != OV_STATUS_OK)
                std::printf("  read failed\n");
        });
    });
    GError* error = nullptr;
    ArvDevice* device = arv_gv_device_new(g_inet_address_new_from_string("127.0.0.1"),
                                          g_inet_address_new_from_string("127.0.0.1"), &error);
    std::printf("reading %zu KiB of device memory on loopback (medians)\n", kMemory / 1024);
    row("as many datagrams there and back", bound, bound, "bound: bare sockets");
    row("GvcpClient::readMemory", ours, bound, "");
    if (device == nullptr) {
        std::printf("  Aravis does not open the camera: %s\n", error->message);
        g_clear_error(&error);
        return;
    }
    const double aravis = median(7, [&] {
        return milliseconds([&] { arv_device_read_memory(device, address, kMemory, data.data(), nullptr); });
    });
    row("arv_device_read_memory", aravis, bound, "peer");
    g_object_unref(device);
}

void unpack() {
    // As large as the largest of real cameras, and about as repetitive.
    std::string xml = "<?xml version=\"1.0\"?><RegisterDescription>";
    for (int i = 0; xml.size() < 1900000; ++i)
        xml += "<IntReg Name=\"Register" + std::to_string(i * 7919 % 100000) + "\"><Address>0x" +
               std::to_string(i * 104729 % 1000000) +
               "</Address><Length>4</Length><AccessMode>RW</AccessMode></IntReg>\n";
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_source_keep(target);
    zip_file_add(archive, "camera.xml", zip_source_buffer(archive, xml.data(), xml.size(), 0), 0);
    zip_close(archive);
    zip_source_open(target);
    Bytes zipped(xml.size());
    zipped.resize(static_cast<std::size_t>(zip_source_read(target, zipped.data(), zipped.size())));
    zip_source_close(target);
    zip_source_free(target);

    uLongf size = compressBound(xml.size());
    Bytes deflated(size);
    compress2(deflated.data(), &size, reinterpret_cast<const Bytef*>(xml.data()), xml.size(), 6);
    Bytes plain(xml.size());
    const double bound = median(11, [&] {
        return milliseconds([&] {
            z_stream stream{};
            inflateInit2(&stream, -MAX_WBITS); // raw: the two bytes of zlib's own header are left out
            stream.next_in = deflated.data() + 2;
            stream.avail_in = static_cast<uInt>(size - 2);
            stream.next_out = plain.data();
            stream.avail_out = static_cast<uInt>(plain.size());
            if (inflate(&stream, Z_FINISH) != Z_STREAM_END)
                std::printf("  zlib failed\n");
            inflateEnd(&stream);
        });
    });
    Bytes result;
    const double ours = median(11, [&] {
        return milliseconds([&] {
            if (cc::unpackXml(zipped, std::size_t{64} << 20, result) != OV_STATUS_OK ||
                result.size() != xml.size())
                std::printf("  unpacking failed\n");
        });
    });
    const double aravis = median(11, [&] {
        return milliseconds([&] {
            ArvZip* zip = arv_zip_new(zipped.data(), zipped.size());
            std::size_t out = 0;
            g_free(arv_zip_get_file(zip, "camera.xml", &out));
            arv_zip_free(zip);
            if (out != xml.size())
                std::printf("  ArvZip failed\n");
        });
    });
    std::printf("unpacking an XML of 1.9 MB (medians)\n");
    row("zlib alone, no checksum", bound, bound, "bound");
    row("unpackXml", ours, bound, "checks the sum as well");
    row("ArvZip", aravis, bound, "peer; no checksum");
}

} // namespace

int main() {
    arv_disable_interface("USB3Vision");
    arv_disable_interface("Fake");
    discovery();
    memory();
    unpack();
    return 0;
}
