#ifndef LIVE_FILE_KIND_H
#define LIVE_FILE_KIND_H

#include <optional>
#include <string>

namespace live {

enum class FileKind { Bmp, Jpeg, Png, Ppm, Pgm, Raw };

/// By the end of the name, in upper or lower case.
std::optional<FileKind> FileKindOf(const std::string& path);
/// ".bmp, .jpg, ..." for messages.
std::string FileKindNames();
/// Kinds that hold a picture without the media library's help.
bool IsPictureOfScreen(FileKind kind);

} // namespace live

#endif
