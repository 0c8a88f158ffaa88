#include "Base/GCString.h"

#include <istream>
#include <ostream>

#include "Base/GCException.h"
#include "Base/GCStringVector.h"

namespace GenICam_3_0 {

namespace {

constexpr char32_t replacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t code) {
    const auto put = [&out](char32_t byte) {
        out.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        code = replacement;
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | (code >> 6));
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | (code >> 12));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | (code >> 18));
        put(0x80 | ((code >> 12) & 0x3F));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

/// Decodes one character at `position` and moves on behind it; one bad byte gives one replacement character.
char32_t takeUtf8(const std::string& text, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(text[position++]);
    if (lead < 0x80)
        return lead;
    const int more = lead >= 0xF0 && lead < 0xF5   ? 3
                     : lead >= 0xE0 && lead < 0xF0 ? 2
                     : lead >= 0xC2 && lead < 0xE0 ? 1
                                                   : 0;
    if (more == 0)
        return replacement;
    char32_t code = lead & (0x3FU >> more);
    std::size_t at = position;
    for (int i = 0; i < more; ++i, ++at) {
        if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80)
            return replacement;
        code = (code << 6) | (static_cast<unsigned char>(text[at]) & 0x3F);
    }
    static constexpr char32_t shortest[] = {0, 0x80, 0x800, 0x10000};
    if (code < shortest[more] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return replacement;
    position = at;
    return code;
}

} // namespace

gcstring::gcstring(const wchar_t* text) {
    for (; text != nullptr && *text != L'\0'; ++text)
        appendUtf8(m_text, static_cast<char32_t>(*text));
}

gcstring& gcstring::assign(std::size_t count, char character) {
    m_text.assign(count, character);
    return *this;
}

gcstring& gcstring::append(const gcstring& other) {
    m_text.append(other.m_text);
    return *this;
}

gcstring& gcstring::append(std::size_t count, char character) {
    m_text.append(count, character);
    return *this;
}

gcstring& gcstring::insert(std::size_t position, const gcstring& text) {
    if (position > m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("position %zu lies behind a text of %zu characters", position,
                                     m_text.size());
    m_text.insert(position, text.m_text);
    return *this;
}

gcstring& gcstring::erase(std::size_t position, std::size_t count) {
    if (position > m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("position %zu lies behind a text of %zu characters", position,
                                     m_text.size());
    m_text.erase(position, count);
    return *this;
}

gcstring& gcstring::operator+=(char character) {
    m_text.push_back(character);
    return *this;
}

std::size_t gcstring::find_first_of(const gcstring& set, std::size_t offset) const {
    return m_text.find_first_of(set.m_text, offset);
}

std::size_t gcstring::find_first_not_of(const gcstring& set, std::size_t offset) const {
    return m_text.find_first_not_of(set.m_text, offset);
}

gcstring gcstring::substr(std::size_t offset, std::size_t length) const {
    return offset < m_text.size() ? gcstring(m_text.substr(offset, length)) : gcstring();
}

char gcstring::at(std::size_t index) const {
    if (index >= m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("index %zu lies behind a text of %zu characters", index, m_text.size());
    return m_text[index];
}

std::wstring gcstring::w_str() const {
    std::wstring wide;
    wide.reserve(m_text.size());
    for (std::size_t position = 0; position < m_text.size();)
        wide.push_back(static_cast<wchar_t>(takeUtf8(m_text, position)));
    return wide;
}

std::ostream& operator<<(std::ostream& stream, const gcstring& text) {
    return stream << text.str();
}

std::istream& operator>>(std::istream& stream, gcstring& text) {
    std::string word;
    stream >> word;
    text = gcstring(std::move(word));
    return stream;
}

std::istream& getline(std::istream& stream, gcstring& text, char delimiter) {
    std::string line;
    std::getline(stream, line, delimiter);
    text = gcstring(std::move(line));
    return stream;
}

gcstring& gcstring_vector::at(std::size_t index) {
    return const_cast<gcstring&>(static_cast<const gcstring_vector&>(*this).at(index));
}

const gcstring& gcstring_vector::at(std::size_t index) const {
    if (index >= m_items.size())
        throw OUT_OF_RANGE_EXCEPTION("index %zu lies behind a list of %zu texts", index, m_items.size());
    return m_items[index];
}

bool gcstring_vector::contains(const gcstring& text) const {
    return std::find(m_items.begin(), m_items.end(), text) != m_items.end();
}

void Tokenize(const gcstring& text, gcstring_vector& pieces, const gcstring& delimiters) {
    static const char* const blanks = " \t\r\n";
    const std::string& whole = text.str();
    for (std::size_t begin = 0; begin <= whole.size();) {
        const std::size_t end = std::min(whole.find_first_of(delimiters.str(), begin), whole.size());
        const std::size_t first = whole.find_first_not_of(blanks, begin);
        if (first < end)
            pieces.push_back(whole.substr(first, whole.find_last_not_of(blanks, end - 1) - first + 1));
        begin = end + 1;
    }
}

} // namespace GenICam_3_0
