#include "MediaKit/ConvertRecord.h"

#include "MediaKit/Convert.h"
#include "MediaKit/Overlap.h"

#include <cstring>

namespace media {

namespace {

bool LayoutOf(std::uint32_t destinationType, Layout& layout) {
    switch (destinationType) {
    case OV_PIXEL_MONO8:
        layout = Layout::Grey;
        return true;
    case OV_PIXEL_RGB8:
        layout = Layout::Rgb;
        return true;
    case OV_PIXEL_RGB32:
        layout = Layout::Bgrx;
        return true;
    default:
        return false;
    }
}

} // namespace

std::uint32_t ConvertRecord(Workspace& workspace, _OV_CONVERT_PIXEL_INFO_& record) {
    record.destinationLength = 0;
    Picture picture{record.sourceType, record.source, record.sourceLength,
                    record.width,      record.height, record.bayerMethod};
    const std::uint32_t status = CheckPicture(picture);
    if (status != OV_STATUS_OK) {
        return status;
    }
    Layout layout{};
    if (!LayoutOf(record.destinationType, layout)) {
        return OV_STATUS_NOT_SUPPORTED;
    }
    if (record.destination == nullptr) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::size_t pixels = static_cast<std::size_t>(picture.width) * picture.height;
    const std::size_t result = pixels * BytesOf(layout);
    if (record.destinationCapacity < result) {
        return OV_STATUS_BUFFER_FULL;
    }
    const std::size_t used = PixelBytes(FindPixelTraits(picture.type)->packing, pixels);
    if (Overlap(picture.pixels, used, record.destination, result)) {
        picture.pixels =
            static_cast<std::uint8_t*>(std::memcpy(workspace.sourceCopy.Reserve(used), picture.pixels, used));
    }
    ConvertPicture(BestKernels(), picture,
                   {record.destination, static_cast<std::ptrdiff_t>(picture.width * BytesOf(layout)), layout},
                   workspace);
    record.destinationLength = static_cast<std::uint32_t>(result);
    return OV_STATUS_OK;
}

} // namespace media
