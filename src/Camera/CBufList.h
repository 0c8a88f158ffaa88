// The frame queue's list: nodes that own one buffer each.
#pragma once

#include <cstdint>
#include <memory>

struct BUF_NODE {
    std::unique_ptr<uint8_t[]> data;
    uint32_t capacity = 0; // bytes of data
    uint32_t length = 0;   // bytes in use
    uint32_t ordinal = 0;  // only for CBufList::GetDataNode
    BUF_NODE* next = nullptr;
    BUF_NODE* prev = nullptr;
};

// A doubly linked list that is consistent through its count alone: the links at its two ends, and the tail of
// an empty list, may be left over from earlier and mean nothing. Owns its nodes only in RemoveAll and at its
// end. No lock: QFrameBufManager has it.
class CBufList {
public:
    CBufList() = default;
    ~CBufList() { RemoveAll(); }
    CBufList(const CBufList&) = delete;
    CBufList& operator=(const CBufList&) = delete;

    bool IsEmpty() const { return m_nCount == 0; }
    uint32_t GetCount() const { return m_nCount; }

    // The node stays in the list; null when there is none.
    BUF_NODE* Head() const { return m_nCount ? m_pHead : nullptr; }

    // The caller owns what they return; null when there is none.
    BUF_NODE* RemoveHead();
    BUF_NODE* RemoveTail();

    // The list takes the node over; null is ignored.
    void AddTail(BUF_NODE* node);
    void AddHead(BUF_NODE* node);

    // Deletes all nodes with their data.
    void RemoveAll();

    // Copies ordinal, length, capacity and data of the first node whose ordinal is above `index` into `node`,
    // whose buffer is replaced. False when there is none or memory ran out.
    bool GetDataNode(uint32_t index, BUF_NODE& node) const;

private:
    BUF_NODE* m_pHead = nullptr;
    BUF_NODE* m_pTail = nullptr;
    uint32_t m_nCount = 0;
};
