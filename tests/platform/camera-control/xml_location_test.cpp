#include <gtest/gtest.h>

#include "find/XmlLocation.h"

namespace kolt::cc {
namespace {

using Kind = XmlLocation::Kind;

struct Case {
    const char* name;
    std::string text;
    Kind kind;
    std::string file = "";
    std::uint64_t address = 0;
    std::uint64_t length = 0;
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

class XmlLocationOf : public testing::TestWithParam<Case> {};

TEST_P(XmlLocationOf, IsParsed) {
    const Case& c = GetParam();
    const XmlLocation location = parseXmlLocation(c.text);
    EXPECT_EQ(location.kind, c.kind);
    EXPECT_EQ(location.name, c.file);
    EXPECT_EQ(location.address, c.address);
    EXPECT_EQ(location.length, c.length);
}

std::string padded(std::string text) {
    text.resize(512, '\0');
    return text;
}

const Case kCases[] = {
    {"plain", "Local:camera.xml;10000;1A2B", Kind::local, "camera.xml", 0x10000, 0x1A2B},
    {"padded_with_nuls", padded("Local:camera.zip;10000;1A2B"), Kind::local, "camera.zip", 0x10000, 0x1A2B},
    {"rubbish_behind_the_nul", std::string("Local:a.xml;1;2\0;;;", 19), Kind::local, "a.xml", 1, 2},
    {"any_case", "LOCAL:a.XML;fF;Ff", Kind::local, "a.XML", 0xFF, 0xFF},
    {"slashes", "local:///a.xml;80000000;10", Kind::local, "a.xml", 0x80000000U, 0x10},
    {"with_0x", "Local:a.xml;0x10000;0X20", Kind::local, "a.xml", 0x10000, 0x20},
    {"blanks", "  Local: a.xml ; 10000 ; 20 \r\n", Kind::local, "a.xml", 0x10000, 0x20},
    {"quotes", "\"Local:a.xml;10000;20\"", Kind::local, "a.xml", 0x10000, 0x20},
    {"schema_version", "Local:a.xml;10000;20?SchemaVersion=1.1.0", Kind::local, "a.xml", 0x10000, 0x20},
    {"third_semicolon", "Local:a.xml;10000;20;", Kind::local, "a.xml", 0x10000, 0x20},
    {"name_is_empty", "Local:;10000;20", Kind::local, "", 0x10000, 0x20},
    {"64_bits", "Local:a.xml;FFFFFFFFFFFFFFFF;1", Kind::local, "a.xml", UINT64_MAX, 1},
    {"more_than_64_bits", "Local:a.xml;1FFFFFFFFFFFFFFFF;1", Kind::none},
    {"no_length", "Local:a.xml;10000", Kind::none},
    {"empty_length", "Local:a.xml;10000;", Kind::none},
    {"length_of_0", "Local:a.xml;10000;0", Kind::none},
    {"no_hexadecimal_address", "Local:a.xml;1000G;20", Kind::none},
    {"negative_length", "Local:a.xml;10000;-20", Kind::none},
    {"only_0x", "Local:a.xml;0x;20", Kind::none},
    {"only_the_prefix", "Local:", Kind::none},
    {"empty", "", Kind::none},
    {"only_nuls", std::string(512, '\0'), Kind::none},
    {"unknown_prefix", "gopher:a.xml;1;2", Kind::none},
    {"no_prefix", "camera.xml;10000;20", Kind::none},
    {"file", "File:///opt/cameras/a.xml", Kind::file, "/opt/cameras/a.xml"},
    {"file_with_escapes", "file:///opt/my%20cameras/a%2eXML?SchemaVersion=1.0.0", Kind::file,
     "/opt/my cameras/a.XML"},
    {"file_with_half_an_escape", "File:///a%2", Kind::file, "/a%2"},
    {"file_with_a_nul_in_disguise", "File:///a%00b", Kind::none},
    {"file_without_a_path", "File:", Kind::none},
    {"http", "http://www.example.org/camera.xml", Kind::remote},
    {"http_any_case", "HTTP://www.example.org/camera.zip", Kind::remote},
    {"https", "https://www.example.org/camera.xml", Kind::remote},
    {"ftp", "ftp://www.example.org/camera.xml", Kind::remote},
    {"binary", "\xFF\xFE\xFD;\x01;\x02", Kind::none},
};

INSTANTIATE_TEST_SUITE_P(Table, XmlLocationOf, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace kolt::cc
