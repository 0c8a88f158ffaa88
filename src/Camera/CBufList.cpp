#include "Camera/CBufList.h"

#include <cstring>
#include <new>

BUF_NODE* CBufList::RemoveHead() {
    if (m_nCount == 0)
        return nullptr;
    BUF_NODE* node = m_pHead;
    m_pHead = node->next;
    --m_nCount;
    return node;
}

BUF_NODE* CBufList::RemoveTail() {
    if (m_nCount == 0)
        return nullptr;
    BUF_NODE* node = m_pTail;
    m_pTail = node->prev;
    --m_nCount;
    return node;
}

void CBufList::AddTail(BUF_NODE* node) {
    if (!node)
        return;
    if (m_nCount == 0) {
        m_pHead = node;
    } else {
        m_pTail->next = node;
        node->prev = m_pTail;
    }
    m_pTail = node;
    ++m_nCount;
}

void CBufList::AddHead(BUF_NODE* node) {
    if (!node)
        return;
    if (m_nCount == 0) {
        m_pTail = node;
    } else {
        m_pHead->prev = node;
        node->next = m_pHead;
    }
    m_pHead = node;
    ++m_nCount;
}

void CBufList::RemoveAll() {
    while (BUF_NODE* node = RemoveHead())
        delete node;
}

bool CBufList::GetDataNode(uint32_t index, BUF_NODE& node) const {
    const BUF_NODE* found = m_pHead;
    for (uint32_t i = 0; i < m_nCount; ++i, found = found->next) {
        if (found->ordinal <= index)
            continue;
        std::unique_ptr<uint8_t[]> copy(new (std::nothrow) uint8_t[found->capacity]);
        if (!copy)
            return false;
        if (found->length > 0)
            std::memcpy(copy.get(), found->data.get(), found->length);
        node.data = std::move(copy);
        node.capacity = found->capacity;
        node.length = found->length;
        node.ordinal = found->ordinal;
        return true;
    }
    return false;
}
