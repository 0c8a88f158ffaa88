#include "Camera/QFrameBufManager.h"
#include "Common/CMutexLocker.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

QMutex g_instanceMutex; // guards the next
std::shared_ptr<QFrameBufManager> g_instance;

} // namespace

QFrameBufManager::QFrameBufManager()
    : m_pSample(std::make_unique<CZelSample>()), m_pMutex(std::make_unique<QMutex>()) {}

QFrameBufManager::~QFrameBufManager() = default;

std::shared_ptr<QFrameBufManager> QFrameBufManager::Instance(uint32_t count, uint32_t size) {
    const CMutexLocker lock(&g_instanceMutex);
    if (g_instance)
        return g_instance;
    try {
        std::shared_ptr<QFrameBufManager> made(new QFrameBufManager);
        if (made->m_pSample->InitList(count, size))
            g_instance = made;
        return g_instance;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void QFrameBufManager::ReleaseInstance() {
    const CMutexLocker lock(&g_instanceMutex);
    g_instance.reset();
}

void QFrameBufManager::AddOneFrameToList(const uint8_t* data, uint32_t length) {
    std::unique_ptr<BUF_NODE> node;
    {
        const CMutexLocker lock(m_pMutex.get());
        node.reset(m_pSample->GetSpareNode());
        if (!node) {
            node.reset(m_pSample->GetDataNode());
            if (node)
                ++m_counters.overwritten;
        }
        if (!node) {
            ++m_counters.unqueued;
            return;
        }
    }
    if (node->capacity < length && !CZelSample::ResizeNode(node.get(), length)) {
        const CMutexLocker lock(m_pMutex.get());
        ++m_counters.unqueued;
        m_pSample->AddNodeToSpareList(node.release());
        return;
    }
    if (length > 0)
        std::memcpy(node->data.get(), data, length);
    node->length = length;
    const CMutexLocker lock(m_pMutex.get());
    ++m_counters.queued;
    m_pSample->AddNodeToDataList(node.release());
}

// Null when there is none, or when the oldest is empty or too large.
std::unique_ptr<BUF_NODE> QFrameBufManager::OldestThatFits(uint32_t capacity) {
    const CMutexLocker lock(m_pMutex.get());
    std::unique_ptr<BUF_NODE> node(m_pSample->GetDataNode());
    if (!node)
        return nullptr;
    if (node->data && node->length > 0 && node->length <= capacity)
        return node;
    // deliberate: the node goes into neither list, so the pool is one smaller until the queue is released.
    ++m_counters.refused;
    m_lostNodes.push_back(std::move(node));
    return nullptr;
}

void QFrameBufManager::GiveBack(std::unique_ptr<BUF_NODE> node) {
    const CMutexLocker lock(m_pMutex.get());
    ++m_counters.taken;
    m_pSample->AddNodeToSpareList(node.release());
}

int QFrameBufManager::GetOneFrame(uint8_t* buffer, uint32_t capacity) {
    auto node = OldestThatFits(capacity);
    if (!node)
        return 0;
    // Only the rest is cleared apart: the front is overwritten at once.
    std::memcpy(buffer, node->data.get(), node->length);
    std::memset(buffer + node->length, 0, capacity - node->length);
    GiveBack(std::move(node));
    return 1;
}

int QFrameBufManager::TakeOneFrame(std::unique_ptr<uint8_t[]>& buffer, uint32_t capacity) {
    auto node = OldestThatFits(capacity);
    if (!node)
        return 0;
    if (node->capacity == capacity) {
        buffer.swap(node->data);
        std::memset(buffer.get() + node->length, 0, capacity - node->length);
    } else {
        std::memcpy(buffer.get(), node->data.get(), node->length);
        std::memset(buffer.get() + node->length, 0, capacity - node->length);
    }
    GiveBack(std::move(node));
    return 1;
}

void QFrameBufManager::ClearFrameBufList() {
    const CMutexLocker lock(m_pMutex.get());
    while (BUF_NODE* node = m_pSample->GetDataNode()) {
        ++m_counters.cleared;
        m_pSample->AddNodeToSpareList(node);
    }
}

_FRAME_QUEUE_COUNTERS_ QFrameBufManager::GetCounters() const {
    const CMutexLocker lock(m_pMutex.get());
    return m_counters;
}

uint32_t QFrameBufManager::GetWaitingCount() const {
    const CMutexLocker lock(m_pMutex.get());
    return m_pSample->GetDataListCount();
}
