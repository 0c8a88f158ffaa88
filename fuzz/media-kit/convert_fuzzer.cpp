#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Convert.h"
#include "MediaKit/ConvertRecord.h"

#include <cstdlib>
#include <cstring>
#include <vector>

/*
 * Conversion records of any content. The first 24 bytes say what the record holds, the rest are pixels.
 * Buffers are exactly as long as the record says, so that the sanitizer sees every access outside; a good
 * status must come with the bytes that the plain kernels make, and any other must leave the result untouched.
 */

namespace {

constexpr std::size_t kLargestBuffer = std::size_t{1} << 17;

struct Header {
    std::uint32_t sourceType;
    std::uint32_t destinationType;
    std::uint32_t method;
    std::uint16_t width;
    std::uint16_t height;
    std::uint32_t
        missing; // by how much the buffers are too short: source in the low half, destination in the high
    std::uint8_t flags;
    std::uint8_t sourceOffset; // from an aligned address
    std::uint8_t destinationOffset;
    std::uint8_t shift; // of an overlapping destination
};
static_assert(sizeof(Header) == 24);

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/* Numbers that a header would seldom hit by chance are brought near to those that mean something. */
Header Tame(const std::uint8_t* data) {
    Header header;
    std::memcpy(&header, data, sizeof(header));
    if ((header.flags & 1U) != 0) {
        header.sourceType %= 34;
        constexpr std::uint32_t kDestinations[] = {0, 27, 32, 5};
        header.destinationType = kDestinations[header.destinationType % 4];
        header.method %= 4;
    }
    if ((header.flags & 2U) != 0) {
        header.width = static_cast<std::uint16_t>(header.width % 300);
        header.height = static_cast<std::uint16_t>(header.height % 12);
    }
    if ((header.flags & 4U) != 0) {
        header.missing = 0;
    }
    return header;
}

std::size_t Less(std::size_t size, std::size_t by) {
    return size > by ? size - by : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace media;
    if (size < sizeof(Header)) {
        return 0;
    }
    const Header header = Tame(data);
    data += sizeof(Header);
    size -= sizeof(Header);

    const std::size_t pixels = static_cast<std::size_t>(header.width) * header.height;
    const PixelTraits* const traits = FindPixelTraits(header.sourceType);
    const std::size_t wanted = traits != nullptr ? PixelBytes(traits->packing, pixels) : size;
    const std::size_t sourceLength = std::min(Less(wanted, header.missing & 0xFFFFU), kLargestBuffer);
    const std::size_t capacity = std::min(Less(pixels * 4, header.missing >> 16), kLargestBuffer);

    std::vector<std::uint8_t> source(sourceLength + header.sourceOffset);
    for (std::size_t i = 0; i < sourceLength; ++i) {
        source[header.sourceOffset + i] = size == 0 ? static_cast<std::uint8_t>(i) : data[i % size];
    }
    const std::vector<std::uint8_t> before(source.begin() + header.sourceOffset, source.end());
    std::vector<std::uint8_t> separate(capacity + header.destinationOffset, 0xC3);

    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = header.width;
    record.height = header.height;
    record.sourceType = header.sourceType;
    record.source =
        (header.flags & 8U) != 0 && sourceLength == 0 ? nullptr : source.data() + header.sourceOffset;
    record.sourceLength = static_cast<std::uint32_t>(sourceLength);
    record.destinationType = header.destinationType;
    record.bayerMethod = header.method;
    record.destination = separate.data() + header.destinationOffset;
    record.destinationCapacity = static_cast<std::uint32_t>(capacity);
    if ((header.flags & 16U) != 0) {
        // On the source itself, as far as that has room.
        const std::size_t shift = std::min<std::size_t>(header.shift, sourceLength);
        record.destination = source.data() + header.sourceOffset + shift;
        record.destinationCapacity = static_cast<std::uint32_t>(sourceLength - shift);
    }

    static WorkerPool pool(1);
    static Workspace workspace(pool);
    const std::uint32_t status = ConvertRecord(workspace, record);
    if (status != OV_STATUS_OK) {
        Require(status == OV_STATUS_NOT_SUPPORTED || status == OV_STATUS_INVALID_PARAMETER ||
                status == OV_STATUS_BUFFER_FULL);
        Require(record.destinationLength == 0);
        Require(std::equal(before.begin(), before.end(), source.begin() + header.sourceOffset));
        for (const std::uint8_t byte : separate) {
            Require(byte == 0xC3);
        }
        return 0;
    }
    Require(record.destinationLength <= record.destinationCapacity);
    const Picture picture{header.sourceType, before.data(), record.sourceLength,
                          header.width,      header.height, header.method};
    const Layout layout = header.destinationType == OV_PIXEL_MONO8  ? Layout::Grey
                          : header.destinationType == OV_PIXEL_RGB8 ? Layout::Rgb
                                                                    : Layout::Bgrx;
    std::vector<std::uint8_t> expected(pixels * BytesOf(layout));
    Require(record.destinationLength == expected.size());
    static LineBuffers lines;
    lines.Prepare(header.width);
    ConvertRows(PlainKernels(), picture, 0, header.height,
                {expected.data(), static_cast<std::ptrdiff_t>(header.width * BytesOf(layout)), layout},
                lines);
    Require(std::memcmp(expected.data(), record.destination, expected.size()) == 0);
    return 0;
}
