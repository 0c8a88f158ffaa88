#pragma once
/// A sequence of texts, as the published interface hands them in and out. Behaves as std::vector does; only
/// the access by at() is checked (it throws OutOfRangeException).
#include <algorithm>
#include <initializer_list>
#include <vector>

#include "Base/GCString.h"

namespace GenICam_3_0 {

class GCBASE_API gcstring_vector {
public:
    using iterator = std::vector<gcstring>::iterator;
    using const_iterator = std::vector<gcstring>::const_iterator;

    gcstring_vector() = default;
    explicit gcstring_vector(std::size_t count) : m_items(count) {}
    gcstring_vector(std::size_t count, const gcstring& text) : m_items(count, text) {}
    gcstring_vector(std::initializer_list<gcstring> items) : m_items(items) {}

    void assign(std::size_t count, const gcstring& text) { m_items.assign(count, text); }
    void clear() { m_items.clear(); }
    iterator erase(iterator position) { return m_items.erase(position); }
    gcstring& at(std::size_t index);
    const gcstring& at(std::size_t index) const;
    gcstring& operator[](std::size_t index) { return m_items[index]; }
    const gcstring& operator[](std::size_t index) const { return m_items[index]; }
    std::size_t capacity() const { return m_items.capacity(); }
    bool empty() const { return m_items.empty(); }
    std::size_t size() const { return m_items.size(); }
    std::size_t max_size() const { return m_items.max_size(); }
    gcstring& front() { return m_items.front(); }
    const gcstring& front() const { return m_items.front(); }
    gcstring& back() { return m_items.back(); }
    const gcstring& back() const { return m_items.back(); }
    iterator insert(iterator position, const gcstring& text) { return m_items.insert(position, text); }
    void push_back(const gcstring& text) { m_items.push_back(text); }
    void pop_back() { m_items.pop_back(); }
    void resize(std::size_t count, const gcstring& text = gcstring()) { m_items.resize(count, text); }
    void reserve(std::size_t count) { m_items.reserve(count); }
    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    /// True when one of the texts equals `text`.
    bool contains(const gcstring& text) const;

private:
    std::vector<gcstring> m_items;
};

inline bool operator==(const gcstring_vector& left, const gcstring_vector& right) {
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin());
}
inline bool operator!=(const gcstring_vector& left, const gcstring_vector& right) {
    return !(left == right);
}

/// Splits at any of the delimiters and appends the non-empty pieces; surrounding blanks are taken off each
/// piece.
GCBASE_API void Tokenize(const gcstring& text, gcstring_vector& pieces, const gcstring& delimiters = " ");

} // namespace GenICam_3_0
