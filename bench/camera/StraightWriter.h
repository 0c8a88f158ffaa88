// Frames written straight to a file, without a camera: what the disk can take.
#pragma once

#include <cstddef>
#include <string>

struct WriteResult {
    double megabytesPerSecond = 0; // with everything on the disk at the end
    double longestMs = 0;          // of one frame: of the write, or of the producer's wait for its turn
    double cpuMsPerFrame = 0;      // of the whole process
};

enum class WriteMethod {
    Plain,       // write(), and the kernel as it likes
    WriteBehind, // write-back begun at once, what is on the disk dropped, room reserved
    Direct       // O_DIRECT, room reserved
};

// From one buffer that never changes: the bound.
WriteResult WriteOneBuffer(const std::string& path, WriteMethod method, size_t frame, int frames);

// The same with the work that a recording has beside it: another thread copies each frame twice, as the
// library does into the grab buffer and the grab thread into the queue, and hands it over in one of `depth`
// buffers without a copy. It waits for a free one, so no frame is lost.
WriteResult WriteCopiedFrames(const std::string& path, WriteMethod method, size_t frame, int frames,
                              int depth);

// Processor time of this process so far.
double ProcessCpuSeconds();

// Removes a file and waits until the file system has settled, so that it costs the next one nothing.
void RemoveAndSettle(const std::string& path);
