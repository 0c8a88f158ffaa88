#include "MediaKit/Jpeg.h"

#include "Camera/Boundary/OvStatus.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <jpeglib.h>

#include <jerror.h>
#include <new>

namespace media {

namespace {

/* Rows that are converted at a time on their way into the encoder: small enough to stay in the cache, and
 * whole blocks of 4:2:0. */
constexpr std::uint32_t kBandRows = 16;

/* A progressive picture has about ten; a hostile one has thousands of empty ones, each of which costs a pass
 * over the whole picture. */
constexpr int kMostScans = 100;

/*
 * Where the library jumps when it gives up. Between a setjmp and the calls that may jump to it stand no
 * objects with destructors: what a picture needs lives in the states below.
 */
struct ErrorManager {
    jpeg_error_mgr base; // first: the library knows only this part
    std::jmp_buf jump;
    std::uint32_t status;
};

[[noreturn]] void GiveUp(j_common_ptr library) {
    auto* const errors = reinterpret_cast<ErrorManager*>(library->err);
    if (errors->base.msg_code == JERR_OUT_OF_MEMORY) {
        errors->status = OV_STATUS_RESOURCE;
    }
    std::longjmp(errors->jump, 1);
}

void KeepQuiet(j_common_ptr /*library*/) {}

void SetUp(ErrorManager& errors) {
    jpeg_std_error(&errors.base);
    errors.base.error_exit = GiveUp;
    errors.base.output_message = KeepQuiet;
}

} // namespace

// --- encoder
// -----------------------------------------------------------------------------------------------------

struct JpegEncoder::State {
    jpeg_compress_struct library;
    ErrorManager errors;
    jpeg_destination_mgr destination;
    bool created;

    // Of the picture in progress.
    const Picture* picture;
    LineBuffers* lines;
    std::uint8_t* band;
    std::uint8_t* output;
    std::size_t capacity;
    int quality;
    bool spilling;
    std::uint8_t spill[64];
    JSAMPROW rows[kBandRows];

    static void Begin(j_compress_ptr) {}
    static void End(j_compress_ptr) {}

    /*
     * Called when the last free byte has been written, which may also be the last byte of the file. So the
     * encoder gets a few bytes of its own to go on: only when it uses them did the file not fit.
     */
    static boolean Full(j_compress_ptr library) {
        auto* const state = static_cast<State*>(library->client_data);
        if (state->spilling) {
            state->errors.base.msg_code = 0;
            state->errors.status = OV_STATUS_BUFFER_FULL;
            GiveUp(reinterpret_cast<j_common_ptr>(library));
        }
        state->spilling = true;
        state->destination.next_output_byte = state->spill;
        state->destination.free_in_buffer = sizeof(state->spill);
        return TRUE;
    }

    /* Everything that may jump. False after a jump. */
    bool Create() {
        SetUp(errors);
        library.err = &errors.base;
        if (setjmp(errors.jump) != 0) {
            return false;
        }
        jpeg_create_compress(&library);
        created = true;
        destination.init_destination = Begin;
        destination.empty_output_buffer = Full;
        destination.term_destination = End;
        library.dest = &destination;
        return true;
    }

    bool Run() {
        if (setjmp(errors.jump) != 0) {
            jpeg_abort_compress(&library);
            return false;
        }
        library.client_data = this;
        spilling = false;
        destination.next_output_byte = output;
        destination.free_in_buffer = capacity;
        const bool grey = IsGrey(*picture);
        library.image_width = picture->width;
        library.image_height = picture->height;
        library.input_components = grey ? 1 : 3;
        library.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&library);
        jpeg_set_quality(&library, quality, TRUE);
        jpeg_start_compress(&library, TRUE);
        while (library.next_scanline < picture->height) {
            const JDIMENSION count = NextRows(grey);
            jpeg_write_scanlines(&library, rows, count);
        }
        jpeg_finish_compress(&library);
        return true;
    }

    /* Points `rows` at the next rows: in the picture itself where they are what the encoder takes, else in
     * the band. */
    JDIMENSION NextRows(bool grey) {
        const std::uint32_t first = library.next_scanline;
        const std::uint32_t end = std::min(first + kBandRows, picture->height);
        const Packing packing = FindPixelTraits(picture->type)->packing;
        const std::size_t pitch = static_cast<std::size_t>(picture->width) * (grey ? 1 : 3);
        const bool asItIs = packing == Packing::Rgb || (grey && packing == Packing::Bytes);
        const std::uint8_t* start = asItIs ? picture->pixels + first * pitch : band;
        if (!asItIs) {
            ConvertRows(BestKernels(), *picture, first, end,
                        {band, static_cast<std::ptrdiff_t>(pitch), grey ? Layout::Grey : Layout::Rgb},
                        *lines);
        }
        for (std::uint32_t row = first; row < end; ++row) {
            // The library only reads, though its type doesn't say so.
            rows[row - first] = const_cast<JSAMPROW>(start + (row - first) * pitch);
        }
        return end - first;
    }
};

JpegEncoder::JpegEncoder() : state_(std::make_unique<State>()) {
    if (!state_->Create()) {
        throw std::bad_alloc();
    }
}

JpegEncoder::~JpegEncoder() {
    if (state_->created) {
        jpeg_destroy_compress(&state_->library);
    }
}

std::uint32_t JpegEncoder::Encode(const Picture& picture, int quality, std::uint8_t* output,
                                  std::size_t capacity, std::size_t& length, LineBuffers& lines,
                                  AlignedBuffer& band) {
    length = 0;
    if (capacity == 0) {
        return OV_STATUS_BUFFER_FULL; // the library writes its first byte without a look
    }
    lines.Prepare(picture.width);
    State& state = *state_;
    state.band = band.Reserve(static_cast<std::size_t>(picture.width) * 3 * kBandRows);
    state.picture = &picture;
    state.lines = &lines;
    state.output = output;
    state.capacity = capacity;
    state.quality = quality;
    state.errors.base.msg_code = 0;
    state.errors.status = OV_STATUS_NOT_SUPPORTED; // a side beyond what the format can tell
    if (!state.Run()) {
        return state.errors.status;
    }
    if (state.spilling && state.destination.free_in_buffer < sizeof(state.spill)) {
        return OV_STATUS_BUFFER_FULL;
    }
    length = state.spilling ? capacity : capacity - state.destination.free_in_buffer;
    return OV_STATUS_OK;
}

// --- decoder
// -----------------------------------------------------------------------------------------------------

struct JpegDecoder::State {
    jpeg_decompress_struct library;
    ErrorManager errors;
    jpeg_progress_mgr progress;
    bool created;

    const std::uint8_t* data;
    std::size_t length;
    std::uint8_t* destination;
    std::size_t capacity;

    bool Create() {
        SetUp(errors);
        library.err = &errors.base;
        if (setjmp(errors.jump) != 0) {
            return false;
        }
        jpeg_create_decompress(&library);
        created = true;
        progress.progress_monitor = CountScans;
        library.progress = &progress;
        return true;
    }

    static void CountScans(j_common_ptr library) {
        if (reinterpret_cast<j_decompress_ptr>(library)->input_scan_number > kMostScans) {
            GiveUp(library);
        }
    }

    [[noreturn]] void Refuse(std::uint32_t status) {
        errors.status = status;
        GiveUp(reinterpret_cast<j_common_ptr>(&library));
    }

    bool Run() {
        if (setjmp(errors.jump) != 0) {
            jpeg_abort_decompress(&library);
            return false;
        }
        errors.base.num_warnings = 0;
        jpeg_mem_src(&library, data, static_cast<unsigned long>(length));
        jpeg_read_header(&library, TRUE);
        if (library.num_components != 1 && library.num_components != 3) {
            Refuse(OV_STATUS_NOT_SUPPORTED);
        }
        const std::size_t pitch = static_cast<std::size_t>(library.image_width) * 3;
        if (pitch * library.image_height > capacity) {
            Refuse(OV_STATUS_BUFFER_FULL);
        }
        library.out_color_space = JCS_RGB;
        jpeg_start_decompress(&library);
        while (library.output_scanline < library.output_height) {
            JSAMPROW row = destination + library.output_scanline * pitch;
            jpeg_read_scanlines(&library, &row, 1);
            // Each scan of a hostile progressive picture costs time for the whole of it, and each is warned
            // of.
            if (errors.base.num_warnings != 0) {
                Refuse(OV_STATUS_INVALID_PARAMETER);
            }
        }
        jpeg_finish_decompress(&library);
        return errors.base.num_warnings == 0;
    }
};

JpegDecoder::JpegDecoder() : state_(std::make_unique<State>()) {
    if (!state_->Create()) {
        throw std::bad_alloc();
    }
}

JpegDecoder::~JpegDecoder() {
    if (state_->created) {
        jpeg_destroy_decompress(&state_->library);
    }
}

std::uint32_t JpegDecoder::Decode(const std::uint8_t* data, std::size_t length, std::uint8_t* destination,
                                  std::size_t capacity) {
    State& state = *state_;
    state.data = data;
    state.length = length;
    state.destination = destination;
    state.capacity = capacity;
    state.errors.base.msg_code = 0;
    state.errors.status = OV_STATUS_INVALID_PARAMETER;
    return state.Run() ? OV_STATUS_OK : state.errors.status;
}

} // namespace media
