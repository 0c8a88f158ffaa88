// Plain parts of QCamera's node access.
#pragma once

#include <Base/GCException.h>
#include <QString>
#include <cstring>
#include <initializer_list>
#include <utility>

// Texts that a failed setter leaves for the operator.
QString GenericRemark(const GenICam_3_0::GenericException& error);
QString IntegerRemark(int number);
QString UnknownRemark();

// As a cast, with infinities where a double lies beyond a float.
float NarrowToFloat(double value);

// The number that belongs to the symbol, or `otherwise`.
int NumberOfSymbol(const char* symbol, std::initializer_list<std::pair<const char*, int>> numbers,
                   int otherwise);

// `optimum` clamped to minimum..maximum and put on the grid of `increment` that starts at minimum; an
// increment below 1 counts as 1.
long long PacketSizeOnGrid(long long optimum, long long increment, long long maximum, long long minimum);

// An integer in decimal or 0x notation, as the XML of a camera writes it; 0 for anything else.
int IntegerOfText(const QString& text);
