#include "UI/MainWindow/MainMenu.h"

#include <gmock/gmock.h>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::set<int> Enabled(const _MENU_STATE_& state) {
    return {state.enabled.begin(), state.enabled.end()};
}

TEST(MainMenu, PlacesOfEachMenu) {
    EXPECT_THAT(MenuPlaces(MENU_FILE), ElementsAre(0, 1));
    EXPECT_THAT(MenuPlaces(MENU_VIEW),
                ElementsAre(2, 3, 4, 5, kSeparator, kDisplayModeMenu, kSeparator, kCentralToggles));
    EXPECT_THAT(MenuPlaces(MENU_CAMERA), ElementsAre(21, 22, 23, 27, kSeparator, 24, 25, kSeparator, 28));
    EXPECT_THAT(MenuPlaces(MENU_SETTING), ElementsAre(29, 30));
    EXPECT_THAT(MenuPlaces(MENU_TOOL), ElementsAre(31, 32));
    EXPECT_THAT(MenuPlaces(MENU_LANG), ElementsAre(33, 34));
    EXPECT_THAT(MenuPlaces(MENU_HELP), ElementsAre(35, 36));
    EXPECT_THAT(DisplayModeActions(), ElementsAre(8, 9, 10));
    EXPECT_THAT(CameraActions(), ElementsAre(0, 2, 3, 4, 5, 21, 22, 23, 24, 25, 27, 28));
}

TEST(MainMenu, AnItemThatIsNoCameraLeavesAtMostTheRemoteCamera) {
    for (const int type : {-1, 0, 1, 2, 3, 4, 7}) {
        const _MENU_STATE_ state = MenuStateOfItem(type);
        EXPECT_EQ(Enabled(state), type == 3 ? std::set<int>{27} : std::set<int>{}) << type;
        EXPECT_FALSE(state.displayMode);
        EXPECT_FALSE(state.feature || state.connected || state.live) << "they stay as they are";
    }
}

struct StateRow {
    int state;
    bool frame;
    std::set<int> enabled;
    bool displayMode;
    bool feature;
    bool connected;
    bool live;
};

TEST(MainMenu, WhatEachStateOfACameraLeaves) {
    const StateRow rows[] = {
        {0, false, {21}, false, false, false, false},
        {0, true, {21}, false, false, false, false},
        {1, false, {21, 22, 24, 25, 28}, false, true, true, false},
        {1, true, {0, 2, 3, 4, 5, 21, 22, 24, 25, 28}, false, true, true, false},
        {2, false, {0, 2, 3, 4, 5, 21, 22, 23, 28}, true, true, true, true},
        {2, true, {0, 2, 3, 4, 5, 21, 22, 23, 28}, true, true, true, true},
    };
    for (const StateRow& row : rows) {
        const auto state = MenuStateOfCamera(row.state, row.frame);
        ASSERT_TRUE(state);
        EXPECT_EQ(Enabled(*state), row.enabled) << row.state << row.frame;
        EXPECT_EQ(state->displayMode, row.displayMode) << row.state << row.frame;
        EXPECT_EQ(state->feature, row.feature) << row.state << row.frame;
        EXPECT_EQ(state->connected, row.connected) << row.state << row.frame;
        EXPECT_EQ(state->live, row.live) << row.state << row.frame;
    }
    for (const int none : {-1, 3, 100})
        EXPECT_FALSE(MenuStateOfCamera(none, true)) << none;
}

} // namespace
