// What the fuzzers started from and what they found, once more. Not passing means that the process dies.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "genapi/FuzzFormula.h"
#include "genapi/FuzzXml.h"
#include "support/Places.h"

namespace {

using Target = std::function<void(const std::uint8_t*, std::size_t)>;

std::size_t Replay(const char* corpus, const Target& target) {
    std::size_t files = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(std::string(KOLT_SOURCE_DIR "/fuzz/genapi/corpus/") + corpus)) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
        SCOPED_TRACE(file.path().string());
        target(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++files;
    }
    return files;
}

TEST(GenApiFuzzReplay, Formulas) {
    EXPECT_GE(Replay("formula", fuzz::FuzzFormula), 15U);
}

TEST(GenApiFuzzReplay, Xml) {
    EXPECT_GE(Replay("xml", fuzz::FuzzXml), 15U);
}
TEST(GenApiFuzzReplay, ZippedXml) {
    EXPECT_GE(Replay("zipped", fuzz::FuzzZippedXml), 8U);
}
TEST(GenApiFuzzReplay, Graphs) {
    EXPECT_GE(Replay("graph", fuzz::FuzzGraph), 12U);
}

} // namespace
