#pragma once
/// The text type of the published GenICam interface. A thin value class over std::string: texts are bytes,
/// UTF-8 as the XML gives them, and may be copied and destroyed on any thread. The pointer that c_str() or
/// the conversion to const char* gives lives as long as the object and its text stay unchanged.
#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>

#include "Base/GCTypes.h"

namespace GenICam_3_0 {

class GCBASE_API gcstring {
public:
    gcstring() = default;
    /// A null pointer counts as an empty text.
    gcstring(const char* text) // NOLINT(google-explicit-constructor): published as a conversion
        : m_text(text != nullptr ? text : "") {}
    gcstring(const char* text, std::size_t length)
        : m_text(text != nullptr ? std::string(text, length) : std::string()) {}
    gcstring(std::size_t count, char character) : m_text(count, character) {}
    /// Encodes as UTF-8; a null pointer counts as an empty text.
    gcstring(const wchar_t* text);    // NOLINT(google-explicit-constructor): published as a conversion
    gcstring(const std::string& text) // NOLINT(google-explicit-constructor): spares a pass over the text
        : m_text(text) {}
    gcstring(std::string&& text) // NOLINT(google-explicit-constructor): spares a copy
        : m_text(std::move(text)) {}

    gcstring& assign(const gcstring& other) { return *this = other; }
    gcstring& assign(std::size_t count, char character);
    gcstring& append(const gcstring& other);
    gcstring& append(std::size_t count, char character);
    void push_back(char character) { m_text.push_back(character); }
    gcstring& insert(std::size_t position, const gcstring& text);
    gcstring& erase(std::size_t position = 0, std::size_t count = _npos());
    void clear() { m_text.clear(); }
    void resize(std::size_t length) { m_text.resize(length); }
    void reserve(std::size_t length) { m_text.reserve(length); }
    void swap(gcstring& other) noexcept { m_text.swap(other.m_text); }

    gcstring& operator+=(const gcstring& other) { return append(other); }
    gcstring& operator+=(char character);

    int compare(const gcstring& other) const { return m_text.compare(other.m_text); }
    const char* c_str() const { return m_text.c_str(); }
    bool empty() const { return m_text.empty(); }
    std::size_t length() const { return m_text.size(); }
    std::size_t size() const { return m_text.size(); }
    std::size_t max_size() const { return m_text.max_size(); }
    std::size_t capacity() const { return m_text.capacity(); }
    std::size_t find(char character, std::size_t offset = 0) const { return m_text.find(character, offset); }
    std::size_t find(const gcstring& text, std::size_t offset = 0) const {
        return m_text.find(text.m_text, offset);
    }
    std::size_t rfind(char character, std::size_t offset = _npos()) const {
        return m_text.rfind(character, offset);
    }
    std::size_t find_first_of(const gcstring& set, std::size_t offset = 0) const;
    std::size_t find_first_not_of(const gcstring& set, std::size_t offset = 0) const;
    /// An offset beyond the end gives an empty text.
    gcstring substr(std::size_t offset = 0, std::size_t length = _npos()) const;
    /// Throws OutOfRangeException for an index that is not below size().
    char at(std::size_t index) const;
    /// The UTF-8 bytes decoded; bytes that are none become U+FFFD.
    std::wstring w_str() const;

    operator const char*() const { return m_text.c_str(); } // NOLINT(google-explicit-constructor): published
    const std::string& str() const { return m_text; }

    static constexpr std::size_t _npos() { return static_cast<std::size_t>(-1); }

private:
    std::string m_text;
};

inline bool operator==(const gcstring& left, const gcstring& right) {
    return left.str() == right.str();
}
inline bool operator==(const gcstring& left, const char* right) {
    return left.str() == (right ? right : "");
}
inline bool operator==(const char* left, const gcstring& right) {
    return right == left;
}
inline bool operator!=(const gcstring& left, const gcstring& right) {
    return !(left == right);
}
inline bool operator!=(const gcstring& left, const char* right) {
    return !(left == right);
}
inline bool operator!=(const char* left, const gcstring& right) {
    return !(right == left);
}
inline bool operator<(const gcstring& left, const gcstring& right) {
    return left.str() < right.str();
}
inline bool operator>(const gcstring& left, const gcstring& right) {
    return right < left;
}
inline gcstring operator+(const gcstring& left, const gcstring& right) {
    return {left.str() + right.str()};
}
inline gcstring operator+(const gcstring& left, const char* right) {
    return left + gcstring(right);
}
inline gcstring operator+(const char* left, const gcstring& right) {
    return gcstring(left) + right;
}
GCBASE_API std::ostream& operator<<(std::ostream& stream, const gcstring& text);
GCBASE_API std::istream& operator>>(std::istream& stream, gcstring& text);
/// Reads up to the delimiter, which is taken and not stored.
GCBASE_API std::istream& getline(std::istream& stream, gcstring& text, char delimiter = '\n');

} // namespace GenICam_3_0
