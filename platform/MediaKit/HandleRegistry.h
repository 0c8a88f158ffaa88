#ifndef MEDIA_HANDLE_REGISTRY_H
#define MEDIA_HANDLE_REGISTRY_H

#include "MediaKit/Workspace.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace media {

/*
 * Who stands behind which handle. A handle is a number that looks like no address and is never given out
 * twice, so null, garbage and destroyed handles are told apart from living ones without touching memory. Any
 * thread may enter. A call holds its MediaHandle while it runs: destroying a handle in the middle of a call
 * takes effect when the call ends.
 */
class HandleRegistry {
public:
    static HandleRegistry& Instance();

    /* Throws std::bad_alloc. */
    void* Create();
    /* False for a handle that isn't alive. */
    bool Destroy(void* handle);
    /* Null for a handle that isn't alive. */
    std::shared_ptr<MediaHandle> Find(void* handle);

private:
    std::mutex mutex_; // guards all below; leaf
    std::map<std::uintptr_t, std::shared_ptr<MediaHandle>> living_;
    std::uintptr_t next_ = 0;
};

} // namespace media

#endif
