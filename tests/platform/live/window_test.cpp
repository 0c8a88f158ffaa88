// The window and the drawing into it, with the real render library on a virtual display.
#include "Screen.h"
#include "Window.h"

#include "Desktop.h"

#include <gmock/gmock.h>

#include <cstdlib>

using live::Fractions;
using live::KeepAspect;
using live::Size;
using live::Window;
using live_test::Desktop;
using live_test::Eventually;
using live_test::Rgb;
using testing::HasSubstr;

namespace {

constexpr Rgb red = {255, 0, 0};
constexpr Rgb green = {0, 255, 0};
constexpr Rgb blue = {0, 0, 255};
constexpr Rgb white = {255, 255, 255};
constexpr Rgb border = {0x14, 0x18, 0x1D}; // what the render library puts around a picture

/// Red, green, blue, white from the top left in reading order.
std::vector<uint8_t> Quarters(uint32_t width, uint32_t height) {
    std::vector<uint8_t> pixels;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const Rgb& c = y < height / 2 ? (x < width / 2 ? red : green) : (x < width / 2 ? blue : white);
            pixels.insert(pixels.end(), c.begin(), c.end());
        }
    return pixels;
}

struct Shape {
    Size picture;
    Size window;
    Fractions expected;
};
class Shapes : public testing::TestWithParam<Shape> {};

TEST_P(Shapes, FitWithoutStretching) {
    const Fractions place = KeepAspect(GetParam().picture, GetParam().window);
    EXPECT_NEAR(place.top, GetParam().expected.top, 1e-6);
    EXPECT_NEAR(place.bottom, GetParam().expected.bottom, 1e-6);
    EXPECT_NEAR(place.left, GetParam().expected.left, 1e-6);
    EXPECT_NEAR(place.right, GetParam().expected.right, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Table, Shapes,
                         testing::Values(Shape{{100, 50}, {200, 100}, {0, 1, 0, 1}},
                                         Shape{{100, 50}, {100, 100}, {0.25F, 0.75F, 0, 1}},
                                         Shape{{50, 100}, {100, 100}, {0, 1, 0.25F, 0.75F}},
                                         Shape{{100, 100}, {400, 100}, {0, 1, 0.375F, 0.625F}},
                                         Shape{{0, 0}, {100, 100}, {0, 1, 0, 1}},
                                         Shape{{100, 50}, {0, 0}, {0, 1, 0, 1}}));

TEST(FirstSize, IsThePicturesOwnOrFourFifthsOfTheScreen) {
    EXPECT_EQ(live::FirstSize({640, 480}, {1920, 1080}), (Size{640, 480}));
    EXPECT_EQ(live::FirstSize({3840, 2160}, {1920, 1080}), (Size{1536, 864}));
    EXPECT_EQ(live::FirstSize({1000, 5000}, {1920, 1080}), (Size{173, 864}));
    EXPECT_EQ(live::FirstSize({8192, 1}, {1920, 1080}), (Size{1536, 64}));
}

TEST(WindowOpen, WithoutADisplayItSaysWhatToDo) {
    const std::string display = std::getenv("DISPLAY");
    std::string error;
    unsetenv("DISPLAY");
    EXPECT_EQ(Window::Open({100, 100}, error), nullptr);
    EXPECT_THAT(error, HasSubstr("DISPLAY is not set"));
    EXPECT_THAT(error, HasSubstr("--headless"));
    setenv("DISPLAY", ":987654", 1);
    EXPECT_EQ(Window::Open({100, 100}, error), nullptr);
    EXPECT_THAT(error, HasSubstr("the display :987654 cannot be opened"));
    setenv("DISPLAY", display.c_str(), 1);
}

class WindowTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        window = Window::Open({400, 300}, error);
        ASSERT_NE(window, nullptr) << error;
        window->SetTitle("window test " + std::to_string(getpid()));
        ASSERT_TRUE(Eventually(
            [this] { return (id = desktop.Find("window test " + std::to_string(getpid()))) != 0; }));
    }

    /// Waits until the window has told of something that `wanted` accepts.
    template<typename Wanted>
    bool Happens(Wanted wanted) {
        return Eventually([&] { return wanted(window->Look()); });
    }

    bool Shows(uint32_t x, uint32_t y, const Rgb& colour) {
        return Eventually([&] { return desktop.Look(id).Shows(x, y, colour, 3); });
    }

    Desktop desktop;
    std::unique_ptr<Window> window;
    xcb_window_t id = 0;
};

TEST_F(WindowTest, HasItsSizeAndTitle) {
    EXPECT_EQ(desktop.SizeOf(id), (std::array<uint32_t, 2>{400, 300}));
    window->SetTitle("window test \xC3\xA4\xE7\x9B\xB8");
    EXPECT_TRUE(Eventually([&] { return desktop.Title(id) == "window test \xC3\xA4\xE7\x9B\xB8"; }));
}

TEST_F(WindowTest, KeysCloseAndTurn) {
    for (const xcb_keysym_t key : {xcb_keysym_t{'q'}, xcb_keysym_t{0xFF1B}}) {
        desktop.Press(id, key);
        EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.close; })) << key;
    }
    desktop.Press(id, 'l');
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.turns == 1; }));
    desktop.Press(id, 'r');
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.turns == -1; }));
}

TEST_F(WindowTest, OtherKeysMeanNothing) {
    desktop.Press(id, 'x');
    desktop.Press(id, 'l');
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) {
        EXPECT_FALSE(events.close);
        return events.turns == 1;
    }));
}

TEST_F(WindowTest, TheCloseButtonCloses) {
    desktop.AskToClose(id);
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.close; }));
}

TEST_F(WindowTest, AWindowDestroyedBySomebodyElseCloses) {
    desktop.Destroy(id);
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.close; }));
}

TEST_F(WindowTest, TellsItsNewSize) {
    desktop.Resize(id, 500, 200);
    EXPECT_TRUE(Happens([](const live::WindowEvents& events) { return events.resized; }));
    EXPECT_EQ(window->CurrentSize(), (Size{500, 200}));
    window->Resize({300, 250});
    EXPECT_TRUE(Eventually([&] { return desktop.SizeOf(id) == std::array<uint32_t, 2>{300, 250}; }));
}

class ScreenTest : public WindowTest, public testing::WithParamInterface<uint32_t> {
protected:
    live::Picture Colour(uint32_t width, uint32_t height) {
        memory = Quarters(width, height);
        return {memory.data(), width, height, true};
    }

    std::vector<uint8_t> memory;
};

TEST_P(ScreenTest, DrawsTheWholePicture) {
    live::Screen screen(*window, GetParam());
    const live::Failure failure = screen.Show(Colour(400, 300));
    ASSERT_FALSE(failure) << live::Describe(failure);
    EXPECT_TRUE(Shows(10, 10, red));
    EXPECT_TRUE(Shows(390, 10, green));
    EXPECT_TRUE(Shows(10, 290, blue));
    EXPECT_TRUE(Shows(390, 290, white));
}

TEST_P(ScreenTest, KeepsTheShapeWithBorders) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(100, 150))); // 200 x 300 of 400 x 300
    EXPECT_TRUE(Shows(110, 10, red));
    EXPECT_TRUE(Shows(290, 290, white));
    EXPECT_TRUE(Shows(50, 150, border));
    EXPECT_TRUE(Shows(350, 150, border));
}

TEST_P(ScreenTest, FollowsTheWindowWithoutANewFrame) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(400, 300)));
    ASSERT_TRUE(Shows(390, 290, white));
    desktop.Resize(id, 800, 300); // the picture is 400 x 300 in the middle
    ASSERT_TRUE(Happens([](const live::WindowEvents& events) { return events.resized; }));
    screen.Refresh();
    EXPECT_TRUE(Shows(100, 150, border));
    EXPECT_TRUE(Shows(210, 10, red));
    EXPECT_TRUE(Shows(590, 290, white));
    EXPECT_TRUE(Shows(700, 150, border));
}

TEST_P(ScreenTest, TurnsAndFitsTheTurnedPicture) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(400, 300)));
    screen.Turn(1); // 225 x 300 in the middle; to the left: green comes to the top left
    EXPECT_TRUE(Shows(95, 10, green));
    EXPECT_TRUE(Shows(305, 10, white));
    EXPECT_TRUE(Shows(95, 290, red));
    EXPECT_TRUE(Shows(40, 150, border));
    screen.Turn(-2);
    EXPECT_TRUE(Shows(95, 10, blue));
    screen.Turn(1);
    EXPECT_TRUE(Shows(10, 10, red));
}

TEST_P(ScreenTest, ChangesFromColourToGreyAndKeepsTheTurn) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(400, 300)));
    screen.Turn(2);
    ASSERT_TRUE(Shows(10, 10, white));
    std::vector<uint8_t> grey(400 * 300, 40);
    std::fill(grey.begin(), grey.begin() + 400 * 150, 200);
    ASSERT_FALSE(screen.Show({grey.data(), 400, 300, false}));
    EXPECT_TRUE(Shows(200, 10, {40, 40, 40}));
    EXPECT_TRUE(Shows(200, 290, {200, 200, 200}));
}

TEST_P(ScreenTest, PicturesOfAnotherSizeFit) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(400, 300)));
    ASSERT_FALSE(screen.Show(Colour(300, 300)));
    EXPECT_TRUE(Shows(60, 10, red));
    EXPECT_TRUE(Shows(20, 10, border));
}

TEST_P(ScreenTest, WhatIsReadBackIsWhatTheScreenShows) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(100, 150)));
    ASSERT_TRUE(Shows(290, 290, white));
    std::vector<uint8_t> read;
    live::Picture picture;
    ASSERT_EQ(window->ReadBack(read, picture), "");
    EXPECT_EQ(picture.width, 400U);
    EXPECT_EQ(picture.height, 300U);
    EXPECT_EQ(read, desktop.Look(id).rgb);
}

TEST_P(ScreenTest, AWindowThatIsGoneGivesAFailureAndNoCrash) {
    live::Screen screen(*window, GetParam());
    ASSERT_FALSE(screen.Show(Colour(400, 300)));
    desktop.Destroy(id);
    ASSERT_TRUE(Happens([](const live::WindowEvents& events) { return events.close; }));
    for (int i = 0; i < 3; ++i)
        screen.Show(Colour(400, 300));
    screen.Refresh();
    std::vector<uint8_t> read;
    live::Picture picture;
    EXPECT_THAT(window->ReadBack(read, picture), HasSubstr("can only be read while"));
}

INSTANTIATE_TEST_SUITE_P(Engines, ScreenTest, testing::Values(1U, 2U));

} // namespace
