#include "MediaKit/CodecRecords.h"

#include "MediaKit/Bmp.h"
#include "MediaKit/Convert.h"
#include "MediaKit/Jpeg.h"
#include "MediaKit/Overlap.h"

#include <algorithm>

namespace media {

namespace {

std::uint32_t SaveBmp(Workspace& workspace, const Picture& picture, _OV_IMAGE_INFO_& record) {
    const std::uint64_t bytes = BmpBytes(picture.width, picture.height, IsGrey(picture));
    if (bytes > record.outputCapacity) {
        return OV_STATUS_BUFFER_FULL;
    }
    WriteBmp(picture, record.output, workspace);
    record.outputLength = static_cast<std::uint32_t>(bytes);
    return OV_STATUS_OK;
}

std::uint32_t SaveJpeg(Workspace& workspace, const Picture& picture, _OV_IMAGE_INFO_& record) {
    if (record.jpegQuality < 1 || record.jpegQuality > 100) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    if (!workspace.encoder) {
        workspace.encoder = std::make_unique<JpegEncoder>();
    }
    std::size_t length = 0;
    const std::uint32_t status =
        workspace.encoder->Encode(picture, static_cast<int>(record.jpegQuality), record.output,
                                  record.outputCapacity, length, workspace.lines.front(), workspace.band);
    record.outputLength = static_cast<std::uint32_t>(length);
    return status;
}

} // namespace

std::uint32_t SaveRecord(Workspace& workspace, _OV_IMAGE_INFO_& record) {
    record.outputLength = 0;
    const Picture picture{record.sourceType, record.source, record.sourceLength,
                          record.width,      record.height, OV_BAYER_BILINEAR};
    const std::uint32_t status = CheckPicture(picture);
    if (status != OV_STATUS_OK) {
        return status;
    }
    if (record.output == nullptr ||
        Overlap(record.source, record.sourceLength, record.output, record.outputCapacity)) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    switch (record.imageType) {
    case OV_IMAGE_BMP:
        return SaveBmp(workspace, picture, record);
    case OV_IMAGE_JPEG:
        return SaveJpeg(workspace, picture, record);
    default:
        return OV_STATUS_NOT_SUPPORTED;
    }
}

std::uint32_t DecodeRecord(Workspace& workspace, _OV_DECODE_INFO_& record, std::uint32_t jpegLength) {
    constexpr std::uint32_t kDecodeToRgb = 1;
    if (record.decodeKind != kDecodeToRgb) {
        return OV_STATUS_NOT_SUPPORTED;
    }
    const std::uint32_t length = std::min(record.sourceLength, jpegLength);
    if (record.source == nullptr || length == 0 || record.destination == nullptr) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    if (!workspace.decoder) {
        workspace.decoder = std::make_unique<JpegDecoder>();
    }
    return workspace.decoder->Decode(record.source, length, record.destination, record.destinationCapacity);
}

} // namespace media
