#include "Device/XmlFile.h"

#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <zip.h>

namespace vcam {

namespace {

constexpr const char* kName = "kolt_virtual_camera";

std::string Location(const std::string& name, uint32_t address, size_t length) {
    char numbers[40];
    std::snprintf(numbers, sizeof numbers, ";%X;%zX", address, length);
    return "Local:" + name + numbers;
}

std::string WithInserted(const std::string& xml, const std::string& nodes) {
    std::string text = xml;
    text.insert(text.rfind("</RegisterDescription>"), nodes);
    return text;
}

// Well formed and valid, only far too big.
std::string Huge(const std::string& xml) {
    constexpr size_t kSize = size_t{24} << 20;
    std::string nodes;
    nodes.reserve(kSize);
    for (unsigned index = 0; nodes.size() < kSize; ++index)
        nodes += "  <Integer Name=\"Filler" + std::to_string(index) + "\"><Value>" + std::to_string(index) +
                 "</Value></Integer>\n";
    return WithInserted(xml, nodes);
}

std::string Cyclic(const std::string& xml) {
    return WithInserted(xml, "  <Integer Name=\"LoopA\"><pValue>LoopB</pValue></Integer>\n"
                             "  <Integer Name=\"LoopB\"><pValue>LoopA</pValue></Integer>\n");
}

Bytes RandomBytes(size_t count) {
    std::mt19937 generator(7);
    Bytes bytes(count);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(generator() | 1); // no zero: a reader must not take it for text that ends
    return bytes;
}

} // namespace

Bytes ZipSingleFile(const std::string& name, const std::string& content) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* archiveBytes = zip_source_buffer_create(nullptr, 0, 0, &error);
    if (archiveBytes == nullptr)
        throw std::runtime_error("no memory for a zip archive");
    zip_source_keep(archiveBytes); // it outlives the archive, which it holds
    const std::unique_ptr<zip_source_t, void (*)(zip_source_t*)> keep(archiveBytes, zip_source_free);
    zip_t* archive = zip_open_from_source(archiveBytes, ZIP_TRUNCATE, &error);
    if (archive == nullptr)
        throw std::runtime_error("no zip archive could be made");
    zip_source_t* file = zip_source_buffer(archive, content.data(), content.size(), 0);
    if (file == nullptr || zip_file_add(archive, name.c_str(), file, ZIP_FL_ENC_UTF_8) < 0 ||
        zip_close(archive) < 0) {
        zip_discard(archive);
        throw std::runtime_error("the XML could not be zipped");
    }
    zip_stat_t stat;
    if (zip_source_stat(archiveBytes, &stat) < 0 || zip_source_open(archiveBytes) < 0)
        throw std::runtime_error("the zipped XML could not be read");
    Bytes bytes(stat.size);
    const zip_int64_t got = zip_source_read(archiveBytes, bytes.data(), bytes.size());
    zip_source_close(archiveBytes);
    if (got != static_cast<zip_int64_t>(bytes.size()))
        throw std::runtime_error("the zipped XML could not be read");
    return bytes;
}

XmlFile MakeXmlFile(const std::string& xml, bool zipped, XmlFault fault, uint32_t address) {
    std::string text = xml;
    if (fault == XmlFault::Truncated)
        text.resize(text.size() * 2 / 3);
    if (fault == XmlFault::Huge)
        text = Huge(xml);
    if (fault == XmlFault::Cyclic)
        text = Cyclic(xml);
    const bool zip = zipped || fault == XmlFault::BadZip;
    const std::string name = std::string(kName) + (zip ? ".zip" : ".xml");

    XmlFile file;
    file.content = zip ? ZipSingleFile(std::string(kName) + ".xml", text) : Bytes(text.begin(), text.end());
    if (fault == XmlFault::NotXml)
        file.content = RandomBytes(file.content.size());
    if (fault == XmlFault::BadZip) {
        for (size_t at = 20; at < file.content.size() * 3 / 4; ++at)
            file.content[at] = static_cast<uint8_t>(file.content[at] ^ 0x5A);
    }
    size_t length = file.content.size();
    if (fault == XmlFault::TooLong)
        length += size_t{1} << 20;
    file.location = Location(name, address, length);
    if (fault == XmlFault::HttpLocation)
        file.location = "http://127.0.0.1/kolt_virtual_camera.xml";
    if (fault == XmlFault::NoLocation)
        file.location.clear();
    return file;
}

} // namespace vcam
