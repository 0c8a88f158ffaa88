// The hands and eyes of a person before a virtual screen: pointer and keys through the X server (XTEST), so
// that window manager, focus and native windows take part, and the screen's pixels as they stand there.
//
// Works on any program's windows. Each object has its own connection; one thread at a time.
#ifndef KOLT_TESTS_SUPPORT_DESKTOP_H
#define KOLT_TESTS_SUPPORT_DESKTOP_H

#include "support/ChildProcess.h"

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>
#include <cstdint>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace kolt::test {

class Desktop {
public:
    // KeySyms of keys without a sign.
    enum Key : uint32_t {
        kReturn = 0xFF0D,
        kEscape = 0xFF1B,
        kTab = 0xFF09,
        kLeft = 0xFF51,
        kUp = 0xFF52,
        kRight = 0xFF53,
        kDown = 0xFF54,
        kShift = 0xFFE1,
        kControl = 0xFFE3,
        kAlt = 0xFFE9,
        kF4 = 0xFFC1,
    };

    // The display of DISPLAY; throws when it isn't there.
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    // Starts openbox in its own look and waits until it manages the screen. It ends with this object.
    void StartWindowManager();

    // --- pointer; positions on the screen
    void Move(QPoint to);
    void Press(uint8_t button = 1);
    void Release(uint8_t button = 1);
    void Click(QPoint at, uint8_t button = 1);
    void DoubleClick(QPoint at);
    // Notches; up, away from the person, is positive.
    void Wheel(QPoint at, int notches);
    // In steps, as a hand does.
    void Drag(QPoint from, QPoint to);

    // --- keys; they go to the window that has the focus
    void Tap(uint32_t key);
    void Tap(Key modifier, uint32_t key);
    // ASCII.
    void Type(const QString& text);

    // --- screen
    QSize Size() const;
    // Where the server has this window. Qt may believe another place for a while, when a window manager takes
    // a window between two of its questions.
    QPoint PositionOf(uint32_t window) const;
    // Whether a click there would reach this window or one within it: it is on the screen, and nothing covers
    // it at that place.
    bool IsOpenAt(uint32_t window, QPoint at) const;
    QImage Grab(QRect area) const;
    QRgb Pixel(QPoint at) const;

private:
    void Fake(uint8_t type, uint8_t detail, QPoint at = {});
    void Settle() const; // all that was sent has been done by the server
    // Keycode of a sign, and whether Shift belongs to it.
    std::pair<uint8_t, bool> CodeOf(uint32_t key) const;

    xcb_connection_t* m_connection = nullptr;
    const xcb_screen_t* m_screen = nullptr;
    std::unique_ptr<ChildProcess> m_manager;
};

} // namespace kolt::test

#endif
