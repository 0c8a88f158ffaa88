// Rate arithmetic of the frame pipeline, free of threads and clocks.
#pragma once

#include <cstdint>

// Frames per second, worked out once a second from a running count.
class CRateMeter {
public:
    // One pass with the present count at `nowMs` (monotonic milliseconds). Returns the rate in `rate`, which
    // stays as it is until a second is full.
    void Tick(int64_t count, double nowMs, float& rate);

    // The count begins at 0 again; the second in progress goes on.
    void ClearMark() { m_nMark = 0; }

private:
    int64_t m_nMark = 0;
    double m_dStartMs = 0;
    float m_fElapsedMs = 0;
};

// Shifts the sleep of the display thread until drawing keeps the wanted rate; one step a second.
class CDisplayPacer {
public:
    // New display interval in milliseconds. `actualRate` is what arrives, `displayRate` what was drawn, in
    // frames per second.
    int Step(int configRate, float actualRate, float displayRate, bool triggerMode);

    int GetAdjustment() const { return m_nAdjustment; }

private:
    int m_nAdjustment = 0; // milliseconds taken off the nominal interval; not bounded
};

// Megabits per second; for a JPEG stream (`jpeg`) megabytes per second of frames of `lastLength` bytes.
float BandwidthOf(bool jpeg, uint32_t lastLength, uint32_t width, uint32_t height, int pixelBits,
                  float frameRate);
