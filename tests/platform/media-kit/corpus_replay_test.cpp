#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

/* Runs a fuzz target over its kept inputs: what was found once stays found. KOLT_FUZZ_CORPUS is their folder.
 */

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

TEST(CorpusReplay, EveryKeptInputIsHandled) {
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(KOLT_FUZZ_CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        ASSERT_TRUE(file.is_open()) << entry.path();
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                  0)
            << entry.path();
        ++inputs;
    }
    EXPECT_GT(inputs, 0U) << "an empty corpus in " << KOLT_FUZZ_CORPUS;
}
