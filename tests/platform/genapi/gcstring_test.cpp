#include <sstream>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "Base/GCStringVector.h"

using GenICam_3_0::gcstring;
using GenICam_3_0::gcstring_vector;

TEST(GcString, TakesAndGivesText) {
    EXPECT_STREQ("", gcstring().c_str());
    EXPECT_STREQ("", gcstring(static_cast<const char*>(nullptr)).c_str());
    EXPECT_STREQ("abc", gcstring("abcdef", 3).c_str());
    EXPECT_STREQ("xxx", gcstring(3, 'x').c_str());
    const gcstring name("Width");
    EXPECT_STREQ("Width", static_cast<const char*>(name));
}

TEST(GcString, KeepsZeroBytesInside) {
    const gcstring text(std::string("a\0b", 3));
    EXPECT_EQ(3U, text.size());
    EXPECT_FALSE(text == gcstring("a"));
}

TEST(GcString, ComparesByBytes) {
    EXPECT_TRUE(gcstring("a") == "a");
    EXPECT_TRUE("a" == gcstring("a"));
    EXPECT_TRUE(gcstring("a") != "b");
    EXPECT_TRUE(gcstring("") == static_cast<const char*>(nullptr));
    EXPECT_TRUE(gcstring("a") < gcstring("b"));
    EXPECT_TRUE(gcstring("b") > gcstring("a"));
    EXPECT_EQ(0, gcstring("a").compare("a"));
}

TEST(GcString, Edits) {
    gcstring text("Off");
    text += "set";
    text += 'X';
    EXPECT_STREQ("OffsetX", text.c_str());
    text.insert(0, "Region").erase(0, 6).append(2, 'Y');
    EXPECT_STREQ("OffsetXYY", text.c_str());
    EXPECT_EQ(6U, text.find('X'));
    EXPECT_EQ(3U, text.find("set"));
    EXPECT_EQ(8U, text.rfind('Y'));
    EXPECT_EQ(gcstring::_npos(), text.find('z'));
    EXPECT_EQ(7U, text.find_first_not_of("OfsetX"));
    EXPECT_STREQ("set", text.substr(3, 3).c_str());
    EXPECT_STREQ("", text.substr(100).c_str());
    EXPECT_EQ('O', text.at(0));
    text.assign(2, 'q');
    EXPECT_STREQ("qq", text.c_str());
    EXPECT_TRUE("a" + gcstring("b") + "c" == "abc");
}

TEST(GcString, ChecksPositions) {
    gcstring text("abc");
    EXPECT_THROW(text.at(3), GenICam_3_0::OutOfRangeException);
    EXPECT_THROW(text.insert(4, "x"), GenICam_3_0::OutOfRangeException);
    EXPECT_THROW(text.erase(4), GenICam_3_0::OutOfRangeException);
}

TEST(GcString, ConvertsWideTextBothWays) {
    const gcstring text(L"5\u00b5s \u20ac \U0001F4F7");
    EXPECT_STREQ("5\xc2\xb5s \xe2\x82\xac \xf0\x9f\x93\xb7", text.c_str());
    EXPECT_EQ(L"5\u00b5s \u20ac \U0001F4F7", text.w_str());
    EXPECT_TRUE(gcstring(static_cast<const wchar_t*>(nullptr)).empty());
}

TEST(GcString, ReplacesWhatIsNoUtf8) {
    struct Row {
        const char* bytes;
        const wchar_t* expected;
    };
    const Row rows[] = {
        {"\xb5s", L"\uFFFDs"},         // a continuation byte alone
        {"\xc2", L"\uFFFD"},           // cut off
        {"\xc0\xaf", L"\uFFFD\uFFFD"}, // longer than needed
        {"\xe0\x80\x80", L"\uFFFD\uFFFD\uFFFD"},
        {"\xed\xa0\x80", L"\uFFFD\uFFFD\uFFFD"},           // half a surrogate pair
        {"\xf4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
    };
    for (const Row& row : rows)
        EXPECT_EQ(std::wstring(row.expected), gcstring(row.bytes).w_str()) << row.bytes;
}

TEST(GcString, Streams) {
    std::stringstream stream;
    stream << gcstring("one two\nthree");
    gcstring word;
    stream >> word;
    EXPECT_STREQ("one", word.c_str());
    gcstring line;
    getline(stream, line);
    EXPECT_STREQ(" two", line.c_str());
    getline(stream, line);
    EXPECT_STREQ("three", line.c_str());
}

TEST(GcStringVector, IsASequence) {
    gcstring_vector list{"a", "b"};
    list.push_back("c");
    list.insert(list.begin(), "z");
    EXPECT_EQ((gcstring_vector{"z", "a", "b", "c"}), list);
    list.erase(list.begin());
    list.pop_back();
    EXPECT_EQ(2U, list.size());
    EXPECT_STREQ("b", list.at(1).c_str());
    EXPECT_THROW(list.at(2), GenICam_3_0::OutOfRangeException);
    EXPECT_TRUE(list.contains("a"));
    EXPECT_FALSE(list.contains("z"));
}

TEST(GcStringVector, Tokenizes) {
    gcstring_vector pieces;
    Tokenize("a;  b ;;c\n", pieces, ";");
    EXPECT_EQ((gcstring_vector{"a", "b", "c"}), pieces);
    pieces.clear();
    Tokenize("", pieces, ";");
    EXPECT_TRUE(pieces.empty());
    Tokenize(" one  two ", pieces);
    EXPECT_EQ((gcstring_vector{"one", "two"}), pieces);
}
