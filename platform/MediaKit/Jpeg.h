#ifndef MEDIA_JPEG_H
#define MEDIA_JPEG_H

#include "MediaKit/AlignedBuffer.h"
#include "MediaKit/Convert.h"
#include "MediaKit/LineBuffers.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace media {

/*
 * libjpeg-turbo's encoder, kept for the next picture. One thread at a time. The library reports a failure by
 * a jump over the frames of its callers; it ends inside, and the calls below answer with a status.
 */
class JpegEncoder {
public:
    /* Throws std::bad_alloc. */
    JpegEncoder();
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    /*
     * Encodes a picture that CheckPicture found right: grey where it holds no colour, else colour with 4:2:0
     * sampling (what the encoder's users take by default: half the bytes of 4:4:4 and a third less time).
     * quality: 1 to 100. OV_STATUS_BUFFER_FULL when capacity bytes don't suffice: what stands in `output`
     * then means nothing, and nothing beyond it was touched. Throws std::bad_alloc before anything was
     * written.
     */
    std::uint32_t Encode(const Picture& picture, int quality, std::uint8_t* output, std::size_t capacity,
                         std::size_t& length, LineBuffers& lines, AlignedBuffer& band);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/* libjpeg-turbo's decoder, kept for the next picture. One thread at a time. */
class JpegDecoder {
public:
    /* Throws std::bad_alloc. */
    JpegDecoder();
    ~JpegDecoder();
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    /*
     * Decodes to rows of R G B without padding. Data that ends too soon or is damaged in a way that the
     * decoder can only guess over is refused like data that it can't read: OV_STATUS_INVALID_PARAMETER.
     * OV_STATUS_BUFFER_FULL when the picture is larger than capacity; OV_STATUS_NOT_SUPPORTED for what has no
     * RGB form here (CMYK).
     */
    std::uint32_t Decode(const std::uint8_t* data, std::size_t length, std::uint8_t* destination,
                         std::size_t capacity);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace media

#endif
