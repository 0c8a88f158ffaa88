// A GigE Vision camera in software, to be run inside a test or by the program kolt_virtual_camera.
//
// It answers GVCP on UDP port 3956 of one IPv4 address (a loopback address, or an address of a network
// interface), serves a GenICam XML, and streams moving test pictures by GVSP. Any number of cameras may live
// in one process, each on an address of its own. Faults are switched by `SetFaults`, by vendor registers
// (VendorRegisters.h) or at the start.
//
//     vcam::Config config;
//     config.address = "127.0.0.7";
//     vcam::VirtualCamera camera(config);
//     camera.Start();                       // answers from here on
#ifndef VCAM_VIRTUALCAMERA_H
#define VCAM_VIRTUALCAMERA_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vcam {

enum class Model : uint8_t {
    Colour,
    Mono,     // colour features are in the XML and not implemented
    LineScan, // monochrome; Height is the number of lines that make a frame
    Small     // few features: what every camera has, and exposure and gain
};

enum class XmlFault : uint32_t {
    None = 0,
    Truncated = 1,    // ends in the middle, the announced length is that of the rest
    NotXml = 2,       // random bytes
    Huge = 3,         // well formed, 24 MB
    HttpLocation = 4, // "http://..." instead of the device's memory
    BadZip = 5,       // announced as zip, its bytes are damaged
    NoLocation = 6,   // empty text where the location belongs
    TooLong = 7,      // the announced length reaches beyond the memory
    Cyclic = 8,       // well formed, nodes refer to one another in a circle
};

// All off is a camera without faults. Per mille is of packets, drawn by a generator that depends on nothing
// but seed, frame, packet and attempt.
struct Faults {
    uint32_t lossPerMille = 0;    // packets not put on the wire
    bool resendsLoseToo = false;  // the loss hits packets that are sent again as well
    bool losePayloadOnly = false; // leader and trailer always pass
    bool ignoreResend = false;    // answers no PACKETRESEND
    bool silent = false;          // dead: answers nothing, sends nothing, acts on nothing
    bool streamSilent = false;    // answers, but no packet of a frame leaves
    bool denyControl = false;   // answers "access denied" to each wish for control, as if another host had it
    bool refuseWrites = false;  // answers "write protected" to each write of a feature register
    uint32_t answerDelayMs = 0; // each register access takes this long; 0: at once
    bool announcePending = true; // with answerDelayMs: PENDING_ACK comes first
    uint32_t changedWidth = 0;   // frames come with these sizes, whatever Width and Height say; 0: no change
    uint32_t changedHeight = 0;
    uint32_t extraBytes = 0; // each frame carries so many bytes more than its leader announces
    uint32_t duplicatePerMille = 0;
    uint32_t reorderPerMille = 0;  // packets that change places with the next one
    XmlFault xml = XmlFault::None; // seen by whoever opens the camera next
};

struct Config {
    std::string address = "127.0.0.1";
    // Empty: the interface that has `address`. Named: the camera adds the address to that interface when it
    // is missing (wants CAP_NET_ADMIN) and takes it away again at the end.
    std::string interface;
    std::string mask; // empty: that of the interface
    std::string gateway = "0.0.0.0";
    std::array<uint8_t, 6> mac{}; // all zero: made from serial number and address
    Model model = Model::Colour;
    std::string manufacturer = "KOLT";
    std::string modelName; // empty: by model
    std::string deviceVersion = "1.0.0";
    std::string manufacturerInfo = "Camera in software";
    std::string serial = "VC000001";
    std::string userName;
    uint32_t sensorWidth = 1920;       // a multiple of 16, 64 to 16384
    uint32_t sensorHeight = 1080;      // a multiple of 4, 64 to 16384; line scan: the most lines of a frame
    uint32_t pixelFormat = 0x01080001; // GVSP code at the start
    double frameRate = 30.0;           // line scan: of frames of `sensorHeight` lines
    uint32_t rebootMs = 2000;          // how long a reset takes, from the answer to the next one
    uint32_t linkSpeedMbps = 2500;     // packets leave no faster; 0: as fast as they go
    bool unpaced = false;              // frame after frame without a pause, whatever the features say
    uint32_t mtu = 0; // packets above this are swallowed, as by a narrow path; 0: no such limit
    bool zippedXml = false;
    uint64_t seed = 1;
    Faults faults;
};

// What really happened, since Start. A packet is leader, payload or trailer of a frame. Packets are counted
// when the system has taken them, so a client may have the last of a frame a moment before: wait for
// !IsStreaming() to compare.
struct Counters {
    uint64_t framesStarted = 0;
    uint64_t framesCompleted = 0; // the last packet was sent or dropped on purpose
    uint64_t framesAborted = 0;   // cut off by a stop or a closed channel, or without a route
    uint64_t packetsOfFrames = 0; // that the frames started consist of
    uint64_t packetsSent = 0;     // put on the wire for the first time, resent ones included when they were
    uint64_t packetsDropped = 0;  // dropped on purpose, first attempts
    uint64_t packetsMissing = 0;  // dropped and to this moment never put on the wire
    uint64_t framesMissingPackets = 0; // frames that have at least one of these
    uint64_t resendRequests = 0;       // PACKETRESEND commands
    uint64_t resendsServed = 0;        // of these, done: answered, or passed over on purpose
    uint64_t packetsRequested = 0;     // packets that they ask for
    uint64_t packetsResent = 0;        // put on the wire because of them
    uint64_t resendsDropped = 0;       // dropped on purpose again
    uint64_t packetsUnavailable = 0;   // asked for, but no longer (or never) at hand
    uint64_t packetsDuplicated = 0;    // sent once more on purpose
    uint64_t packetsReordered = 0;     // sent behind their successor on purpose
    uint64_t packetsTooBig = 0;        // swallowed since they exceed the MTU
    uint64_t sendErrors = 0;           // refused by the system
    uint64_t bytesSent = 0;            // UDP payload of stream packets
    uint64_t testPackets = 0;
    uint64_t triggersAccepted = 0;
    uint64_t triggersMissed = 0; // came while the camera could take none
    uint64_t commands = 0;       // GVCP commands understood
    uint64_t badCommands = 0;    // datagrams that are none
    uint64_t discoveries = 0;
    uint64_t pendingAnswers = 0;
    uint64_t accessDenied = 0;
    uint64_t writesRefused = 0; // by refuseWrites
    uint64_t heartbeatsExpired = 0;
    uint64_t ignoredWhileSilent = 0;
    uint64_t resets = 0; // by DeviceReset
    uint64_t forcedAddresses = 0;
};

// What is known of one frame, by its block id.
struct FrameLoss {
    uint16_t blockId = 0;
    uint32_t packets = 0; // leader and trailer included
    uint32_t missing = 0; // never put on the wire
};

// A patch of known colour in the picture as it is sent now (region, reversal and exposure taken into
// account). Only patches that are wholly inside are told.
struct Patch {
    std::string name;
    uint32_t x = 0, y = 0, width = 0, height = 0;
    uint8_t red = 0, green = 0, blue = 0;
};

class Flash;

class VirtualCamera {
public:
    explicit VirtualCamera(Config config = {});
    ~VirtualCamera(); // stops
    VirtualCamera(const VirtualCamera&) = delete;
    VirtualCamera& operator=(const VirtualCamera&) = delete;

    // Returns when the camera answers. Throws std::system_error (address taken, no right) or
    // std::invalid_argument.
    void Start();
    // Ends without a word to anyone, like a pulled plug. Start again makes a camera that knows nothing but
    // what real ones keep without power: user sets, files, DeviceUserID, the persistent IP configuration.
    void Stop();

    // All below: any thread, while started.
    std::string Address() const; // dotted; changes by FORCEIP
    Counters GetCounters() const;
    std::vector<FrameLoss>
    LossyFrames() const; // the last frames (up to 1024) that miss packets, oldest first
    Faults GetFaults() const;
    void SetFaults(const Faults& faults);
    std::vector<Patch> Patches() const;
    std::string Xml() const;  // as made, before any fault
    bool IsStreaming() const; // acquiring, or still sending the last frame
    bool IsControlled() const;
    void FireLine(uint32_t line);           // a short pulse on input line 0 to 3, a trigger source
    void SetLine(uint32_t line, bool high); // a level there

    // The register space from the device's side: hooks run, no access right is asked for. False when refused.
    bool ReadRegister(uint32_t address, uint32_t& value);
    bool WriteRegister(uint32_t address, uint32_t value);

private:
    class Impl;
    Impl& Running() const; // throws std::logic_error before Start

    std::unique_ptr<Config> m_config;
    std::shared_ptr<Flash> m_flash; // what the camera keeps without power
    std::unique_ptr<Impl> m_impl;
};

// The number that the strip of 32 squares below the picture's centre carries: the frame's number since the
// start of the acquisition, beginning at 1. `grey` is one byte a pixel of the whole sensor. False when the
// squares can't be read.
bool ReadFrameNumber(const uint8_t* grey, uint32_t stride, uint32_t width, uint32_t height, uint32_t& number);

} // namespace vcam

#endif
