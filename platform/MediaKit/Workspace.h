#ifndef MEDIA_WORKSPACE_H
#define MEDIA_WORKSPACE_H

#include "MediaKit/AlignedBuffer.h"
#include "MediaKit/LineBuffers.h"
#include "MediaKit/WorkerPool.h"

#include <memory>
#include <mutex>
#include <vector>

namespace media {

class JpegDecoder;
class JpegEncoder;

/* What one call works with: belongs to one call at a time, and is kept for the next. */
struct Workspace {
    explicit Workspace(WorkerPool& sharedPool);
    ~Workspace();

    WorkerPool& pool;
    std::vector<LineBuffers> lines;       // one per worker of the pool
    AlignedBuffer sourceCopy;             // the source of a conversion whose buffers overlap
    AlignedBuffer band;                   // rows on their way into an encoder
    std::unique_ptr<JpegEncoder> encoder; // made when first wanted, like the decoder
    std::unique_ptr<JpegDecoder> decoder;
};

/*
 * What stands behind a handle: the worker threads and the workspaces. Any thread may enter. Calls that run at
 * once (a picture on display while another is saved) each get a workspace of their own, so none waits for
 * another.
 */
class MediaHandle {
public:
    MediaHandle() : pool_(WorkerPool::DefaultHelpers()) {}

    /* A workspace for the length of a call. */
    class Lease {
    public:
        /* Throws std::bad_alloc when a further workspace is wanted and can't be had. */
        explicit Lease(MediaHandle& handle) : handle_(handle), workspace_(handle.Take()) {}
        ~Lease() { handle_.Return(std::move(workspace_)); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        Workspace& operator*() const { return *workspace_; }
        Workspace* operator->() const { return workspace_.get(); }

    private:
        MediaHandle& handle_;
        std::unique_ptr<Workspace> workspace_;
    };

private:
    std::unique_ptr<Workspace> Take();
    void Return(std::unique_ptr<Workspace> workspace) noexcept;

    WorkerPool pool_;
    std::mutex mutex_; // guards idle_ and made_; leaf
    std::vector<std::unique_ptr<Workspace>> idle_;
    std::size_t made_ = 0; // idle_ has room for that many, so that handing one back can't fail
};

} // namespace media

#endif
