// Unpacking against archives made here, whole, damaged and malicious.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zip.h>

#include "Camera/Boundary/OvStatus.h"
#include "find/GvcpCodec.h"
#include "find/XmlFetch.h"
#include "find/XmlLocation.h"
#include "find/XmlUnpack.h"

namespace kolt::cc {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

const std::string kXml = "<?xml version=\"1.0\"?><RegisterDescription ModelName=\"M\"/>";

struct Entry {
    std::string name;
    std::string content = {};
    bool stored = false;
    const char* password = nullptr;
};

Bytes archiveOf(const std::vector<Entry>& entries) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_source_keep(target);
    for (const Entry& entry : entries) {
        if (entry.name.back() == '/') {
            zip_dir_add(archive, entry.name.c_str(), 0);
            continue;
        }
        zip_source_t* content = zip_source_buffer(archive, entry.content.data(), entry.content.size(), 0);
        const zip_int64_t index = zip_file_add(archive, entry.name.c_str(), content, 0);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index),
                                 entry.stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 9);
        if (entry.password != nullptr)
            zip_file_set_encryption(archive, static_cast<zip_uint64_t>(index), ZIP_EM_AES_128,
                                    entry.password);
    }
    EXPECT_EQ(zip_close(archive), 0);
    zip_source_open(target);
    Bytes bytes;
    Bytes piece(4096);
    for (zip_int64_t got = 0; (got = zip_source_read(target, piece.data(), piece.size())) > 0;)
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + got);
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

std::uint32_t unpack(const Bytes& stored, Bytes& xml, std::size_t limit = 1U << 20) {
    xml = bytesOf("left over");
    return unpackXml(stored, limit, xml);
}

TEST(XmlUnpack, PlainTextPassesThroughWithoutItsPadding) {
    Bytes xml;
    EXPECT_EQ(unpack(bytesOf(kXml), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
    Bytes padded = bytesOf(kXml);
    padded.resize(padded.size() + 7, 0);
    EXPECT_EQ(unpack(padded, xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
}

TEST(XmlUnpack, ByteOrderMarksAndBlanksInFrontAreFine) {
    Bytes xml;
    for (const std::string& text :
         {"\xEF\xBB\xBF" + kXml, " \r\n\t" + kXml, std::string("\xFF\xFE<\0a\0", 6)}) {
        EXPECT_EQ(unpack(bytesOf(text), xml), OV_STATUS_OK);
        EXPECT_EQ(xml, bytesOf(text));
    }
}

TEST(XmlUnpack, WhatIsNoXmlIsRefused) {
    Bytes xml;
    for (const std::string& text :
         {std::string(), std::string("hello"), std::string(100, '\0'), std::string("\xEF\xBB\xBF"),
          std::string("   "), std::string("PK"), std::string("\xFF<a/>")}) {
        EXPECT_EQ(unpack(bytesOf(text), xml), OV_STATUS_PACKET) << text;
        EXPECT_TRUE(xml.empty());
    }
}

TEST(XmlUnpack, AnArchiveGivesItsXmlWhateverItIsCalled) {
    Bytes xml;
    EXPECT_EQ(unpack(archiveOf({{"camera.xml", kXml}}), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
    EXPECT_EQ(unpack(archiveOf({{"camera.xml", kXml, true}}), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
    EXPECT_EQ(unpack(archiveOf({{"readme.txt", "no"}, {"dir/"}, {"dir/Camera.XML", kXml}}), xml),
              OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
    EXPECT_EQ(unpack(archiveOf({{"dir/"}, {"description", kXml}}), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
}

TEST(XmlUnpack, PaddingBehindAnArchiveIsFine) {
    Bytes stored = archiveOf({{"camera.xml", kXml}});
    stored.resize(stored.size() + 3, 0);
    Bytes xml;
    EXPECT_EQ(unpack(stored, xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
}

TEST(XmlUnpack, ArchivesWithoutXmlAreRefused) {
    Bytes xml;
    EXPECT_EQ(unpack(archiveOf({{"readme.txt", "no"}}), xml), OV_STATUS_PACKET);
    EXPECT_EQ(unpack(archiveOf({{"dir/"}}), xml), OV_STATUS_PACKET);
    EXPECT_EQ(unpack(archiveOf({{"camera.xml", "\x01\x02"}}), xml), OV_STATUS_PACKET);
    EXPECT_TRUE(xml.empty());
}

TEST(XmlUnpack, AnArchiveCutAnywhereIsRefused) {
    const Bytes whole = archiveOf({{"camera.xml", kXml}});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes xml;
        EXPECT_EQ(unpack(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), xml),
                  OV_STATUS_PACKET)
            << size;
        EXPECT_TRUE(xml.empty());
    }
}

TEST(XmlUnpack, DamagedContentIsRefused) {
    Bytes stored = archiveOf({{"camera.xml", kXml, true}});
    const auto at = std::search(stored.begin(), stored.end(), kXml.begin(), kXml.end());
    ASSERT_NE(at, stored.end());
    at[10] ^= 0x20; // the checksum no longer fits
    Bytes xml;
    EXPECT_EQ(unpack(stored, xml), OV_STATUS_PACKET);
    EXPECT_TRUE(xml.empty());
}

TEST(XmlUnpack, AnArchiveThatUnpacksToTooMuchIsRefused) {
    const std::string bomb = "<" + std::string(8U << 20, ' ');
    const Bytes stored = archiveOf({{"camera.xml", bomb}});
    EXPECT_LT(stored.size(), 20000U);
    Bytes xml;
    EXPECT_EQ(unpack(stored, xml, 1U << 20), OV_STATUS_PACKET);
    EXPECT_TRUE(xml.empty());
    EXPECT_EQ(unpack(stored, xml, bomb.size()), OV_STATUS_OK);
    EXPECT_EQ(unpack(stored, xml, bomb.size() - 1), OV_STATUS_PACKET);
    EXPECT_EQ(unpack(bytesOf(bomb), xml, 1U << 20), OV_STATUS_PACKET);
}

TEST(XmlUnpack, ALyingSizeIsNotBelieved) {
    Bytes stored = archiveOf({{"camera.xml", "<" + std::string(100000, ' ')}});
    // The uncompressed size, in the local and in the central header.
    for (const char* signature : {"PK\3\4", "PK\1\2"}) {
        const auto at = std::search(stored.begin(), stored.end(), signature, signature + 4);
        ASSERT_NE(at, stored.end());
        const std::ptrdiff_t field = signature[2] == 3 ? 22 : 24;
        std::memset(&at[field], 0xFF, 3);
    }
    Bytes xml;
    EXPECT_EQ(unpack(stored, xml), OV_STATUS_OK);
    EXPECT_EQ(xml.size(), 100001U);
}

TEST(XmlUnpack, AnEncryptedArchiveIsNotSupported) {
    Bytes xml;
    EXPECT_EQ(unpack(archiveOf({{"camera.xml", kXml, false, "secret"}}), xml), OV_STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(xml.empty());
}

// Device memory with URL registers.
class FakeMemory {
public:
    void url(std::uint32_t address, const std::string& text) {
        Bytes field(gvcp::kUrlSize, 0);
        std::copy(text.begin(), text.end(), field.begin());
        put(address, field);
    }
    void put(std::uint64_t address, Bytes bytes) { blocks.emplace_back(address, std::move(bytes)); }

    MemoryReader reader() {
        return [this](std::uint64_t address, std::uint8_t* destination, std::size_t length) -> std::uint32_t {
            ++reads;
            bytesRead += length;
            if (failWith != OV_STATUS_OK)
                return failWith;
            for (const auto& [start, bytes] : blocks) {
                if (address >= start && address - start + length <= bytes.size()) {
                    std::memcpy(destination, &bytes[address - start], length);
                    return OV_STATUS_OK;
                }
            }
            return OV_STATUS_INVALID_ADDRESS;
        };
    }

    std::vector<std::pair<std::uint64_t, Bytes>> blocks;
    std::uint32_t failWith = OV_STATUS_OK;
    std::uint64_t reads = 0;
    std::uint64_t bytesRead = 0;
};

std::string hex(std::uint64_t value) {
    char text[32];
    std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(value));
    return text;
}

std::string local(std::uint64_t address, std::uint64_t length) {
    return "Local:camera.xml;" + hex(address) + ";" + hex(length);
}

TEST(XmlFetch, ReadsTheFirstLocation) {
    FakeMemory memory;
    const std::string big = kXml + std::string(300000, ' ');
    memory.url(gvcp::kFirstUrl, local(0x10000, big.size()));
    memory.put(0x10000, bytesOf(big));
    Bytes xml;
    EXPECT_EQ(fetchXml(memory.reader(), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(big));
    EXPECT_EQ(memory.bytesRead, gvcp::kUrlSize + big.size());
}

TEST(XmlFetch, ReadsAnArchive) {
    FakeMemory memory;
    const Bytes archive = archiveOf({{"camera.xml", kXml}});
    memory.url(gvcp::kFirstUrl, local(0x10000, archive.size()));
    memory.put(0x10000, archive);
    Bytes xml;
    EXPECT_EQ(fetchXml(memory.reader(), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
}

TEST(XmlFetch, HttpIsNotFetchedButTheSecondLocationIsTried) {
    FakeMemory memory;
    memory.url(gvcp::kFirstUrl, "http://127.0.0.1/camera.xml");
    memory.url(gvcp::kSecondUrl, "");
    Bytes xml;
    EXPECT_EQ(fetchXml(memory.reader(), xml), OV_STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(xml.empty());
    memory.blocks.clear();
    memory.url(gvcp::kFirstUrl, "http://127.0.0.1/camera.xml");
    memory.url(gvcp::kSecondUrl, local(0x10000, kXml.size()));
    memory.put(0x10000, bytesOf(kXml));
    EXPECT_EQ(fetchXml(memory.reader(), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
}

TEST(XmlFetch, FailuresHaveTheirStatus) {
    const auto withUrl = [](const std::string& url) {
        FakeMemory memory;
        memory.url(gvcp::kFirstUrl, url);
        memory.url(gvcp::kSecondUrl, "");
        Bytes xml = bytesOf("left over");
        const std::uint32_t status = fetchXml(memory.reader(), xml);
        EXPECT_TRUE(xml.empty()) << url;
        return status;
    };
    EXPECT_EQ(withUrl(""), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl("Local:a.xml"), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl(local(0x20000, 100)), OV_STATUS_INVALID_ADDRESS);
    EXPECT_EQ(withUrl(local(0x20000, kMaxStoredXmlBytes + 1)), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl(local(0x20000, UINT64_MAX)), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl(local(UINT64_MAX, 16)), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl(local(gvcp::kFirstUrl, 16)), OV_STATUS_PACKET);
    EXPECT_EQ(withUrl("File:///nonexistent/camera.xml"), OV_STATUS_RESOURCE);
    EXPECT_EQ(withUrl("File:relative.xml"), OV_STATUS_RESOURCE);
    EXPECT_EQ(withUrl("File:///dev/zero"), OV_STATUS_RESOURCE);
    EXPECT_EQ(withUrl("File:///proc"), OV_STATUS_RESOURCE);
    EXPECT_EQ(withUrl("File:///bin/sh"), OV_STATUS_PACKET);
}

TEST(XmlFetch, ACameraThatIsGoneIsNotAskedTwice) {
    for (const std::uint32_t status : {OV_STATUS_NETWORK, OV_STATUS_ACCESS_DENIED}) {
        FakeMemory memory;
        memory.failWith = status;
        Bytes xml;
        EXPECT_EQ(fetchXml(memory.reader(), xml), status);
        EXPECT_EQ(memory.reads, 1U);
    }
}

TEST(XmlFetch, PatienceEndsIt) {
    FakeMemory memory;
    memory.url(gvcp::kFirstUrl, local(0x10000, 100));
    memory.put(0x10000, Bytes(100, '<'));
    Bytes xml;
    EXPECT_EQ(fetchXml(memory.reader(), xml, std::chrono::milliseconds(0)), OV_STATUS_NETWORK);
    EXPECT_EQ(memory.reads, 1U);
}

TEST(XmlFetch, AFileOfTheHostIsReadWhereItIsARegularOne) {
    char folder[] = "/tmp/kolt-xml-XXXXXX";
    ASSERT_NE(::mkdtemp(folder), nullptr);
    const std::string path = std::string(folder) + "/my camera.xml";
    std::ofstream(path) << kXml;
    const std::string pipe = std::string(folder) + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    FakeMemory memory;
    memory.url(gvcp::kFirstUrl, "File://" + std::string(folder) + "/my%20camera.xml?SchemaVersion=1.1.0");
    Bytes xml;
    EXPECT_EQ(fetchXml(memory.reader(), xml), OV_STATUS_OK);
    EXPECT_EQ(xml, bytesOf(kXml));
    FakeMemory trap;
    trap.url(gvcp::kFirstUrl, "File://" + pipe);
    EXPECT_EQ(fetchXml(trap.reader(), xml), OV_STATUS_RESOURCE);
    const std::string large = std::string(folder) + "/large";
    std::ofstream(large) << '<';
    std::filesystem::resize_file(large, kMaxStoredXmlBytes + 1);
    FakeMemory endless;
    endless.url(gvcp::kFirstUrl, "File://" + large);
    EXPECT_EQ(fetchXml(endless.reader(), xml), OV_STATUS_PACKET);
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace kolt::cc
