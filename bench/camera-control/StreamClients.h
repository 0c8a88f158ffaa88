// The clients that bench_stream compares. Each takes frames of one camera for a while, in a process of its
// own, and tells what that brought and cost.
#ifndef KOLT_BENCH_STREAM_CLIENTS_H
#define KOLT_BENCH_STREAM_CLIENTS_H

#include <cstdint>
#include <string>

namespace kolt::bench {

struct StreamTask {
    std::string address;          // of the camera
    std::uint32_t packetSize = 0; // bytes, IP header included
    bool packetSocket = true;     // wanted; whether it is used depends on the capabilities
    unsigned buffers = 8;
    double seconds = 1.5;
};

// Of the measured time, which begins a while after the first frame.
struct StreamResult {
    std::uint64_t frames = 0; // complete ones
    std::uint64_t lost = 0;   // by the gaps in the block ids, incomplete ones included
    double seconds = 0;
    double bytes = 0;      // of complete frames
    double cpuSeconds = 0; // of the whole process, user and system
    bool packetSocket = false;
};

// libOvCameraControl through its exported calls: one copy of each frame into the caller's buffer.
StreamResult runLibrary(const StreamTask& task);

// Aravis as its documentation says: pop a buffer, push it back. With copy, the frame is first copied to a
// buffer of the client, as whoever keeps frames longer must.
StreamResult runAravis(const StreamTask& task, bool copy);

} // namespace kolt::bench

#endif
