// The camera's registers for its faults and its counters. They can be read and written without control of the
// camera, so that a second connection can make trouble while a client holds the camera exclusively. They lie
// in the maker's part of the register space and are features of the category VirtualCameraControl too.
#ifndef VCAM_VENDORREGISTERS_H
#define VCAM_VENDORREGISTERS_H

#include <cstdint>

namespace vcam {

constexpr uint32_t kVendorFirst = 0x0F000000;
constexpr uint32_t kVendorLast = 0x0F000FFF;

// Read and write; meaning as in `Faults`. Booleans are 0 and 1.
constexpr uint32_t kVendorLossPerMille = 0x0F000000;
constexpr uint32_t kVendorResendsLoseToo = 0x0F000004;
constexpr uint32_t kVendorLosePayloadOnly = 0x0F000008;
constexpr uint32_t kVendorIgnoreResend = 0x0F00000C;
constexpr uint32_t kVendorSilenceMs =
    0x0F000010; // dead for so long from now; 0xFFFFFFFF: until told by the API
constexpr uint32_t kVendorStreamSilent = 0x0F000014;
constexpr uint32_t kVendorDenyControl = 0x0F000018;
constexpr uint32_t kVendorRefuseWrites = 0x0F00001C;
constexpr uint32_t kVendorAnswerDelayMs = 0x0F000020;
constexpr uint32_t kVendorAnnouncePending = 0x0F000024;
constexpr uint32_t kVendorChangedWidth = 0x0F000028;
constexpr uint32_t kVendorChangedHeight = 0x0F00002C;
constexpr uint32_t kVendorExtraBytes = 0x0F000030;
constexpr uint32_t kVendorDuplicatePerMille = 0x0F000034;
constexpr uint32_t kVendorReorderPerMille = 0x0F000038;
constexpr uint32_t kVendorXmlFault = 0x0F00003C;

// Input lines 0 to 3. Neither is a fault: they stand for the wires that a software camera lacks.
constexpr uint32_t kVendorLineLevels = 0x0F000040; // a bit for each line, bit 0 is Line0; edges are triggers
constexpr uint32_t kVendorPulseLine = 0x0F000044;  // writing a line's number gives a short pulse there

// Read only: each of `Counters` in its order there, 8 bytes each, most significant first.
constexpr uint32_t kVendorCounters = 0x0F000800;

} // namespace vcam

#endif
