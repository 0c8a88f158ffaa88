#include "Camera/CZelSample.h"

#include <new>

int CZelSample::InitList(uint32_t count, uint32_t size) {
    ReleaseList();
    m_pDataList.reset(new (std::nothrow) CBufList);
    m_pSpareList.reset(new (std::nothrow) CBufList);
    if (!m_pDataList || !m_pSpareList) {
        ReleaseList();
        return 0;
    }
    for (uint32_t i = 0; i < count; ++i) {
        std::unique_ptr<BUF_NODE> node(new (std::nothrow) BUF_NODE);
        if (!node || !ResizeNode(node.get(), size)) {
            ReleaseList();
            return 0;
        }
        m_pSpareList->AddTail(node.release());
    }
    return 1;
}

void CZelSample::ReleaseList() {
    m_pDataList.reset();
    m_pSpareList.reset();
}

bool CZelSample::AddNodeToDataList(BUF_NODE* node) {
    if (!m_pDataList)
        return false;
    m_pDataList->AddTail(node);
    return true;
}

bool CZelSample::AddNodeToSpareList(BUF_NODE* node) {
    if (!m_pSpareList)
        return false;
    m_pSpareList->AddTail(node);
    return true;
}

bool CZelSample::ResizeNode(BUF_NODE* node, uint32_t size) {
    std::unique_ptr<uint8_t[]> data(new (std::nothrow) uint8_t[size]());
    if (!data)
        return false;
    node->data = std::move(data);
    node->capacity = size;
    return true;
}
