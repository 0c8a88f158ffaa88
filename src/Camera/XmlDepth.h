// Guards recursive XML readers.
#pragma once

#include <cstddef>

// The deepest nesting of elements in the `length` bytes at `text`, found in one pass without recursion. Text
// that is no well-formed XML gives some number; the parser behind decides what it is.
int XmlDepth(const char* text, size_t length);
