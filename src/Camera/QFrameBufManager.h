// The queue between the grab thread and the save thread.
#pragma once

#include "Camera/CZelSample.h"

#include <QMutex>
#include <cstdint>
#include <memory>
#include <vector>

// What became of the frames that were put into a queue; for tests and for whoever looks for lost frames. At
// any moment without a call in progress: queued = taken + overwritten + refused + cleared + still waiting.
struct _FRAME_QUEUE_COUNTERS_ {
    uint64_t queued = 0;      // frames that came in
    uint64_t taken = 0;       // frames handed to the saver
    uint64_t overwritten = 0; // oldest frames that gave way to newer ones
    uint64_t refused = 0;     // frames too large for the saver's buffer
    uint64_t cleared = 0;     // frames thrown away when the stream stopped
    uint64_t unqueued = 0;    // frames that found neither a node nor memory
};

// One queue serves the whole process: a second camera that starts grabbing joins the queue of the first, with
// its count and node size. Users hold it by shared pointer, so that the stop of one camera, which takes the
// queue out of the process, leaves the other one with memory that is still there.
//
// Threads: the grab thread adds, the save thread takes; any thread may read the counters. The mutex is the
// innermost lock of a camera and isn't held while a frame is copied.
class QFrameBufManager {
public:
    // Made on first use with these arguments, which are ignored afterwards. Null when memory ran out.
    static std::shared_ptr<QFrameBufManager> Instance(uint32_t count, uint32_t size);
    static void ReleaseInstance();

    virtual ~QFrameBufManager();
    QFrameBufManager(const QFrameBufManager&) = delete;
    QFrameBufManager& operator=(const QFrameBufManager&) = delete;

    // Copies a frame in. When no spare node is left the oldest queued frame is overwritten.
    void AddOneFrameToList(const uint8_t* data, uint32_t length);

    // Copies the oldest frame out into a buffer that is cleared first. 1, or 0 when there is none or when it
    // is empty or larger than `capacity`.
    int GetOneFrame(uint8_t* buffer, uint32_t capacity);

    // The same without a copy where the frame fills the buffer: `buffer` and the node change their memory.
    int TakeOneFrame(std::unique_ptr<uint8_t[]>& buffer, uint32_t capacity);

    void ClearFrameBufList();

    _FRAME_QUEUE_COUNTERS_ GetCounters() const;
    uint32_t GetWaitingCount() const;

private:
    QFrameBufManager();
    std::unique_ptr<BUF_NODE> OldestThatFits(uint32_t capacity);
    void GiveBack(std::unique_ptr<BUF_NODE> node);

    std::unique_ptr<CZelSample> m_pSample;              // guarded by m_pMutex
    std::vector<std::unique_ptr<BUF_NODE>> m_lostNodes; // guarded by m_pMutex
    _FRAME_QUEUE_COUNTERS_ m_counters;                  // guarded by m_pMutex
    const std::unique_ptr<QMutex> m_pMutex;
};
