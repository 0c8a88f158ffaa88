#include "find/XmlUnpack.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <memory>
#include <string>
#include <string_view>
#include <zip.h>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

namespace {

// An archive of a camera has one entry; more than this is an attempt to keep us busy.
constexpr zip_int64_t kMaxEntries = 256;

struct ArchiveCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct FileCloser {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;
using ZipFile = std::unique_ptr<zip_file_t, FileCloser>;

bool startsLikeArchive(const std::vector<std::uint8_t>& bytes) {
    return bytes.size() >= 4 && bytes[0] == 'P' && bytes[1] == 'K' && bytes[2] == 3 && bytes[3] == 4;
}

bool isUtf16(const std::vector<std::uint8_t>& bytes) {
    return bytes.size() >= 2 &&
           ((bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF));
}

// A byte order mark and blanks may stand before the first bracket.
bool looksLikeXml(const std::vector<std::uint8_t>& bytes) {
    if (isUtf16(bytes))
        return true;
    std::size_t at = 0;
    if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
        at = 3;
    while (at < bytes.size() && std::isspace(bytes[at]) != 0)
        ++at;
    return at < bytes.size() && bytes[at] == '<';
}

void stripPadding(std::vector<std::uint8_t>& xml) {
    // In UTF-16 a zero byte may be half of the last character.
    if (isUtf16(xml))
        return;
    while (!xml.empty() && xml.back() == 0)
        xml.pop_back();
}

bool endsWithXml(std::string_view name) {
    constexpr std::string_view kSuffix = ".xml";
    if (name.size() < kSuffix.size())
        return false;
    name.remove_prefix(name.size() - kSuffix.size());
    return std::equal(name.begin(), name.end(), kSuffix.begin(),
                      [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
}

// The entry to take, or -1.
zip_int64_t chooseEntry(zip_t* archive) {
    const zip_int64_t count = std::min(zip_get_num_entries(archive, 0), kMaxEntries);
    zip_int64_t first = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* raw = zip_get_name(archive, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        const std::string_view name = raw == nullptr ? std::string_view() : std::string_view(raw);
        if (endsWithXml(name))
            return i;
        if (first < 0 && !name.empty() && name.back() != '/')
            first = i;
    }
    return first;
}

std::uint32_t readEntry(zip_t* archive, zip_int64_t index, std::size_t maxBytes,
                        std::vector<std::uint8_t>& xml) {
    const ZipFile file(zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0));
    if (!file) {
        const int code = zip_error_code_zip(zip_get_error(archive));
        const bool unknown =
            code == ZIP_ER_NOPASSWD || code == ZIP_ER_COMPNOTSUPP || code == ZIP_ER_ENCRNOTSUPP;
        return unknown ? OV_STATUS_NOT_SUPPORTED : OV_STATUS_PACKET;
    }
    // The size that the archive states is not believed: what counts is what comes out.
    std::array<std::uint8_t, 65536> buffer;
    for (;;) {
        const zip_int64_t got = zip_fread(file.get(), buffer.data(), buffer.size());
        if (got == 0)
            return OV_STATUS_OK;
        if (got < 0 || static_cast<std::size_t>(got) > maxBytes - xml.size())
            return OV_STATUS_PACKET;
        xml.insert(xml.end(), buffer.begin(), buffer.begin() + got);
    }
}

std::uint32_t unpackArchive(const std::vector<std::uint8_t>& stored, std::size_t maxBytes,
                            std::vector<std::uint8_t>& xml) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(stored.data(), stored.size(), 0, &error);
    Archive archive;
    if (source != nullptr) {
        archive.reset(zip_open_from_source(source, ZIP_RDONLY, &error));
        if (!archive)
            zip_source_free(source);
    }
    zip_error_fini(&error);
    if (!archive)
        return OV_STATUS_PACKET;
    const zip_int64_t index = chooseEntry(archive.get());
    return index < 0 ? OV_STATUS_PACKET : readEntry(archive.get(), index, maxBytes, xml);
}

} // namespace

std::uint32_t unpackXml(const std::vector<std::uint8_t>& stored, std::size_t maxBytes,
                        std::vector<std::uint8_t>& xml) {
    xml.clear();
    std::uint32_t status = OV_STATUS_OK;
    if (startsLikeArchive(stored))
        status = unpackArchive(stored, maxBytes, xml);
    else if (stored.size() <= maxBytes)
        xml = stored;
    stripPadding(xml);
    if (status == OV_STATUS_OK && !looksLikeXml(xml))
        status = OV_STATUS_PACKET;
    if (status != OV_STATUS_OK)
        xml.clear();
    return status;
}

} // namespace kolt::cc
