// Many threads on one map, with a port that fails, waits and dawdles under them.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <random>
#include <thread>

#include "platform/genapi/RuleMap.h"
#include "support/GenICamXmlGenerator.h"

namespace {

using namespace rules;
using GenICam_3_0::GenericException;
using support::FeatureKind;
using support::GeneratedCamera;
using support::GeneratedFeature;

int Rounds(int usual) {
    return std::getenv("KOLT_SOAK") != nullptr ? usual * 100 : usual;
}

struct Connected {
    explicit Connected(const GeneratedCamera& camera) : port(camera.memory), map("Device") {
        port.Record(false);
        map._LoadXMLFromString(camera.xml.c_str());
        map._Connect(&port, "Device");
    }
    support::MemoryPort port;
    CNodeMapRef map;
};

// One random operation on one feature, as a program would do it.
void Touch(INode* node, FeatureKind kind, std::uint32_t what) {
    const EAccessMode mode = node->GetAccessMode();
    const CValuePtr value(node);
    if (what % 8 == 0) {
        node->InvalidateNode();
    }
    if (IsReadable(mode) && kind != FeatureKind::Command) {
        const std::string text = value->ToString((what & 16) != 0, (what & 32) != 0).c_str();
        if (IsWritable(mode) && what % 4 == 1) {
            value->FromString(text.c_str());
        }
    }
    if (kind == FeatureKind::Integer) {
        CIntegerPtr(node)->GetMax();
    } else if (kind == FeatureKind::Enumeration) {
        StringList_t symbols;
        CEnumerationPtr(node)->GetSymbolics(symbols);
    } else if (kind == FeatureKind::Command && what % 16 == 3) {
        CCommandPtr(node)->Execute();
        CCommandPtr(node)->IsDone();
    }
}

TEST(NodeMapThreads, AnyNumberMayUseOneMap) {
    const GeneratedCamera camera = support::GenerateGenICamXml({300, 3, true});
    Connected connected(camera);
    std::atomic<int> refusals{0};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 6; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(t);
            for (int i = 0; i < Rounds(3000); ++i) {
                const GeneratedFeature& feature = camera.features[random() % camera.features.size()];
                try {
                    Touch(connected.map._GetNode(feature.name.c_str()), feature.kind,
                          static_cast<std::uint32_t>(random()));
                } catch (const GenericException&) {
                    ++refusals; // another thread may have changed a selector or a range between
                }
                if (i % 500 == 0) {
                    connected.map._InvalidateNodes();
                }
                if (i % 100 == 0) {
                    connected.map._Poll(50);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Nothing was changed but back to what it was, so all is as it had been.
    connected.map._InvalidateNodes();
    for (const GeneratedFeature& feature : camera.features) {
        if (feature.kind == FeatureKind::Integer && feature.implemented && feature.available) {
            EXPECT_NO_THROW(CIntegerPtr(connected.map._GetNode(feature.name.c_str()))->GetValue())
                << feature.name;
        }
    }
}

TEST(NodeMapThreads, AFailingPortLeavesTheMapUsable) {
    const GeneratedCamera camera = support::GenerateGenICamXml({200, 4, true});
    Connected connected(camera);
    std::atomic<std::uint32_t> accesses{0};
    connected.port.OnAccess([&](bool, std::int64_t, std::int64_t) {
        if (++accesses % 5 == 0) {
            throw TIMEOUT_EXCEPTION("no answer in time");
        }
    });
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(100 + t);
            for (int i = 0; i < Rounds(2000); ++i) {
                const GeneratedFeature& feature = camera.features[random() % camera.features.size()];
                try {
                    Touch(connected.map._GetNode(feature.name.c_str()), feature.kind,
                          static_cast<std::uint32_t>(random()) | 32);
                } catch (const GenericException&) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(failures, 0);
    connected.port.OnAccess(nullptr);
    connected.map._InvalidateNodes();
    for (const GeneratedFeature& feature : camera.features) {
        if (feature.kind == FeatureKind::Integer && feature.implemented && feature.available) {
            EXPECT_NO_THROW(CIntegerPtr(connected.map._GetNode(feature.name.c_str()))->GetValue())
                << feature.name;
        }
    }
}

TEST(NodeMapThreads, WhileAPortBlocksOthersWaitAndThenGoOn) {
    RuleMap rule(Reg("R", 0) + Reg("S", 4) + Node("Integer", "K", "<Value>3</Value>"));
    rule.Put(0, 7);
    rule.Put(4, 8);
    rule.port.Block();
    auto blocked = std::async(std::launch::async, [&] { return rule.Int("R")->GetValue(); });
    ASSERT_TRUE(rule.port.WaitForBlocked());
    auto other = std::async(std::launch::async, [&] { return rule.Int("S")->GetValue(); });
    rule.port.Unblock();
    EXPECT_EQ(blocked.get(), 7);
    EXPECT_EQ(other.get(), 8);
    EXPECT_EQ(rule.Int("K")->GetValue(), 3);
}

TEST(NodeMapThreads, WhatNeedsNoLockAnswersWhileAPortBlocks) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<ToolTip>tip</ToolTip><pValue>R</pValue>"));
    rule.port.Block();
    auto blocked = std::async(std::launch::async, [&] { return rule.Int("R")->GetValue(); });
    ASSERT_TRUE(rule.port.WaitForBlocked());
    auto names = std::async(std::launch::async,
                            [&] { return std::string(rule.map._GetNode("X")->GetName().c_str()); });
    EXPECT_EQ(names.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    rule.port.Unblock();
    EXPECT_EQ(names.get(), "X");
    blocked.get();
}

TEST(NodeMapThreads, TheLockIsFreeBetweenOperations) {
    // A reader that never pauses must not keep a writer out: each operation gives the lock back.
    RuleMap rule(Reg("R", 0) + Reg("S", 4));
    std::atomic<bool> stop{false};
    std::atomic<std::uint64_t> reads{0};
    std::thread reader([&] {
        while (!stop) {
            rule.Int("R")->GetValue(false, true);
            ++reads;
        }
    });
    for (int i = 1; i <= 50; ++i) {
        rule.Int("S")->SetValue(i);
        const std::uint64_t seen = reads;
        while (reads == seen) {
            std::this_thread::yield();
        }
    }
    stop = true;
    reader.join();
    EXPECT_EQ(rule.Memory(4), 50U);
}

TEST(NodeMapThreads, CallersMayHoldTheLockOverSeveralOperations) {
    RuleMap rule(Reg("R", 0));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                const AutoLock lock(rule.map._Ptr->GetLock());
                rule.Int("R")->SetValue(rule.Int("R")->GetValue() + 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(rule.Memory(0), 2000U);
}

TEST(NodeMapThreads, CallbacksComeAndGoWhileOthersWrite) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    std::atomic<int> calls{0};
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (std::int64_t i = 0; !stop; ++i) {
            rule.Int("X")->SetValue(i & 0xFF);
        }
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (calls < 200 && std::chrono::steady_clock::now() < deadline) {
        const CallbackHandleType handle = Register(
            rule.Get("X"), [&](INode*) { ++calls; }, cbPostOutsideLock);
        const int seen = calls;
        while (calls == seen && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        Deregister(handle);
    }
    stop = true;
    writer.join();
    EXPECT_GE(calls, 200);
}

} // namespace
