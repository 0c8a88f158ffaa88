#include "FileKind.h"

#include <array>
#include <cstring>
#include <strings.h>

namespace live {
namespace {

struct Ending {
    const char* text;
    FileKind kind;
};

constexpr std::array<Ending, 7> endings = {{{".bmp", FileKind::Bmp},
                                            {".jpg", FileKind::Jpeg},
                                            {".jpeg", FileKind::Jpeg},
                                            {".png", FileKind::Png},
                                            {".ppm", FileKind::Ppm},
                                            {".pgm", FileKind::Pgm},
                                            {".raw", FileKind::Raw}}};

} // namespace

std::optional<FileKind> FileKindOf(const std::string& path) {
    for (const Ending& ending : endings) {
        const size_t length = std::strlen(ending.text);
        // More than the ending alone: ".png" is a hidden file without one.
        const size_t slash = path.rfind('/');
        const size_t name = slash == std::string::npos ? 0 : slash + 1;
        if (path.size() > name + length && strcasecmp(path.c_str() + path.size() - length, ending.text) == 0)
            return ending.kind;
    }
    return std::nullopt;
}

std::string FileKindNames() {
    std::string names;
    for (const Ending& ending : endings)
        names += (names.empty() ? "" : &ending == &endings.back() ? " or " : ", ") + std::string(ending.text);
    return names;
}

bool IsPictureOfScreen(FileKind kind) {
    return kind == FileKind::Png || kind == FileKind::Ppm;
}

} // namespace live
