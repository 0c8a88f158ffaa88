/*
 * Handles as numbers that are never used twice, so that a call with a handle that is null, foreign or already
 * destroyed finds nothing instead of freed memory. Any thread.
 */
#ifndef KOLT_RENDER_HANDLE_REGISTRY_H
#define KOLT_RENDER_HANDLE_REGISTRY_H

#include "Renderer.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace kolt::render {

class HandleRegistry {
    struct Entry {
        Renderer renderer;
        int calls = 0; /* that use it now; guarded by the registry's mutex */
    };

public:
    static HandleRegistry& instance();

    /* A renderer in use: it isn't destroyed before this is. */
    class Use {
    public:
        Use(HandleRegistry& registry, const void* handle);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        explicit operator bool() const { return m_entry != nullptr; }
        Renderer* operator->() const { return &m_entry->renderer; }

    private:
        HandleRegistry& m_registry;
        std::shared_ptr<Entry> m_entry;
    };

    void* create();
    /*
     * Ends the drawing and waits until no other call uses the handle any more. Inside a callback it doesn't
     * wait, because the call that it would wait for may be the caller's own. False for what isn't a handle.
     */
    bool destroy(const void* handle);
    size_t count() const;

private:
    mutable std::mutex m_mutex; /* guards all below and the entries' counts; never held across a call */
    std::condition_variable m_idle;
    std::map<uintptr_t, std::shared_ptr<Entry>> m_entries;
    uintptr_t m_last = 0;
};

} // namespace kolt::render

#endif
