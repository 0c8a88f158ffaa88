#include "StraightWriter.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <new>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kPage = 4096;

double Milliseconds(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

size_t RoundUp(size_t length) {
    return (length + kPage - 1) / kPage * kPage;
}

struct FreeDelete {
    void operator()(uint8_t* p) const { std::free(p); }
};
using Aligned = std::unique_ptr<uint8_t, FreeDelete>;

Aligned NewFrame(size_t frame) {
    void* memory = nullptr;
    if (posix_memalign(&memory, kPage, RoundUp(frame)) != 0)
        throw std::bad_alloc();
    std::memset(memory, 0x5A, RoundUp(frame));
    return Aligned(static_cast<uint8_t*>(memory));
}

class File {
public:
    File(std::string path, WriteMethod method, size_t frame, int frames)
        : m_path(std::move(path))
        , m_method(method)
        , m_part(method == WriteMethod::Direct ? RoundUp(frame) : frame) {
        const int flags = O_CREAT | O_TRUNC | O_WRONLY | (method == WriteMethod::Direct ? O_DIRECT : 0);
        m_file = open(m_path.c_str(), flags, 0644);
        if (m_file < 0) {
            std::perror(m_path.c_str());
            std::exit(1);
        }
        if (method != WriteMethod::Plain)
            (void)fallocate(m_file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(m_part) * frames);
    }
    ~File() {
        close(m_file);
        RemoveAndSettle(m_path);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void Write(const uint8_t* data) {
        if (write(m_file, data, m_part) != static_cast<ssize_t>(m_part)) {
            std::perror("write");
            std::exit(1);
        }
        if (m_method == WriteMethod::WriteBehind)
            KeepWriting();
        m_at += static_cast<off_t>(m_part);
    }
    void Sync() { fdatasync(m_file); }

private:
    void KeepWriting() {
        (void)sync_file_range(m_file, m_at, static_cast<off_t>(m_part), SYNC_FILE_RANGE_WRITE);
        const off_t settled = m_at - (off_t{32} << 20);
        if (settled <= m_dropped)
            return;
        (void)sync_file_range(m_file, m_dropped, settled - m_dropped,
                              SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                  SYNC_FILE_RANGE_WAIT_AFTER);
        (void)posix_fadvise(m_file, m_dropped, settled - m_dropped, POSIX_FADV_DONTNEED);
        m_dropped = settled;
    }

    const std::string m_path;
    const WriteMethod m_method;
    const size_t m_part;
    int m_file = -1;
    off_t m_at = 0;
    off_t m_dropped = 0;
};

// Buffers on their way between two threads.
class Buffers {
public:
    void Put(uint8_t* buffer) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_buffers.push_back(buffer);
        }
        m_changed.notify_one();
    }
    uint8_t* Take() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_buffers.empty(); });
        uint8_t* buffer = m_buffers.front();
        m_buffers.pop_front();
        return buffer;
    }

private:
    std::mutex m_mutex; // guards m_buffers
    std::condition_variable m_changed;
    std::deque<uint8_t*> m_buffers;
};

WriteResult Finished(Clock::time_point start, double cpu, double longestMs, size_t frame, int frames) {
    WriteResult result;
    result.longestMs = longestMs;
    result.megabytesPerSecond =
        static_cast<double>(frame) * frames / 1e3 / Milliseconds(Clock::now() - start);
    result.cpuMsPerFrame = (ProcessCpuSeconds() - cpu) * 1e3 / frames;
    return result;
}

} // namespace

double ProcessCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

void RemoveAndSettle(const std::string& path) {
    unlink(path.c_str());
    const int folder = open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY);
    if (folder < 0)
        return;
    (void)syncfs(folder);
    close(folder);
}

WriteResult WriteOneBuffer(const std::string& path, WriteMethod method, size_t frame, int frames) {
    const Aligned buffer = NewFrame(frame);
    const double cpu = ProcessCpuSeconds();
    const auto start = Clock::now();
    File file(path, method, frame, frames);
    double longest = 0;
    for (int i = 0; i < frames; ++i) {
        const auto before = Clock::now();
        file.Write(buffer.get());
        longest = std::max(longest, Milliseconds(Clock::now() - before));
    }
    file.Sync();
    return Finished(start, cpu, longest, frame, frames);
}

WriteResult WriteCopiedFrames(const std::string& path, WriteMethod method, size_t frame, int frames,
                              int depth) {
    const Aligned source = NewFrame(frame);
    const Aligned grabbed = NewFrame(frame);
    std::vector<Aligned> pool;
    Buffers spare, full;
    for (int i = 0; i < depth + 1; ++i) { // one is at the writer's
        pool.push_back(NewFrame(frame));
        spare.Put(pool.back().get());
    }
    const double cpu = ProcessCpuSeconds();
    const auto start = Clock::now();
    File file(path, method, frame, frames);
    double longest = 0;
    std::thread producer([&] {
        for (int i = 0; i < frames; ++i) {
            std::memcpy(grabbed.get(), source.get(), frame);
            const auto before = Clock::now();
            uint8_t* buffer = spare.Take();
            longest = std::max(longest, Milliseconds(Clock::now() - before));
            std::memcpy(buffer, grabbed.get(), frame);
            full.Put(buffer);
        }
    });
    for (int i = 0; i < frames; ++i) {
        uint8_t* buffer = full.Take();
        file.Write(buffer);
        spare.Put(buffer);
    }
    producer.join();
    file.Sync();
    return Finished(start, cpu, longest, frame, frames);
}
