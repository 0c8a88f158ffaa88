#include "Camera/XmlDepth.h"

#include <algorithm>
#include <string_view>

int XmlDepth(const char* text, size_t length) {
    const std::string_view xml(text, length);
    int depth = 0;
    int deepest = 0;
    const auto skipPast = [&xml](size_t from, std::string_view end) {
        const size_t found = xml.find(end, from);
        return found == std::string_view::npos ? xml.size() : found + end.size();
    };
    for (size_t at = xml.find('<'); at < xml.size(); at = xml.find('<', at)) {
        const std::string_view rest = xml.substr(at, 9);
        if (rest.substr(0, 4) == "<!--") {
            at = skipPast(at, "-->");
        } else if (rest == "<![CDATA[") {
            at = skipPast(at, "]]>");
        } else if (rest.substr(0, 2) == "<?" || rest.substr(0, 2) == "<!") {
            at = skipPast(at, ">");
        } else {
            const size_t end = skipPast(at, ">");
            if (rest.substr(0, 2) == "</")
                --depth;
            else if (end < at + 2 || xml[end - 2] != '/')
                deepest = std::max(deepest, ++depth);
            at = end;
        }
    }
    return deepest;
}
