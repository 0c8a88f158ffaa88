#include "UI/MainWindow/MainMenu.h"

#include "Camera/QCamera.h"
#include "UI/MainWindow/QDevListWidget.h"

#include <algorithm>

const std::vector<int>& MenuPlaces(_MAIN_MENU_ menu) {
    static const std::vector<int> places[kMainMenus] = {
        {ACTION_SAVE_IMG, ACTION_EXIT},
        {ACTION_ZOOM_IN, ACTION_ZOOM_OUT, ACTION_ZOOM_TO_FIT, ACTION_ZOOM_RESUME, kSeparator,
         kDisplayModeMenu, kSeparator, kCentralToggles},
        {ACTION_CONNECT, ACTION_CONTINOUS_SHOT, ACTION_RECORD, ACTION_ADD_REMOTE_CAMERA, kSeparator,
         ACTION_LOAD_FEATURES, ACTION_SAVE_FEATURES, kSeparator, ACTION_SAVE_GENICAM_FILE},
        {ACTION_FEATURE, ACTION_OPTIONS},
        {ACTION_IP_CONFIGURATOR, ACTION_FIRMWARE_UPDATOR},
        {ACTION_LANG_ENG, ACTION_LANG_CH},
        {ACTION_OPERATOR, ACTION_ABOUT},
    };
    return places[menu];
}

const std::vector<int>& DisplayModeActions() {
    static const std::vector<int> actions{ACTION_DISPLAY_30, ACTION_DISPLAY_60, ACTION_DISPLAY_OFF};
    return actions;
}

const std::vector<int>& CameraActions() {
    static const std::vector<int> actions{
        ACTION_SAVE_IMG,      ACTION_ZOOM_IN,       ACTION_ZOOM_OUT,          ACTION_ZOOM_TO_FIT,
        ACTION_ZOOM_RESUME,   ACTION_CONNECT,       ACTION_CONTINOUS_SHOT,    ACTION_RECORD,
        ACTION_LOAD_FEATURES, ACTION_SAVE_FEATURES, ACTION_ADD_REMOTE_CAMERA, ACTION_SAVE_GENICAM_FILE};
    return actions;
}

_MENU_STATE_ MenuStateOfItem(int nType) {
    _MENU_STATE_ state;
    if (nType == QDevListWidget::ITEM_INTERFACE)
        state.enabled = {ACTION_ADD_REMOTE_CAMERA};
    return state;
}

std::optional<_MENU_STATE_> MenuStateOfCamera(int nState, bool bFrame) {
    _MENU_STATE_ state;
    switch (nState) {
    case CAMERA_CLOSED:
        state.enabled = {ACTION_CONNECT};
        break;
    case CAMERA_OPEN:
        state.enabled = {ACTION_CONNECT, ACTION_CONTINOUS_SHOT, ACTION_LOAD_FEATURES, ACTION_SAVE_FEATURES,
                         ACTION_SAVE_GENICAM_FILE};
        if (bFrame)
            state.enabled.insert(state.enabled.end(), {ACTION_SAVE_IMG, ACTION_ZOOM_IN, ACTION_ZOOM_OUT,
                                                       ACTION_ZOOM_TO_FIT, ACTION_ZOOM_RESUME});
        break;
    case CAMERA_GRABBING:
        // Features are exchanged, and cameras added by hand, while no stream runs.
        std::copy_if(CameraActions().begin(), CameraActions().end(), std::back_inserter(state.enabled),
                     [](int action) {
                         return action != ACTION_LOAD_FEATURES && action != ACTION_SAVE_FEATURES &&
                                action != ACTION_ADD_REMOTE_CAMERA;
                     });
        state.displayMode = true;
        break;
    default:
        return std::nullopt;
    }
    state.feature = nState != CAMERA_CLOSED;
    state.connected = nState != CAMERA_CLOSED;
    state.live = nState == CAMERA_GRABBING;
    return state;
}
