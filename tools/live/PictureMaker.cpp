#include "PictureMaker.h"

#include "Camera/Boundary/OvMediaKit.h"

#include <algorithm>
#include <cstring>

namespace live {

MediaHandle::MediaHandle() : handle_(OV_MP_CreateHandle()) {}

MediaHandle::~MediaHandle() {
    if (handle_ != nullptr)
        OV_MP_DestroyHandle(handle_);
}

Failure PictureMaker::Make(Frame& frame, Picture& picture) {
    const PixelFormat* format = FindPixelFormat(frame.info.pixelFormat);
    if (format == nullptr || frame.info.width == 0 || frame.info.height == 0)
        return {"making a picture of the frame", OV_STATUS_NOT_SUPPORTED};
    picture = {nullptr, frame.info.width, frame.info.height, format->colour};
    if (format->packing == PixelFormat::Packing::Jpeg)
        return Decode(frame, picture);
    const size_t whole = format->FrameBytes(picture.width, picture.height);
    if (whole > frame.pixels.Capacity())
        return {"making a picture of the frame", OV_STATUS_PACKET};
    if (frame.info.frameLength < whole)
        std::memset(frame.pixels.Data() + frame.info.frameLength, 0, whole - frame.info.frameLength);
    if (format->mediaType == OV_PIXEL_MONO8 || format->mediaType == OV_PIXEL_RGB8) {
        picture.pixels = frame.pixels.Data();
        return {};
    }
    return Convert(frame, *format, picture);
}

Failure PictureMaker::Convert(const Frame& frame, const PixelFormat& format, Picture& picture) {
    if (media_.Get() == nullptr)
        return {"OV_MP_CreateHandle", OV_STATUS_OK};
    converted_.resize(picture.Bytes());
    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = frame.info.width;
    record.height = frame.info.height;
    record.sourceType = format.mediaType;
    record.source = frame.pixels.Data();
    record.sourceLength = static_cast<uint32_t>(format.FrameBytes(picture.width, picture.height));
    record.destinationType = picture.colour ? OV_PIXEL_RGB8 : OV_PIXEL_MONO8;
    record.destination = converted_.data();
    record.destinationCapacity = static_cast<uint32_t>(converted_.size());
    record.bayerMethod = bayerMethod_;
    if (const uint32_t status = OV_MP_ConvertPixelType(media_.Get(), &record); status != OV_STATUS_OK)
        return {"OV_MP_ConvertPixelType", status};
    picture.pixels = converted_.data();
    return {};
}

Failure PictureMaker::Decode(const Frame& frame, Picture& picture) {
    if (media_.Get() == nullptr)
        return {"OV_MP_CreateHandle", OV_STATUS_OK};
    converted_.resize(picture.Bytes());
    _OV_DECODE_INFO_ record{};
    record.source = frame.pixels.Data();
    record.sourceLength = frame.info.frameLength;
    record.decodeKind = 1;
    record.destination = converted_.data();
    record.destinationCapacity = static_cast<uint32_t>(converted_.size());
    if (const uint32_t status = OV_MP_Decode(media_.Get(), &record, record.sourceLength, 0);
        status != OV_STATUS_OK)
        return {"OV_MP_Decode", status};
    picture.pixels = converted_.data();
    return {};
}

} // namespace live
