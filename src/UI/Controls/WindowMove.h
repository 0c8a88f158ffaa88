// Dragging of frameless windows where a client may not place its windows itself.
#pragma once

class QWidget;

// Hands the drag that is going on to the window system. False where windows place themselves (X11): the
// caller then moves the window by the pointer's way, which also works without a window manager.
bool MoveBySystem(QWidget& window);
