// The I/O queue, the reaper, the dispatcher of messages and the judgement of life, with scripted work.
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>

#include "Camera/Boundary/OvCameraControl.h"
#include "ScriptedCamera.h"
#include "Waiting.h"
#include "device/ExceptionDispatcher.h"
#include "device/IoQueue.h"
#include "device/Liveness.h"
#include "device/Reaper.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::eventually;
using test::millisecondsSince;

// Blocks jobs until it is opened.
class Gate {
public:
    void open() { promise_.set_value(); }
    void pass() { future_.wait(); }

private:
    std::promise<void> promise_;
    std::shared_future<void> future_{promise_.get_future().share()};
};

TEST(IoQueueTest, RunsJobsOfManyThreadsOneAtATimeOnItsOwnThread) {
    IoQueue queue("test-io");
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    std::atomic<int> done{0};
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&, caller] {
            for (int round = 0; round < 200; ++round) {
                const auto status = static_cast<std::uint32_t>(caller * 1000 + round);
                EXPECT_EQ(queue.run([&, status] {
                    overlapped = overlapped || inside.fetch_add(1) != 0;
                    ++done;
                    --inside;
                    return status;
                }),
                          status);
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(done, 800);
    EXPECT_FALSE(overlapped);
}

TEST(IoQueueTest, CancelLetsRunningAndWaitingCallersGoWhileTheJobIsStuck) {
    const auto gate = std::make_shared<Gate>();
    const auto finished = std::make_shared<std::atomic<int>>(0);
    IoQueue queue("test-io");
    std::vector<std::thread> callers;
    std::atomic<int> released{0};
    for (int caller = 0; caller < 3; ++caller) {
        callers.emplace_back([&] {
            EXPECT_EQ(queue.run([gate, finished] {
                gate->pass();
                ++*finished;
                return OV_STATUS_OK;
            }),
                      OV_STATUS_PRECONDITION);
            ++released;
        });
    }
    ASSERT_TRUE(eventually([&] { return queue.busyFor() > milliseconds(0); }));
    const auto begun = test::Clock::now();
    queue.cancel(OV_STATUS_PRECONDITION);
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_LT(millisecondsSince(begun), 5000);
    EXPECT_EQ(*finished, 0);
    EXPECT_EQ(queue.run([] { return OV_STATUS_OK; }), OV_STATUS_PRECONDITION);
    EXPECT_FALSE(queue.post([] { return OV_STATUS_OK; }));
    queue.cancel(OV_STATUS_CALL_ORDER);
    EXPECT_EQ(queue.run([] { return OV_STATUS_OK; }), OV_STATUS_PRECONDITION) << "the first reason stays";
    gate->open();
    EXPECT_TRUE(eventually([&] { return *finished == 1; }));
}

TEST(IoQueueTest, DropsWaitingJobsAndTheirContentsAtCancel) {
    const auto gate = std::make_shared<Gate>();
    auto owned = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = owned;
    IoQueue queue("test-io");
    EXPECT_TRUE(queue.post([gate] {
        gate->pass();
        return OV_STATUS_OK;
    }));
    EXPECT_TRUE(queue.post([owned] { return static_cast<std::uint32_t>(*owned); }));
    owned.reset();
    queue.cancel(OV_STATUS_CALL_ORDER);
    gate->open();
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST(IoQueueTest, RunsTheLastJobAfterTheOneThatIsStuckAndThenEnds) {
    const auto gate = std::make_shared<Gate>();
    std::atomic<bool> last{false};
    const auto entered = std::make_shared<std::atomic<bool>>(false);
    IoQueue queue("test-io");
    EXPECT_TRUE(queue.post([gate, entered] {
        *entered = true;
        gate->pass();
        return OV_STATUS_OK;
    }));
    ASSERT_TRUE(eventually([&] { return entered->load(); }));
    queue.finish(OV_STATUS_CALL_ORDER, [&] {
        last = true;
        return OV_STATUS_OK;
    });
    EXPECT_FALSE(queue.waitFinished(test::Clock::now() + milliseconds(20)));
    EXPECT_FALSE(last);
    gate->open();
    EXPECT_TRUE(queue.waitFinished(test::Clock::now() + milliseconds(20000)));
    EXPECT_TRUE(last);
}

TEST(IoQueueTest, BusyIsOnlyWhatACallerWaitsFor) {
    const auto gate = std::make_shared<Gate>();
    const auto entered = std::make_shared<std::atomic<bool>>(false);
    IoQueue queue("test-io");
    EXPECT_EQ(queue.busyFor(), milliseconds(0));
    EXPECT_TRUE(queue.post([gate, entered] {
        *entered = true;
        gate->pass();
        return OV_STATUS_OK;
    }));
    ASSERT_TRUE(eventually([&] { return entered->load(); }));
    EXPECT_EQ(queue.busyFor(), milliseconds(0)) << "posted";
    gate->open();
    const auto second = std::make_shared<Gate>();
    std::thread caller([&] {
        queue.run([second] {
            second->pass();
            return OV_STATUS_OK;
        });
    });
    EXPECT_TRUE(eventually([&] { return queue.busyFor() > milliseconds(1); }));
    second->open();
    caller.join();
    EXPECT_EQ(queue.busyFor(), milliseconds(0));
}

TEST(ReaperTest, WorksInTheBackgroundAndLeavesNoThread) {
    ASSERT_TRUE(waitReaped(milliseconds(20000)));
    std::thread([] {}).join(); // with the first thread ThreadSanitizer starts one of its own, which stays
    const std::size_t before = test::threadCount();
    const auto gate = std::make_shared<Gate>();
    std::atomic<int> done{0};
    for (int job = 0; job < 5; ++job) {
        reap([&, gate] {
            gate->pass();
            ++done;
        });
    }
    EXPECT_FALSE(waitReaped(milliseconds(20)));
    EXPECT_EQ(done, 0);
    gate->open();
    EXPECT_TRUE(waitReaped(milliseconds(20000)));
    EXPECT_EQ(done, 5);
    EXPECT_EQ(test::threadCount(), before);
    reap([&] { ++done; });
    EXPECT_TRUE(waitReaped(milliseconds(20000)));
    EXPECT_EQ(done, 6);
}

TEST(LivenessJudgeTest, ThreeSilentIntervalsAreDeathAndEightWhileBusy) {
    LivenessRules rules;
    for (const bool busy : {false, true}) {
        LivenessJudge judge(rules);
        const unsigned misses = busy ? rules.missesWhileBusy : rules.misses;
        for (int round = 0; round < 3; ++round) { // a sign of life begins the count anew
            for (unsigned miss = 1; miss < misses; ++miss) {
                EXPECT_FALSE(judge.intervalPassed(false, busy));
            }
            EXPECT_FALSE(judge.intervalPassed(true, busy));
        }
        for (unsigned miss = 1; miss < misses; ++miss) {
            EXPECT_FALSE(judge.intervalPassed(false, busy));
        }
        EXPECT_TRUE(judge.intervalPassed(false, busy));
    }
    LivenessJudge judge(rules);
    for (int miss = 0; miss < 5; ++miss) {
        EXPECT_FALSE(judge.intervalPassed(false, true));
    }
    EXPECT_TRUE(judge.intervalPassed(false, false)) << "the access has ended, and still nothing was heard";
    // The slowest case (a probe was just answered) stays below two seconds.
    EXPECT_LT((rules.missesWhileBusy + 1) * rules.interval, milliseconds(1900));
}

TEST(LivenessProbeTest, OnlyAnAnswerOfTheCameraIsASignOfLife) {
    using test::Bytes;
    constexpr std::uint16_t kDiscoveryAck = 0x0003;
    const auto good = [](const Bytes& request) {
        return test::acknowledge(0, kDiscoveryAck, test::discoveryPayload({}), test::word16(request, 6));
    };
    struct Row {
        const char* name;
        std::function<std::vector<Bytes>(const Bytes&)> answers;
        bool foreignPort;
        bool alive;
    };
    const std::vector<Row> rows{
        {"an answer", [&](const Bytes& request) { return std::vector<Bytes>{good(request)}; }, false, true},
        {"an answer to an earlier question",
         [&](const Bytes&) {
             return std::vector<Bytes>{test::acknowledge(0, kDiscoveryAck, test::discoveryPayload({}), 999)};
         },
         false, true},
        {"a refusal",
         [&](const Bytes& request) {
             return std::vector<Bytes>{
                 test::acknowledge(0x8001, kDiscoveryAck, {}, test::word16(request, 6))};
         },
         false, true},
        {"cut before the header ends",
         [](const Bytes&) {
             return std::vector<Bytes>{{0, 0, 0, 3, 0}};
         },
         false, false},
        {"empty", [](const Bytes&) { return std::vector<Bytes>{{}}; }, false, false},
        {"another acknowledge",
         [](const Bytes& request) {
             return std::vector<Bytes>{test::acknowledge(0, 0x0081, {0, 0, 0, 0}, test::word16(request, 6))};
         },
         false, false},
        {"its own question back", [](const Bytes& request) { return std::vector<Bytes>{request}; }, false,
         false},
        {"far too long", [](const Bytes&) { return std::vector<Bytes>{Bytes(9000, 0xFF)}; }, false, false},
        {"an answer from another port",
         [&](const Bytes& request) { return std::vector<Bytes>{good(request)}; }, true, false},
        {"an answer behind a flood",
         [&](const Bytes& request) {
             std::vector<Bytes> flood(200, Bytes{1, 2, 3});
             flood.push_back(good(request));
             return flood;
         },
         false, true},
    };
    for (const Row& row : rows) {
        test::ScriptedCamera camera("127.0.0.1", 0, row.answers);
        camera.answerFromForeignPort(row.foreignPort);
        LivenessProbe probe(0x7F00'0001, 0x7F00'0001, camera.port());
        ASSERT_TRUE(probe.usable());
        probe.send();
        pollfd readable{probe.descriptor(), POLLIN, 0};
        ASSERT_EQ(poll(&readable, 1, 20000), 1) << row.name;
        if (row.alive) {
            EXPECT_TRUE(eventually([&] { return probe.receive(); })) << row.name;
        } else {
            EXPECT_FALSE(probe.receive()) << row.name;
        }
    }
}

TEST(LivenessMonitorTest, TellsASilentDeviceOnceAndNoneWhileSignsCome) {
    LivenessRules rules;
    rules.interval = milliseconds(10);
    std::atomic<int> lost{0};
    std::atomic<int> asked{0};
    std::atomic<bool> alive{true};
    LivenessMonitor* heard = nullptr;
    LivenessMonitor::Hooks hooks;
    hooks.busy = [] { return false; };
    // A sign in each interval, by the monitor's own thread: no other may be late with it.
    hooks.tick = [&] {
        if (alive) {
            heard->heard();
        }
    };
    hooks.askControl = [&] { ++asked; };
    hooks.lost = [&](LossReason reason) {
        EXPECT_EQ(reason, LossReason::silent);
        ++lost;
    };
    LivenessMonitor monitor(rules, nullptr, hooks);
    heard = &monitor;
    const auto begun = test::Clock::now();
    monitor.start();
    EXPECT_TRUE(eventually([&] { return asked >= 10; }));
    EXPECT_EQ(lost, 0);
    EXPECT_GT(millisecondsSince(begun), 100);
    alive = false;
    EXPECT_TRUE(eventually([&] { return lost == 1; }));
    monitor.reportLost(LossReason::controlLost);
    monitor.stop();
    monitor.join();
    EXPECT_EQ(lost, 1);
}

TEST(LivenessMonitorTest, TellsAReportedLossAtOnceAndNothingWhenMutedOrStopped) {
    LivenessRules rules;
    rules.interval = milliseconds(60000);
    for (const int mode : {0, 1, 2}) {
        std::atomic<int> lost{0};
        std::atomic<int> asked{0};
        LivenessMonitor::Hooks hooks;
        hooks.busy = [] { return false; };
        hooks.tick = [] {};
        hooks.askControl = [&] { ++asked; };
        hooks.lost = [&](LossReason reason) {
            EXPECT_EQ(reason, LossReason::controlLost);
            ++lost;
        };
        LivenessMonitor monitor(rules, nullptr, hooks);
        monitor.start();
        ASSERT_TRUE(eventually([&] { return asked == 1; }));
        const auto begun = test::Clock::now();
        if (mode == 1) {
            monitor.mute();
        } else if (mode == 2) {
            monitor.stop();
        }
        monitor.reportLost(LossReason::controlLost);
        if (mode == 0) {
            EXPECT_TRUE(eventually([&] { return lost == 1; }));
        }
        monitor.stop();
        monitor.join();
        EXPECT_LT(millisecondsSince(begun), 20000);
        EXPECT_EQ(lost, mode == 0 ? 1 : 0);
    }
}

struct Calls {
    std::atomic<int> count{0};
    std::function<void()> inside;
    static void callback(std::uint32_t message, void* user) {
        EXPECT_EQ(message, static_cast<std::uint32_t>(OV_EXCEPTION_DISCONNECT));
        auto& self = *static_cast<Calls*>(user);
        ++self.count;
        if (self.inside) {
            self.inside();
        }
    }
};

TEST(ExceptionDispatcherTest, TakingTheCallbackAwayWaitsForTheOneThatRuns) {
    ExceptionDispatcher dispatcher;
    Gate gate;
    Calls calls;
    calls.inside = [&] { gate.pass(); };
    dispatcher.set(Calls::callback, &calls);
    std::thread library([&] { dispatcher.deliver(OV_EXCEPTION_DISCONNECT, [] { return true; }); });
    ASSERT_TRUE(eventually([&] { return calls.count == 1; }));
    std::atomic<bool> taken{false};
    std::thread caller([&] {
        dispatcher.set(nullptr, nullptr);
        taken = true;
    });
    std::this_thread::yield();
    EXPECT_FALSE(taken);
    gate.open();
    caller.join();
    library.join();
    EXPECT_TRUE(taken);
}

TEST(ExceptionDispatcherTest, TheCallbackMayTakeItselfAwayAndWaitForItself) {
    ExceptionDispatcher dispatcher;
    Calls calls;
    calls.inside = [&] {
        dispatcher.set(nullptr, nullptr);
        dispatcher.waitIdle();
    };
    dispatcher.set(Calls::callback, &calls);
    dispatcher.deliver(OV_EXCEPTION_DISCONNECT, [] { return true; });
    EXPECT_EQ(calls.count, 1);
}

TEST(ExceptionDispatcherTest, AMessageWaitsForACallbackUntilItIsNoLongerWanted) {
    ExceptionDispatcher dispatcher;
    Calls calls;
    std::thread library([&] { dispatcher.deliver(OV_EXCEPTION_DISCONNECT, [] { return true; }); });
    dispatcher.set(Calls::callback, &calls);
    library.join();
    EXPECT_EQ(calls.count, 1);

    dispatcher.set(nullptr, nullptr);
    std::atomic<bool> wanted{true};
    std::thread other([&] { dispatcher.deliver(OV_EXCEPTION_DISCONNECT, [&] { return wanted.load(); }); });
    wanted = false;
    dispatcher.recheck();
    other.join();
    EXPECT_EQ(calls.count, 1);
}

} // namespace
} // namespace kolt::cc
