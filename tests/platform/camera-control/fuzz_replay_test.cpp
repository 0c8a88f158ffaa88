// The fuzzers' corpora, replayed: what was found once stays found.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "camera-control/FuzzFind.h"
#include "camera-control/FuzzGvsp.h"
#include "support/Places.h"

namespace {

using Target = void (*)(const std::uint8_t*, std::size_t);

std::size_t replay(const std::string& corpus, Target target) {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(KOLT_SOURCE_DIR "/fuzz/camera-control/corpus/" + corpus)) {
        SCOPED_TRACE(entry.path().filename().string());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                      std::istreambuf_iterator<char>());
        target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    return count;
}

TEST(CameraControlCorpus, GvcpAcknowledges) {
    EXPECT_GE(replay("gvcp", fuzz::FuzzGvcp), 11U);
}
TEST(CameraControlCorpus, StreamPackets) {
    EXPECT_GE(replay("gvsp", fuzz::FuzzGvsp), 11U);
}
TEST(CameraControlCorpus, DeviceRecords) {
    EXPECT_GE(replay("records", fuzz::FuzzRecords), 5U);
}
TEST(CameraControlCorpus, XmlLocationsAndArchives) {
    EXPECT_GE(replay("xml", fuzz::FuzzXml), 10U);
}

} // namespace
