#ifndef LIVE_OUTPUT_H
#define LIVE_OUTPUT_H

#include <string>

namespace live {

/// One text to the standard output, at once; false when nobody reads there any more.
bool Say(const std::string& text);

/// One text to the standard error, behind the program's name.
void Complain(const std::string& text);

} // namespace live

#endif
