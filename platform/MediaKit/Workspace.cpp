#include "MediaKit/Workspace.h"

#include "MediaKit/Jpeg.h"

namespace media {

Workspace::Workspace(WorkerPool& sharedPool) : pool(sharedPool), lines(sharedPool.Workers()) {}

Workspace::~Workspace() = default;

std::unique_ptr<Workspace> MediaHandle::Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!idle_.empty()) {
        std::unique_ptr<Workspace> workspace = std::move(idle_.back());
        idle_.pop_back();
        return workspace;
    }
    idle_.reserve(made_ + 1);
    auto workspace = std::make_unique<Workspace>(pool_);
    ++made_;
    return workspace;
}

void MediaHandle::Return(std::unique_ptr<Workspace> workspace) noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    idle_.push_back(std::move(workspace));
}

} // namespace media
