// What stands in the main window's menus, and which of it a selection allows. Plain data: no widgets.
#pragma once

#include <optional>
#include <vector>

// The menus of the title bar, in their order.
enum _MAIN_MENU_ { MENU_FILE, MENU_VIEW, MENU_CAMERA, MENU_SETTING, MENU_TOOL, MENU_LANG, MENU_HELP };
constexpr int kMainMenus = MENU_HELP + 1;

// Numbers of the actions that have a menu entry.
enum _MENU_ACTION_ {
    ACTION_SAVE_IMG = 0,
    ACTION_EXIT = 1,
    ACTION_ZOOM_IN = 2,
    ACTION_ZOOM_OUT = 3,
    ACTION_ZOOM_TO_FIT = 4,
    ACTION_ZOOM_RESUME = 5,
    ACTION_DISPLAY_30 = 8,
    ACTION_DISPLAY_60 = 9,
    ACTION_DISPLAY_OFF = 10,
    ACTION_CONNECT = 21,
    ACTION_CONTINOUS_SHOT = 22,
    ACTION_RECORD = 23,
    ACTION_LOAD_FEATURES = 24,
    ACTION_SAVE_FEATURES = 25,
    ACTION_ADD_REMOTE_CAMERA = 27,
    ACTION_SAVE_GENICAM_FILE = 28,
    ACTION_FEATURE = 29,
    ACTION_OPTIONS = 30,
    ACTION_IP_CONFIGURATOR = 31,
    ACTION_FIRMWARE_UPDATOR = 32,
    ACTION_LANG_ENG = 33,
    ACTION_LANG_CH = 34,
    ACTION_OPERATOR = 35,
    ACTION_ABOUT = 36,
};

// Places in a menu that are no action of ours.
constexpr int kSeparator = -1;
constexpr int kDisplayModeMenu = -2; // the submenu
constexpr int kCentralToggles = -3;  // what shows and hides the docks and the tool bar

// The places of a menu, from top to bottom.
const std::vector<int>& MenuPlaces(_MAIN_MENU_ menu);
const std::vector<int>& DisplayModeActions();
// What needs a camera; ACTION_FEATURE goes by a rule of its own.
const std::vector<int>& CameraActions();

struct _MENU_STATE_ {
    std::vector<int> enabled; // of CameraActions; the others are off
    bool displayMode = false; // the submenu
    // Without a value it stays as it is.
    std::optional<bool> feature;   // whether ACTION_FEATURE can be chosen
    std::optional<bool> connected; // which text ACTION_CONNECT has
    std::optional<bool> live;      // which text ACTION_CONTINOUS_SHOT has
};
// With an item selected that is no camera; `nType` is that of the device tree.
_MENU_STATE_ MenuStateOfItem(int nType);
// With a camera in this state selected, `bFrame` telling whether it holds a frame. Nothing for a state that
// there isn't.
std::optional<_MENU_STATE_> MenuStateOfCamera(int nState, bool bFrame);
