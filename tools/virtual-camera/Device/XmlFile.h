// The XML as it lies in the camera's memory, and the location text that leads there; whole or broken on
// purpose.
#ifndef VCAM_DEVICE_XMLFILE_H
#define VCAM_DEVICE_XMLFILE_H

#include "Protocol/Wire.h"
#include "VirtualCamera.h"

namespace vcam {

struct XmlFile {
    Bytes content;
    std::string location; // "Local:name;address;length", both numbers in hexadecimal
};

XmlFile MakeXmlFile(const std::string& xml, bool zipped, XmlFault fault, uint32_t address);

// A zip archive with one file in it.
Bytes ZipSingleFile(const std::string& name, const std::string& content);

} // namespace vcam

#endif
