#include "find/RecordStore.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <mutex>

namespace kolt::cc {

namespace {

using Store = std::array<_OV_CC_DEVICE_INFO_, OV_MAX_DEVICES>;

struct Stores {
    std::mutex mutex; // guards all and idle
    std::vector<std::unique_ptr<Store>> all;
    std::vector<Store*> idle; // the longest waiting first; has room for all
};

// Deliberate: never destroyed, because threads may still end (and hand their store back) while the process
// exits.
Stores& stores() {
    static Stores& instance = *new Stores;
    return instance;
}

// The calling thread's hold on a store.
class Lease {
public:
    Lease() {
        Stores& pool = stores();
        const std::lock_guard<std::mutex> lock(pool.mutex);
        if (pool.idle.empty()) {
            pool.idle.reserve(pool.all.size() + 1);
            pool.all.push_back(std::make_unique<Store>());
            store_ = pool.all.back().get();
        } else {
            store_ = pool.idle.front();
            pool.idle.erase(pool.idle.begin());
        }
    }
    ~Lease() {
        Stores& pool = stores();
        const std::lock_guard<std::mutex> lock(pool.mutex);
        pool.idle.push_back(store_);
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    Store& store() { return *store_; }

private:
    Store* store_;
};

} // namespace

void publishRecords(const std::vector<_OV_CC_DEVICE_INFO_>& records, _OV_CC_DEVICE_INFO_LIST_& list) {
    static thread_local Lease lease;
    Store& store = lease.store();
    const std::size_t count = std::min<std::size_t>(records.size(), OV_MAX_DEVICES);
    std::copy_n(records.begin(), count, store.begin());
    std::memset(&list, 0, sizeof list);
    list.deviceCount = static_cast<std::uint32_t>(count);
    for (std::size_t i = 0; i < count; ++i)
        list.devices[i] = &store[i];
}

std::size_t recordStoreCount() {
    Stores& pool = stores();
    const std::lock_guard<std::mutex> lock(pool.mutex);
    return pool.all.size();
}

} // namespace kolt::cc
