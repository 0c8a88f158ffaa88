#include "Camera/XmlDepth.h"

#include <gtest/gtest.h>
#include <string>

namespace {

int Depth(const std::string& xml) {
    return XmlDepth(xml.data(), xml.size());
}

TEST(XmlDepth, Table) {
    const std::pair<const char*, int> rows[] = {
        {"", 0},
        {"text", 0},
        {"<a/>", 0},
        {"<a></a>", 1},
        {"<a><b/><c></c></a>", 2},
        {"<?xml version='1.0'?><!DOCTYPE x><a><!-- <b><c><d> --><b></b></a>", 2},
        {"<a><![CDATA[<b><c>]]></a>", 1},
        {"<a x='1'><b y=\"/\"></b></a>", 2},
        {"<a", 1},
        {"<!-- open", 0},
        {"</a></a></a>", 0},
    };
    for (const auto& [xml, depth] : rows)
        EXPECT_EQ(Depth(xml), depth) << xml;
}

TEST(XmlDepth, AMillionLevels) {
    std::string xml;
    for (int i = 0; i < 1000000; ++i)
        xml += "<a>";
    EXPECT_EQ(Depth(xml), 1000000);
}

} // namespace
