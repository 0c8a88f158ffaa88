// Aravis' own node map over a MemoryPort: a second opinion in tests, and the peer in benchmarks.
#pragma once

#include <arv.h>

#include <string>

#include "support/MemoryPort.h"

namespace support {

// Owns an ArvDevice that reads and writes the port, and the ArvGc made of the XML. The port must outlive it.
// Used by one thread at a time, since ArvGc is.
class AravisMemoryDevice {
public:
    AravisMemoryDevice(const std::string& xml, MemoryPort& port);
    ~AravisMemoryDevice();
    AravisMemoryDevice(const AravisMemoryDevice&) = delete;
    AravisMemoryDevice& operator=(const AravisMemoryDevice&) = delete;

    // Null when Aravis could not read the XML.
    ArvGc* Gc() const { return m_gc; }
    // Null when there is none.
    ArvGcNode* Node(const std::string& name) const;

private:
    ArvDevice* m_device;
    ArvGc* m_gc;
};

} // namespace support
