// What the hint about the firewall asks.
#pragma once

class CTestFireWall {
public:
    // Deliberate: always true. A firewall can't be asked from within the program; the hint stands for the
    // case that an operator has to be reminded of it.
    static bool IsFirWallOpened() { return true; }
};
