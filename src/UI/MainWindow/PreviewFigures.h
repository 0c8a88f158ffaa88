// What the preview works out from counters and colours.
#pragma once

#include <cstdint>

struct _YUV_ {
    int y;
    int u;
    int v;
};

// Of 8-bit RGB; each value is cut to 0 to 255. The factors are those of PAL (ITU-R BT.470) with the chroma
// moved up by 128; that of blue in V is 0.1 exactly.
_YUV_ YuvOf(int r, int g, int b);

// Tells from the library's counters whether the network loses too much.
class CNetworkWatch {
public:
    void Reset() { m_nLastLost = m_nLastReceived = 0; }
    // One statistics tick: bytes received and packets lost since the start of the stream, and bytes of a
    // packet (0 or less when unknown). True when more than a tenth of the packets of this tick and more than
    // 100 in all were lost.
    bool Update(int64_t receivedBytes, int64_t lostPackets, int packetSize);

private:
    int64_t m_nLastLost = 0;
    int64_t m_nLastReceived = 0; // packets
};

// Losses below 100 are shown as none.
constexpr int64_t kShownLoss = 100;
constexpr int64_t ShownLoss(int64_t count) {
    return count < kShownLoss ? 0 : count;
}

// The display rate that is shown, frames per second: no more than the camera delivers and than the display is
// set to.
float ShownDisplayRate(float display, float acquisition, float configured);
