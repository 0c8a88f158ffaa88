#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/CodecRecords.h"
#include "MediaKit/WhiteBalance.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

/*
 * JPEG data of any content, and pictures of any type and size on their way into a file. The first byte
 * chooses; outputs are exactly as long as the record says, so that the sanitizer sees every access outside.
 */

namespace {

media::Workspace& SharedWorkspace() {
    static media::WorkerPool pool(0);
    static media::Workspace workspace(pool);
    return workspace;
}

void FuzzDecode(const std::uint8_t* data, std::size_t size, std::size_t capacity) {
    const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[capacity]);
    _OV_DECODE_INFO_ record{};
    record.source = data;
    record.sourceLength = static_cast<std::uint32_t>(size);
    record.decodeKind = 1;
    record.destination = output.get();
    record.destinationCapacity = static_cast<std::uint32_t>(capacity);
    media::DecodeRecord(SharedWorkspace(), record, record.sourceLength);
}

void FuzzEncode(const std::uint8_t* data, std::size_t size) {
    if (size < 12) {
        return;
    }
    _OV_IMAGE_INFO_ record{};
    record.sourceType = data[0] % 34;
    record.width = static_cast<std::uint16_t>(data[1] | (data[2] & 1) << 8);
    record.height = static_cast<std::uint16_t>(data[3] % 64);
    record.imageType = data[4] % 3;
    record.jpegQuality = data[5];
    const std::size_t capacity = data[6] | static_cast<std::size_t>(data[7]) << 8;
    std::vector<std::uint8_t> pixels(data + 12, data + size);
    const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[capacity]);
    record.source = pixels.data();
    record.sourceLength = static_cast<std::uint32_t>(pixels.size());
    record.output = output.get();
    record.outputCapacity = static_cast<std::uint32_t>(capacity);
    const std::uint32_t status = media::SaveRecord(SharedWorkspace(), record);
    if (status == OV_STATUS_OK ? record.outputLength > capacity || record.outputLength == 0
                               : record.outputLength != 0) {
        std::abort();
    }
    _OV_WHITE_BALANCE_PARAM_ gains{};
    std::memcpy(&gains, data + 6, 6);
    media::ApplyWhiteBalance(SharedWorkspace(), record, gains);
    media::MeasureWhiteBalance(SharedWorkspace(), record, gains);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    if (data[0] % 2 == 0) {
        FuzzDecode(data + 2, size - 2, static_cast<std::size_t>(data[1]) * 512);
    } else {
        FuzzEncode(data + 1, size - 1);
    }
    return 0;
}
