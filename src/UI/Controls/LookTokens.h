// The colours and sizes of the look, in one place: the style sheet, the palette, the icons and the tests take
// them from here. Which colour may stand on which is told, and tested, by textPairs.
#pragma once

#include <QRgb>

namespace Look {

// Text and icons.
constexpr QRgb ink = 0xFF1F2933;         // text
constexpr QRgb ink2 = 0xFF52606D;        // secondary text, icons
constexpr QRgb disabledInk = 0xFF66727F; // text of what can't be used now, hints in empty fields
constexpr QRgb mute = 0xFF8A96A3;        // outlines of check boxes, arrows; never text
constexpr QRgb disabledIcon = 0xFFC3CCD4;
constexpr QRgb onAccent = 0xFFFFFFFF; // text on accentInk and accentDeep

// Surfaces.
constexpr QRgb surface = 0xFFFFFFFF;
constexpr QRgb canvas = 0xFFF4F6F8; // behind panels
constexpr QRgb hover = 0xFFEDF1F5;  // what the pointer is over
constexpr QRgb pressed = 0xFFDFE6ED;
constexpr QRgb line = 0xFFDDE4EA;      // hairlines
constexpr QRgb fieldLine = 0xFFC5CED6; // outlines of fields, buttons and windows
constexpr QRgb status = 0xFFECF4F4;    // status bar of the preview
constexpr QRgb picture = 0xFF14181D;   // behind the live picture

// Accent: selection, slider, focus ring. The two darker ones carry text or are text.
constexpr QRgb accent = 0xFF3E86E3;
constexpr QRgb accentInk = 0xFF2567BE;
constexpr QRgb accentDeep = 0xFF1D5199;
constexpr QRgb accentTint = 0xFFE8F1FD;

// States, always with an icon or a word; the -Ink ones are for text.
constexpr QRgb good = 0xFF2F9E66;
constexpr QRgb goodInk = 0xFF1E7A4C;
constexpr QRgb warning = 0xFFD98A1F;
constexpr QRgb warningInk = 0xFF8A560B;
constexpr QRgb bad = 0xFFD64545;
constexpr QRgb badInk = 0xFFBD2F2F;
constexpr QRgb badTint = 0xFFFDECEC;

// Sizes in device-independent pixels, multiples of 4 where nothing else is at stake.
constexpr int grid = 4;
constexpr int rowHeight = 27;
constexpr int fieldHeight = 26;
constexpr int buttonHeight = 28;
constexpr int toolButtonWidth = 44;
constexpr int toolButtonHeight = 32;
constexpr int dockTitleHeight = 34;
constexpr int titleBarHeight = 40;
constexpr int dialogTitleHeight = 32;
constexpr int iconSize = 20;
constexpr int fontPixels = 13;
constexpr int grip = 5; // width of the edge that resizes a window

struct Token {
    const char* name;
    QRgb colour;
};

// By the names that the style sheet uses ("@ink").
constexpr Token tokens[] = {
    {"ink", ink},
    {"ink2", ink2},
    {"disabledInk", disabledInk},
    {"mute", mute},
    {"disabledIcon", disabledIcon},
    {"onAccent", onAccent},
    {"surface", surface},
    {"canvas", canvas},
    {"hover", hover},
    {"pressed", pressed},
    {"line", line},
    {"fieldLine", fieldLine},
    {"status", status},
    {"picture", picture},
    {"accent", accent},
    {"accentInk", accentInk},
    {"accentDeep", accentDeep},
    {"accentTint", accentTint},
    {"good", good},
    {"goodInk", goodInk},
    {"warning", warning},
    {"warningInk", warningInk},
    {"bad", bad},
    {"badInk", badInk},
    {"badTint", badTint},
};

struct TextPair {
    const char* text;
    const char* background;
};

// Every combination of text and background that the style sheet makes; each reaches 4.5 to 1.
constexpr TextPair textPairs[] = {
    {"ink", "surface"},
    {"ink", "canvas"},
    {"ink", "hover"},
    {"ink", "pressed"},
    {"ink", "accentTint"},
    {"ink", "status"},
    {"ink", "badTint"},
    {"ink2", "surface"},
    {"ink2", "canvas"},
    {"ink2", "hover"},
    {"ink2", "status"},
    {"ink2", "accentTint"},
    {"disabledInk", "surface"},
    {"disabledInk", "canvas"},
    {"accentInk", "surface"},
    {"accentInk", "canvas"},
    {"accentInk", "accentTint"},
    {"accentInk", "hover"},
    {"onAccent", "accentInk"},
    {"onAccent", "accentDeep"},
    {"goodInk", "surface"},
    {"warningInk", "surface"},
    {"badInk", "surface"},
    {"badInk", "badTint"},
    {"accentDeep", "accentTint"},
    {"accentDeep", "surface"},
    {"badInk", "canvas"},
};

} // namespace Look
