// Two lists of buffers: those that hold data and the spare ones.
#pragma once

#include "Camera/CBufList.h"

#include <memory>

// No lock: QFrameBufManager has it. Nodes that are in neither list belong to whoever took them out.
class CZelSample {
public:
    CZelSample() = default;
    virtual ~CZelSample() = default;
    CZelSample(const CZelSample&) = delete;
    CZelSample& operator=(const CZelSample&) = delete;

    // Makes both lists anew, with `count` zeroed nodes of `size` bytes in the spare one. 0, with nothing
    // left, when memory ran out.
    int InitList(uint32_t count, uint32_t size);
    void ReleaseList();

    // Take the oldest node out; null when there is none.
    BUF_NODE* GetSpareNode() { return m_pSpareList ? m_pSpareList->RemoveHead() : nullptr; }
    BUF_NODE* GetDataNode() { return m_pDataList ? m_pDataList->RemoveHead() : nullptr; }

    BUF_NODE* HeadSpareNode() const { return m_pSpareList ? m_pSpareList->Head() : nullptr; }
    BUF_NODE* HeadDataNode() const { return m_pDataList ? m_pDataList->Head() : nullptr; }

    // False without lists; the node is not taken then.
    bool AddNodeToDataList(BUF_NODE* node);
    bool AddNodeToSpareList(BUF_NODE* node);

    // Replaces the node's data and capacity. False, with the node as it was, when memory ran out.
    static bool ResizeNode(BUF_NODE* node, uint32_t size);

    uint32_t GetDataListCount() const { return m_pDataList ? m_pDataList->GetCount() : 0; }

private:
    std::unique_ptr<CBufList> m_pDataList;
    std::unique_ptr<CBufList> m_pSpareList;
};
