#include "Camera/CBufList.h"
#include "Camera/CZelSample.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

BUF_NODE* NewNode(uint32_t ordinal, const char* text = "") {
    auto* node = new BUF_NODE;
    node->ordinal = ordinal;
    node->capacity = 16;
    node->data = std::make_unique<uint8_t[]>(16);
    node->length = static_cast<uint32_t>(std::strlen(text));
    std::memcpy(node->data.get(), text, node->length);
    return node;
}

TEST(BufList, AnEmptyListGivesNothing) {
    CBufList list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.Head(), nullptr);
    EXPECT_EQ(list.RemoveHead(), nullptr);
    EXPECT_EQ(list.RemoveTail(), nullptr);
    list.AddTail(nullptr);
    list.AddHead(nullptr);
    EXPECT_EQ(list.GetCount(), 0u);
}

TEST(BufList, KeepsTheOrder) {
    CBufList list;
    list.AddTail(NewNode(2));
    list.AddTail(NewNode(3));
    list.AddHead(NewNode(1));
    EXPECT_EQ(list.GetCount(), 3u);
    EXPECT_EQ(list.Head()->ordinal, 1u);
    for (const uint32_t expected : {1u, 2u, 3u}) {
        const std::unique_ptr<BUF_NODE> node(list.RemoveHead());
        ASSERT_TRUE(node);
        EXPECT_EQ(node->ordinal, expected);
    }
    EXPECT_TRUE(list.IsEmpty());
}

TEST(BufList, TailComesOffInReverse) {
    CBufList list;
    for (uint32_t i = 1; i <= 3; ++i)
        list.AddTail(NewNode(i));
    for (const uint32_t expected : {3u, 2u, 1u}) {
        const std::unique_ptr<BUF_NODE> node(list.RemoveTail());
        EXPECT_EQ(node->ordinal, expected);
    }
    EXPECT_EQ(list.RemoveTail(), nullptr);
}

// Stale links stay on nodes that were taken out; only the count tells what the list holds.
TEST(BufList, NodesWithLeftOverLinksMayReturn) {
    CBufList first;
    CBufList second;
    for (uint32_t i = 1; i <= 3; ++i)
        first.AddTail(NewNode(i));
    for (int round = 0; round < 5; ++round) {
        while (BUF_NODE* node = first.RemoveHead())
            second.AddTail(node);
        while (BUF_NODE* node = second.RemoveHead())
            first.AddTail(node);
    }
    EXPECT_EQ(first.GetCount(), 3u);
    for (const uint32_t expected : {1u, 2u, 3u}) {
        const std::unique_ptr<BUF_NODE> node(first.RemoveHead());
        EXPECT_EQ(node->ordinal, expected);
    }
}

TEST(BufList, OneNodeGoesInAndOutAtBothEnds) {
    CBufList list;
    list.AddHead(NewNode(7));
    BUF_NODE* node = list.RemoveTail();
    list.AddTail(node);
    EXPECT_EQ(list.Head()->ordinal, 7u);
    EXPECT_EQ(list.RemoveHead(), node);
    delete node;
}

TEST(BufList, GetDataNodeFindsTheFirstAboveTheIndex) {
    CBufList list;
    list.AddTail(NewNode(1, "one"));
    list.AddTail(NewNode(4, "four"));
    list.AddTail(NewNode(5, "five"));
    BUF_NODE copy;
    ASSERT_TRUE(list.GetDataNode(1, copy));
    EXPECT_EQ(copy.ordinal, 4u);
    EXPECT_EQ(copy.length, 4u);
    EXPECT_EQ(copy.capacity, 16u);
    EXPECT_EQ(std::memcmp(copy.data.get(), "four", 4), 0);
    EXPECT_FALSE(list.GetDataNode(5, copy)) << "none is above 5";
    EXPECT_EQ(copy.ordinal, 4u) << "left as it was";
    EXPECT_EQ(list.GetCount(), 3u);
}

TEST(BufList, RemoveAllEmpties) {
    CBufList list;
    for (uint32_t i = 0; i < 5; ++i)
        list.AddTail(NewNode(i));
    list.RemoveAll();
    EXPECT_TRUE(list.IsEmpty());
    list.AddTail(NewNode(9));
    EXPECT_EQ(list.Head()->ordinal, 9u);
}

TEST(Sample, StartsWithZeroedSpareNodes) {
    CZelSample sample;
    EXPECT_EQ(sample.GetSpareNode(), nullptr) << "before InitList";
    EXPECT_EQ(sample.HeadDataNode(), nullptr);
    ASSERT_EQ(sample.InitList(3, 8), 1);
    EXPECT_EQ(sample.GetDataListCount(), 0u);
    for (int i = 0; i < 3; ++i) {
        const std::unique_ptr<BUF_NODE> node(sample.GetSpareNode());
        ASSERT_TRUE(node);
        EXPECT_EQ(node->capacity, 8u);
        EXPECT_EQ(node->length, 0u);
        for (int b = 0; b < 8; ++b)
            EXPECT_EQ(node->data[static_cast<size_t>(b)], 0);
    }
    EXPECT_EQ(sample.GetSpareNode(), nullptr);
}

TEST(Sample, DataNodesComeOutOldestFirst) {
    CZelSample sample;
    sample.InitList(0, 0);
    EXPECT_TRUE(sample.AddNodeToDataList(NewNode(1)));
    EXPECT_TRUE(sample.AddNodeToDataList(NewNode(2)));
    EXPECT_EQ(sample.GetDataListCount(), 2u);
    EXPECT_EQ(sample.HeadDataNode()->ordinal, 1u);
    const std::unique_ptr<BUF_NODE> node(sample.GetDataNode());
    EXPECT_EQ(node->ordinal, 1u);
    EXPECT_TRUE(sample.AddNodeToSpareList(NewNode(3)));
    EXPECT_EQ(sample.HeadSpareNode()->ordinal, 3u);
}

TEST(Sample, WithoutListsNothingIsTaken) {
    CZelSample sample;
    const std::unique_ptr<BUF_NODE> node(NewNode(1));
    EXPECT_FALSE(sample.AddNodeToDataList(node.get()));
    EXPECT_FALSE(sample.AddNodeToSpareList(node.get()));
    EXPECT_EQ(sample.GetDataListCount(), 0u);
}

TEST(Sample, ResizeReplacesTheData) {
    const std::unique_ptr<BUF_NODE> node(NewNode(1, "abc"));
    ASSERT_TRUE(CZelSample::ResizeNode(node.get(), 64));
    EXPECT_EQ(node->capacity, 64u);
    EXPECT_EQ(node->data[0], 0);
}

TEST(Sample, InitListAgainReleasesTheOldLists) {
    CZelSample sample;
    ASSERT_EQ(sample.InitList(2, 4), 1);
    sample.AddNodeToDataList(sample.GetSpareNode());
    ASSERT_EQ(sample.InitList(1, 4), 1);
    EXPECT_EQ(sample.GetDataListCount(), 0u);
    const std::unique_ptr<BUF_NODE> only(sample.GetSpareNode());
    EXPECT_TRUE(only);
    EXPECT_EQ(sample.GetSpareNode(), nullptr);
}

} // namespace
