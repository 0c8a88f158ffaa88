// Makes the XML of a large camera, with the memory that it describes: for benchmarks, fuzz seeds and tests at
// scale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace support {

struct GenICamXmlOptions {
    std::size_t features =
        3000;               // named in categories; about 700 bytes of XML each, with the nodes behind them
    std::uint32_t seed = 1; // another seed, another camera of the same build
    bool bigEndian = true;  // GigE Vision cameras are, USB3 Vision ones are not
};

enum class FeatureKind { Integer, Float, Enumeration, Boolean, Command, String, Register };

struct GeneratedFeature {
    std::string name;
    FeatureKind kind;
    bool locked = false;     // cannot be written while TLParamsLocked is 1
    bool available = true;   // false: the memory as generated makes it "not available"
    bool implemented = true; // false: "not implemented"
    std::string selector;    // the feature that selects it, or empty
    std::string
        valueRegister; // the IntReg, MaskedIntReg, FloatReg or StringReg that holds its value, or empty
};

struct GeneratedCamera {
    std::string xml;
    std::vector<GeneratedFeature> features;
    // Registers as the camera would have them at power-on; address 0 on. Values lie within the features'
    // ranges.
    std::vector<std::uint8_t> memory;
};

// The same for the same options. The XML is valid for schema 1.1 and holds a Category "Root", a Port
// "Device", one category for about 30 features with a selector of its own, and the kinds of nodes in about
// the shares that cameras have: integer registers, masked registers that share an address, floats through
// converters and registers, swiss knives, enumerations of 2 to 12 entries, Booleans, commands, strings,
// selected features by pIndex and by swiss-knife addresses, pIsImplemented, pIsAvailable, pIsLocked,
// pMin/pMax/pInc, invalidators, polling times, tool tips, descriptions, units and visibilities.
GeneratedCamera GenerateGenICamXml(const GenICamXmlOptions& options = {});

} // namespace support
