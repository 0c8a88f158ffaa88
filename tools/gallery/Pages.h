// The pages of the gallery. Each function makes one page or window, whose owner is the caller.
#pragma once

#include <QString>
#include <functional>
#include <vector>

class QWidget;

struct Page {
    QString name;  // of the screenshot
    QString title; // of the tab; empty for a window of its own
    std::function<QWidget*()> make;
};

// Controls in their states, pictures, colours.
std::vector<Page> ControlPages();
std::vector<Page> PicturePages();
// Dialogs and windows; each is a window of its own.
std::vector<Page> WindowPages();
