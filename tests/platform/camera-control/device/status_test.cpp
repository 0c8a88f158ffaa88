// Statuses of the exported calls that need a state of the world of their own: no descriptors, no memory, a
// camera that falls silent half-way.
#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "CameraRig.h"

namespace kolt::test {
namespace {

// Takes all descriptors of the process but `left`.
class FewDescriptors {
public:
    explicit FewDescriptors(std::size_t left) {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit few = before_;
        few.rlim_cur = std::min<rlim_t>(before_.rlim_cur, 256);
        setrlimit(RLIMIT_NOFILE, &few);
        for (int fd = open("/dev/null", O_RDONLY | O_CLOEXEC); fd >= 0;
             fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) {
            taken_.push_back(fd);
        }
        for (; left > 0 && !taken_.empty(); --left) {
            close(taken_.back());
            taken_.pop_back();
        }
    }
    ~FewDescriptors() {
        for (const int fd : taken_) {
            close(fd);
        }
        setrlimit(RLIMIT_NOFILE, &before_);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit before_{};
    std::vector<int> taken_;
};

TEST(CameraStatus, WithoutDescriptorsOpeningFailsAndLeavesNothing) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    { // all that is made once per process
        ASSERT_EQ(handle.open(), OV_STATUS_OK);
        ASSERT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK);
    }
    const std::size_t descriptors = descriptorCount();
    const std::size_t threads = threadCount();
    // None, then one more each time: each place that takes one would be the first to fail.
    std::size_t left = 0;
    for (std::uint32_t status = OV_STATUS_RESOURCE; status != OV_STATUS_OK; ++left) {
        ASSERT_LT(left, 60U) << "it never opens";
        {
            const FewDescriptors few(left);
            status = handle.open();
            if (status == OV_STATUS_OK) { // with what is left, grabbing may begin or not
                const std::uint32_t start = OV_CC_StartGrabbing(handle);
                EXPECT_TRUE(start == OV_STATUS_OK || start == OV_STATUS_RESOURCE) << std::hex << start;
            } else {
                EXPECT_EQ(status, OV_STATUS_RESOURCE) << left;
            }
        }
        if (status == OV_STATUS_OK) {
            EXPECT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK);
        }
        EXPECT_TRUE(eventually([&] { return threadCount() <= threads; })) << left;
        EXPECT_TRUE(eventually([&] { return descriptorCount() <= descriptors; })) << left;
        EXPECT_FALSE(camera.IsControlled()) << left;
    }
    EXPECT_GT(left, 3U) << "each opening takes some";
}

TEST(CameraStatus, WithoutDescriptorsGrabbingDoesNotBeginAndTheCameraStaysOpen) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    ASSERT_EQ(handle.open(), OV_STATUS_OK);
    {
        const FewDescriptors few(2);
        EXPECT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_RESOURCE);
    }
    EXPECT_FALSE(camera.IsStreaming());
    ASSERT_EQ(OVX_CC_SetOption(handle, OVX_OPTION_PACKET_SOCKET, 0), OV_STATUS_OK);
    EXPECT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_OK);
    EXPECT_EQ(fetch(handle).status, OV_STATUS_OK);
}

TEST(CameraStatus, MoreBuffersThanThereIsMemoryAreRefused) {
    vcam::Config config = smallCamera();
    config.sensorWidth = 16384;
    config.sensorHeight = 16384;
    vcam::VirtualCamera camera(config);
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    ASSERT_EQ(handle.open(), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_SetImageNodeNum(handle, 1024), OV_STATUS_OK); // of 256 MiB each
    const std::size_t before = residentKilobytes();
    EXPECT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_RESOURCE);
    EXPECT_LT(residentKilobytes(), before + 256 * 1024) << "none was taken in vain";
    EXPECT_FALSE(camera.IsStreaming());
    EXPECT_EQ(fetch(handle, 0).status, OV_STATUS_CALL_ORDER);
    EXPECT_EQ(OV_CC_StopGrabbing(handle), OV_STATUS_CALL_ORDER);
    std::uint32_t version = 0;
    EXPECT_NO_THROW(handle.port().Read(&version, 0, 4)) << "and the camera stays open";
}

// It tells who it is and where its XML lies, and dies while Aravis opens it.
TEST(CameraStatus, ACameraThatFallsSilentDuringItsOpeningIsBusy) {
    vcam::Config config = smallCamera();
    config.faults.answerDelayMs = 2; // an opening of two milliseconds leaves no time
    vcam::VirtualCamera camera(config);
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    const std::uint64_t before = camera.GetCounters().commands;
    ASSERT_EQ(handle.open(), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK);
    const std::uint64_t whole = camera.GetCounters().commands - before;
    const std::uint64_t begun = camera.GetCounters().commands;
    std::uint32_t status = 0;
    std::thread opener([&] { status = handle.open(); });
    // The XML is read twice, first by the library itself.
    EXPECT_TRUE(eventually([&] { return camera.GetCounters().commands > begun + whole * 3 / 4; }));
    vcam::Faults faults = camera.GetFaults();
    faults.silent = true;
    camera.SetFaults(faults);
    opener.join();
    EXPECT_EQ(status, OV_STATUS_BUSY);
    EXPECT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_CALL_ORDER);
    camera.Stop();
    camera.Start();
    camera.SetFaults({});
    EXPECT_EQ(handle.open(), OV_STATUS_OK);
}

} // namespace
} // namespace kolt::test
