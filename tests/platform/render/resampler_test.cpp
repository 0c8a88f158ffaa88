/* Drawing into memory, and the kernels behind it. */
#include "Expectation.h"

#include "FrameStore.h"
#include "Resampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace kolt::render {
namespace {

using tests::alike;
using tests::expected;
using tests::kAll;
using tests::Picture;
using tests::Rgb;
using tests::Shown;
using tests::Source;

/* All sets of kernels that this processor can run. */
std::vector<const RowKernels*> kernelSets() {
    std::vector<const RowKernels*> sets = {&plainRowKernels()};
    for (const RowKernels* set : {avx2RowKernels(), avx512RowKernels()}) {
        if (set != nullptr) {
            sets.push_back(set);
        }
    }
    return sets;
}

View viewOf(const Shown& shown) {
    return {*checkedFractions(&shown.source), *checkedFractions(&shown.destination), shown.quarterTurns};
}

/* A picture drawn into memory with guards on every side. */
class Canvas {
public:
    Canvas(Size window, const PixelFormat& format) : m_window(window), m_format(format) {}

    void draw(Resampler& resampler, const Source& source, const Shown& shown) {
        std::vector<uint8_t> frame = source.bytes;
        frame.resize(frame.size() + kFramePadding, 0xEE);
        const Plan plan = makePlan({source.width, source.height}, m_window, viewOf(shown));
        m_box = plan.painted();
        m_stride = m_format.stride(m_box.width);
        const size_t bytes = m_stride * static_cast<size_t>(m_box.height);
        m_memory.assign(bytes + 2 * kGuard, 0xA5);
        resampler.draw(FrameView{frame.data(), {source.width, source.height}, source.channels}, plan,
                       m_format, m_memory.data() + kGuard, m_stride);
        for (size_t i = 0; i < kGuard; ++i) {
            ASSERT_EQ(m_memory[i], 0xA5) << "written before the image";
            ASSERT_EQ(m_memory[m_memory.size() - 1 - i], 0xA5) << "written behind the image";
        }
    }

    uint32_t pixel(int x, int y) const {
        const size_t bytes = static_cast<size_t>(m_format.bitsPerPixel) / 8;
        const uint8_t* at =
            m_memory.data() + kGuard + static_cast<size_t>(y) * m_stride + static_cast<size_t>(x) * bytes;
        uint32_t value = 0;
        for (size_t i = 0; i < bytes; ++i) {
            value |= static_cast<uint32_t>(at[m_format.bigEndian ? bytes - 1 - i : i]) << (8 * i);
        }
        return value;
    }

    /* The window as it would look, for a format of eight bits a colour. */
    Picture picture() const {
        Picture result(m_window.width, m_window.height);
        std::fill(result.pixels.begin(), result.pixels.end(), tests::kBackdrop);
        for (int y = 0; y < m_box.height; ++y) {
            for (int x = 0; x < m_box.width; ++x) {
                const uint32_t value = pixel(x, y);
                result.at(m_box.x + x, m_box.y + y) = {
                    static_cast<int>((value & m_format.redMask) >> __builtin_ctz(m_format.redMask)),
                    static_cast<int>((value & m_format.greenMask) >> __builtin_ctz(m_format.greenMask)),
                    static_cast<int>((value & m_format.blueMask) >> __builtin_ctz(m_format.blueMask))};
            }
        }
        return result;
    }

    Box box() const { return m_box; }
    const std::vector<uint8_t>& memory() const { return m_memory; }

private:
    static constexpr size_t kGuard = 256;
    Size m_window;
    PixelFormat m_format;
    Box m_box;
    size_t m_stride = 0;
    std::vector<uint8_t> m_memory;
};

TEST(Kernels, AreNamedAndTheBestIsTaken) {
    EXPECT_EQ(&rowKernels(), kernelSets().back());
    for (const RowKernels* set : kernelSets()) {
        EXPECT_STRNE(set->name, "");
    }
}

/* Every size, turn and zoom gives the same bytes whichever instructions drew them. */
TEST(Kernels, AllGiveTheSameBits) {
    std::mt19937 random(7);
    const auto between = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int round = 0; round < 400; ++round) {
        const int channels = round % 2 == 0 ? 1 : 3;
        const Source source =
            tests::noise(between(1, 300), between(1, 200), channels, static_cast<uint32_t>(round));
        const Size window{between(1, 260), between(1, 160)};
        Shown shown;
        shown.quarterTurns = between(0, 3);
        shown.source = {
            static_cast<float>(between(-30, 40)) / 100, static_cast<float>(between(60, 130)) / 100,
            static_cast<float>(between(-30, 40)) / 100, static_cast<float>(between(60, 130)) / 100};
        Canvas reference(window, {});
        Resampler plain(plainRowKernels());
        reference.draw(plain, source, shown);
        for (const RowKernels* set : kernelSets()) {
            Canvas canvas(window, {});
            Resampler resampler(*set);
            canvas.draw(resampler, source, shown);
            ASSERT_EQ(canvas.memory(), reference.memory())
                << set->name << ", round " << round << ": " << source.width << " x " << source.height << " x "
                << channels << " in " << window.width << " x " << window.height << " turned "
                << shown.quarterTurns;
        }
    }
}

TEST(Kernels, BlendAsManyRowsAsThereAre) {
    for (const RowKernels* set : kernelSets()) {
        for (size_t taps = 2; taps <= 64; taps += 2) {
            for (const size_t bytes : {1U, 31U, 32U, 33U, 64U, 65U, 1000U, 1024U, 1025U}) {
                std::vector<std::vector<uint8_t>> rows(taps);
                std::vector<const uint8_t*> pointers;
                std::vector<uint8_t> weights;
                std::mt19937 random(static_cast<unsigned>(taps * 1000 + bytes));
                int left = kRowWeight;
                for (size_t tap = 0; tap < taps; ++tap) {
                    rows[tap].resize(bytes + kFramePadding);
                    for (uint8_t& byte : rows[tap]) {
                        byte = tap % 3 == 0 ? 255 : static_cast<uint8_t>(random());
                    }
                    const int weight = tap + 1 == taps ? left : left / 2;
                    weights.push_back(static_cast<uint8_t>(std::min(weight, 127)));
                    left -= weights.back();
                    pointers.push_back(rows[tap].data());
                }
                std::vector<uint8_t> out(bytes + kFramePadding);
                set->blend(pointers.data(), weights.data(), taps, out.data(), bytes);
                for (size_t i = 0; i < bytes; ++i) {
                    int sum = kRowWeight / 2;
                    for (size_t tap = 0; tap < taps; ++tap) {
                        sum += rows[tap][i] * weights[tap];
                    }
                    ASSERT_EQ(out[i], sum / kRowWeight) << set->name << " " << taps << " rows, byte " << i;
                }
            }
        }
    }
}

TEST(Kernels, HalveRowsOfEveryLength) {
    for (const RowKernels* set : kernelSets()) {
        for (const size_t channels : {size_t{1}, size_t{3}}) {
            for (size_t count = 1; count < 300; ++count) {
                std::vector<uint8_t> row(count * channels + kFramePadding);
                std::mt19937 random(static_cast<unsigned>(count));
                for (uint8_t& byte : row) {
                    byte = static_cast<uint8_t>(random());
                }
                const std::vector<uint8_t> before = row;
                (channels == 3 ? set->halveColour : set->halveGrey)(row.data(), count);
                for (size_t pixel = 0; pixel < (count + 1) / 2; ++pixel) {
                    for (size_t c = 0; c < channels; ++c) {
                        const size_t right = std::min(2 * pixel + 1, count - 1);
                        const int mean =
                            (before[2 * pixel * channels + c] + before[right * channels + c] + 1) / 2;
                        ASSERT_EQ(row[pixel * channels + c], mean)
                            << set->name << " " << count << " at " << pixel;
                    }
                }
            }
        }
    }
}

struct Drawn {
    int width;
    int height;
    Size window;
    Shown shown;
    int tolerance;
};

class Sizes : public testing::TestWithParam<Drawn> {};

TEST_P(Sizes, LookAsExpected) {
    const Drawn& p = GetParam();
    for (const int channels : {1, 3}) {
        const Source source = tests::noise(p.width, p.height, channels);
        for (int turns = 0; turns < 4; ++turns) {
            Shown shown = p.shown;
            shown.quarterTurns = turns;
            const Picture wanted = expected(source, p.window.width, p.window.height, shown);
            for (const RowKernels* set : kernelSets()) {
                Canvas canvas(p.window, {});
                Resampler resampler(*set);
                canvas.draw(resampler, source, shown);
                EXPECT_TRUE(alike(canvas.picture(), wanted, p.tolerance))
                    << set->name << ", " << channels << " channels, turned " << turns;
            }
        }
    }
}

constexpr tagVRRectF kMiddle{0.25F, 0.75F, 0.25F, 0.75F};
constexpr tagVRRectF kBeyond{-0.5F, 1.25F, -0.25F, 1.5F};

INSTANTIATE_TEST_SUITE_P(All, Sizes,
                         testing::Values(Drawn{1, 1, {1, 1}, {}, 0}, Drawn{1, 1, {57, 33}, {}, 0},
                                         Drawn{1, 100, {50, 50}, {}, 5}, Drawn{100, 1, {50, 50}, {}, 5},
                                         Drawn{3, 5, {700, 500}, {}, 0}, Drawn{199, 101, {199, 199}, {}, 5},
                                         Drawn{101, 103, {100, 102}, {}, 5},
                                         Drawn{200, 160, {150, 140}, {}, 5}, Drawn{200, 160, {81, 81}, {}, 5},
                                         Drawn{240, 240, {80, 80}, {}, 5}, Drawn{240, 240, {60, 60}, {}, 5},
                                         Drawn{1920, 1080, {480, 270}, {}, 36},
                                         Drawn{2000, 1500, {9, 7}, {}, 3}, Drawn{1201, 1199, {1, 1}, {}, 3},
                                         Drawn{90, 70, {200, 210}, {kMiddle, kAll, 0}, 0},
                                         Drawn{90, 70, {200, 210}, {kMiddle, kMiddle, 0}, 0},
                                         Drawn{90, 70, {300, 310}, {kBeyond, kAll, 0}, 0},
                                         Drawn{90, 70, {300, 310}, {kAll, kBeyond, 0}, 0},
                                         Drawn{90, 70, {60, 60}, {kBeyond, kAll, 0}, 36}));

/* Flat grey stays flat grey however it is scaled: no rounding ripple. */
TEST(Resampling, KeepsFlatAreasFlat) {
    for (const RowKernels* set : kernelSets()) {
        for (const int value : {0, 1, 127, 128, 254, 255}) {
            Source source = tests::noise(311, 201, 3);
            std::fill(source.bytes.begin(), source.bytes.end(), static_cast<uint8_t>(value));
            for (int width = 1; width < 330; width += 7) {
                Canvas canvas({width, 90}, {});
                Resampler resampler(*set);
                canvas.draw(resampler, source, {});
                const Picture picture = canvas.picture();
                ASSERT_TRUE(std::all_of(picture.pixels.begin(), picture.pixels.end(),
                                        [value](const Rgb& p) {
                                            return p == Rgb{value, value, value};
                                        }))
                    << set->name << " " << value << " in " << width;
            }
        }
    }
}

/* A single bright pixel never vanishes when reduced, wherever it is. */
TEST(Resampling, LosesNoPixel) {
    for (int at = 0; at < 60; ++at) {
        Source source = tests::noise(60, 60, 1);
        std::fill(source.bytes.begin(), source.bytes.end(), uint8_t{0});
        source.bytes[static_cast<size_t>(at) * 60 + static_cast<size_t>(59 - at)] = 255;
        Canvas canvas({23, 17}, {});
        Resampler resampler;
        canvas.draw(resampler, source, {});
        int sum = 0;
        for (const Rgb& p : canvas.picture().pixels) {
            sum += p.red;
        }
        EXPECT_NEAR(sum, 255 * 23 * 17 / 3600.0, 6) << at;
    }
}

TEST(Resampling, MayUseOneResamplerForChangingPlans) {
    Resampler resampler;
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const int channels = random() % 2 == 0 ? 1 : 3;
        const Source source = tests::noise(static_cast<int>(random() % 90) + 1,
                                           static_cast<int>(random() % 90) + 1, channels, random());
        Shown shown;
        shown.quarterTurns = static_cast<int>(random() % 4);
        PixelFormat format;
        if (random() % 3 == 0) {
            format = {24, 32, 32, true, 0xFF, 0xFF00, 0xFF0000};
        }
        Canvas canvas({120, 100}, format);
        canvas.draw(resampler, source, shown);
        ASSERT_TRUE(alike(canvas.picture(), expected(source, 120, 100, shown), 0)) << round;
    }
}

struct FormatCase {
    const char* name;
    PixelFormat format;
};

class Formats : public testing::TestWithParam<FormatCase> {};

TEST_P(Formats, HoldTheSameColours) {
    const PixelFormat format = GetParam().format;
    ASSERT_TRUE(format.valid());
    const Source source = tests::noise(37, 29, 3);
    for (int turns = 0; turns < 4; ++turns) {
        Shown shown{kAll, kAll, turns};
        Canvas canvas({53, 47}, format);
        Resampler resampler;
        canvas.draw(resampler, source, shown);
        const Picture wanted = expected(source, 53, 47, shown);
        for (int y = 0; y < 47; ++y) {
            for (int x = 0; x < 53; ++x) {
                const Rgb p = wanted.at(x, y);
                const auto rgb = static_cast<uint32_t>(p.red << 16 | p.green << 8 | p.blue);
                const uint32_t colours = format.redMask | format.greenMask | format.blueMask;
                ASSERT_EQ(canvas.pixel(x, y) & colours, format.pixel(rgb) & colours) << x << ", " << y;
                ASSERT_EQ(canvas.pixel(x, y) & format.opaqueBits(), format.opaqueBits()) << x << ", " << y;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, Formats,
    testing::Values(FormatCase{"Usual", {24, 32, 32, false, 0xFF0000, 0xFF00, 0xFF}},
                    FormatCase{"UsualBigEndian", {24, 32, 32, true, 0xFF0000, 0xFF00, 0xFF}},
                    FormatCase{"RedLow", {24, 32, 32, false, 0xFF, 0xFF00, 0xFF0000}},
                    FormatCase{"Translucent", {32, 32, 32, false, 0xFF0000, 0xFF00, 0xFF}},
                    FormatCase{"TenBits", {30, 32, 32, false, 0x3FF00000, 0xFFC00, 0x3FF}},
                    FormatCase{"Packed", {24, 24, 32, false, 0xFF0000, 0xFF00, 0xFF}},
                    FormatCase{"PackedBigEndian", {24, 24, 32, true, 0xFF0000, 0xFF00, 0xFF}},
                    FormatCase{"HighColour", {16, 16, 32, false, 0xF800, 0x7E0, 0x1F}},
                    FormatCase{"HighColourBigEndian", {16, 16, 32, true, 0xF800, 0x7E0, 0x1F}},
                    FormatCase{"FifteenBits", {15, 16, 16, false, 0x7C00, 0x3E0, 0x1F}},
                    FormatCase{"EightBits", {8, 8, 32, false, 0xE0, 0x1C, 0x3}}),
    [](const auto& format) { return std::string(format.param.name); });

TEST(PixelFormats, ScaleToAllBitsOfAColour) {
    const PixelFormat high{16, 16, 32, false, 0xF800, 0x7E0, 0x1F};
    EXPECT_EQ(high.pixel(0xFFFFFF), 0xFFFFU);
    EXPECT_EQ(high.pixel(0), 0U);
    EXPECT_EQ(high.pixel(0x840084), 0x8010U);
    const PixelFormat deep{30, 32, 32, false, 0x3FF00000, 0xFFC00, 0x3FF};
    EXPECT_EQ(deep.pixel(0xFFFFFF), 0x3FFFFFFFU);
    EXPECT_EQ(deep.pixel(kBackground), (80U << 20) | (96U << 10) | 116U);
    const PixelFormat translucent{32, 32, 32, false, 0xFF0000, 0xFF00, 0xFF};
    EXPECT_EQ(translucent.pixel(kBackground), 0xFF14181DU);
}

TEST(PixelFormats, RefuseWhatIsUnknown) {
    const PixelFormat bad[] = {
        {24, 12, 32, false, 0xFF0000, 0xFF00, 0xFF},  {24, 32, 7, false, 0xFF0000, 0xFF00, 0xFF},
        {24, 32, 32, false, 0, 0xFF00, 0xFF},         {24, 32, 32, false, 0xFF0000, 0xFF00, 0xFF00},
        {24, 32, 32, false, 0xF0F000, 0xF00, 0xFF},   {16, 16, 32, false, 0xFF0000, 0xFF00, 0xFF},
        {24, 16, 32, false, 0xFF0000, 0xFF00, 0xFF},  {0, 32, 32, false, 0xFF0000, 0xFF00, 0xFF},
        {24, 32, 32, false, 0xFF000000, 0xFF00, 0xFF}};
    for (const PixelFormat& format : bad) {
        EXPECT_FALSE(format.valid()) << format.depth << " " << format.bitsPerPixel << " " << std::hex
                                     << format.redMask << " " << format.greenMask << " " << format.blueMask;
    }
}

TEST(PixelFormats, PadLinesAsTheServerDoes) {
    const PixelFormat high{16, 16, 32, false, 0xF800, 0x7E0, 0x1F};
    EXPECT_EQ(high.stride(1), 4U);
    EXPECT_EQ(high.stride(2), 4U);
    EXPECT_EQ(high.stride(3), 8U);
    const PixelFormat packed{24, 24, 32, false, 0xFF0000, 0xFF00, 0xFF};
    EXPECT_EQ(packed.stride(1), 4U);
    EXPECT_EQ(packed.stride(4), 12U);
    EXPECT_EQ(packed.stride(5), 16U);
    const PixelFormat narrow{15, 16, 16, false, 0x7C00, 0x3E0, 0x1F};
    EXPECT_EQ(narrow.stride(3), 6U);
}

/* ---- the store of the newest picture ---- */

struct Listener final : FrameListener {
    void arrives(const FrameView& frame, uint64_t n, RowSupply& rows) override {
        ++calls;
        number = n;
        const uint8_t* first = rows.rows(0, frame.size.height / 2);
        half.assign(first, first + static_cast<size_t>(frame.size.width) *
                                       static_cast<size_t>(frame.size.height / 2));
        EXPECT_EQ(*rows.rows(0, 1), half.front()) << "rows from before may be asked for again";
    }
    int calls = 0;
    uint64_t number = 0;
    std::vector<uint8_t> half;
};

TEST(FrameStoring, KeepsTheNewestPicture) {
    FrameStore store(1);
    EXPECT_TRUE(store.empty());
    EXPECT_FALSE(store.read([](const FrameView&, uint64_t) { FAIL(); }));
    for (uint32_t size : {10U, 200U, 3U, 90U}) { // also much smaller, which gives memory back
        const Source source = tests::noise(static_cast<int>(size), static_cast<int>(size), 1, size);
        ASSERT_TRUE(store.put(source.bytes.data(), size, size));
        EXPECT_TRUE(store.read([&](const FrameView& frame, uint64_t) {
            EXPECT_EQ(frame.size, (Size{source.width, source.height}));
            EXPECT_EQ(std::memcmp(frame.pixels, source.bytes.data(), source.bytes.size()), 0);
        }));
    }
    EXPECT_FALSE(store.empty());
}

TEST(FrameStoring, ShowsTheNextPictureToOneListenerOnce) {
    FrameStore store(1);
    Listener listener;
    const Source first = tests::noise(9, 7, 1, 1);
    const Source second = tests::noise(9, 7, 1, 2);
    store.expect(listener);
    ASSERT_TRUE(store.put(first.bytes.data(), 9, 7));
    EXPECT_EQ(listener.calls, 1);
    EXPECT_EQ(listener.number, 1U);
    EXPECT_TRUE(std::equal(listener.half.begin(), listener.half.end(), first.bytes.begin()));
    ASSERT_TRUE(store.put(second.bytes.data(), 9, 7));
    EXPECT_EQ(listener.calls, 1) << "until it expects again";
    store.read([&](const FrameView& frame, uint64_t number) {
        EXPECT_EQ(number, 2U);
        EXPECT_EQ(std::memcmp(frame.pixels, second.bytes.data(), second.bytes.size()), 0);
    });
    Listener other;
    store.expect(listener);
    store.expect(other);
    store.forget(listener);
    ASSERT_TRUE(store.put(first.bytes.data(), 9, 7));
    EXPECT_EQ(listener.calls, 1);
    EXPECT_EQ(other.calls, 1);
    store.expect(other);
    store.forget(other);
    ASSERT_TRUE(store.put(first.bytes.data(), 9, 7));
    EXPECT_EQ(other.calls, 1);
}

/* Bytes that end where the next may not be touched. */
class EdgeOfMemory {
public:
    explicit EdgeOfMemory(const std::vector<uint8_t>& bytes) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        m_length = (bytes.size() + page - 1) / page * page + page;
        m_pages = static_cast<uint8_t*>(
            mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        EXPECT_EQ(mprotect(m_pages + m_length - page, page, PROT_NONE), 0);
        m_first = m_pages + m_length - page - bytes.size();
        std::copy(bytes.begin(), bytes.end(), m_first);
    }
    ~EdgeOfMemory() { munmap(m_pages, m_length); }
    EdgeOfMemory(const EdgeOfMemory&) = delete;
    EdgeOfMemory& operator=(const EdgeOfMemory&) = delete;
    const uint8_t* first() const { return m_first; }

private:
    size_t m_length = 0;
    uint8_t* m_pages = nullptr;
    uint8_t* m_first = nullptr;
};

TEST(FrameStoring, CopiesPastTheCachesAreTheSame) {
    for (const RowKernels* set : kernelSets()) {
        const Source source = tests::noise(1024, 3, 1);
        AlignedVector<uint8_t> to(source.bytes.size() + 64, 0xA5);
        for (const size_t bytes : {size_t{0}, size_t{64}, size_t{128}, size_t{2048}}) {
            set->copyPastCaches(source.bytes.data() + 3, to.data() + 64, bytes);
            set->settle();
            EXPECT_TRUE(std::equal(to.begin() + 64, to.begin() + 64 + static_cast<ptrdiff_t>(bytes),
                                   source.bytes.begin() + 3))
                << set->name;
            EXPECT_EQ(to[64 + bytes], 0xA5) << set->name << " writes no more";
        }
    }
}

/* The rows come while the picture is being drawn; what is drawn must be no different. */
TEST(FrameStoring, DrawsThePictureWhileItComesIn) {
    struct Drawing final : FrameListener {
        void arrives(const FrameView& frame, uint64_t, RowSupply& rows) override {
            const Plan plan = makePlan(frame.size, window, view);
            resampler.draw(frame, plan, {}, out.data(), static_cast<size_t>(window.width) * 4, &rows);
        }
        Size window{61, 47};
        View view;
        Resampler resampler;
        std::vector<uint8_t> out = std::vector<uint8_t>(61 * 47 * 4);
    };
    for (int turns = 0; turns < 4; ++turns) {
        // Odd, tiny, and large enough to be copied past the caches.
        for (const auto& size : {Size{150, 120}, Size{151, 121}, Size{1, 1}, Size{5, 3}, Size{2001, 1501}}) {
            FrameStore store(3);
            Drawing listener;
            listener.view.quarterTurns = turns;
            const Source source = tests::noise(size.width, size.height, 3, static_cast<uint32_t>(turns));
            const EdgeOfMemory edge(source.bytes);
            store.expect(listener);
            ASSERT_TRUE(store.put(edge.first(), static_cast<uint32_t>(size.width),
                                  static_cast<uint32_t>(size.height)));
            std::vector<uint8_t> later(listener.out.size());
            store.read([&](const FrameView& frame, uint64_t) {
                EXPECT_EQ(std::memcmp(frame.pixels, source.bytes.data(), source.bytes.size()), 0);
                Resampler resampler;
                resampler.draw(frame, makePlan(frame.size, listener.window, listener.view), {}, later.data(),
                               61 * 4);
            });
            EXPECT_EQ(listener.out, later) << turns << ", " << size.width << " x " << size.height;
        }
    }
}

} // namespace
} // namespace kolt::render
