// Names and folders of the files that the operator saves by hand.
#pragma once

#include <QDateTime>
#include <QString>

namespace CapturePaths {

// The proposed name of a file saved now: "yyyyMMddhhmmsszzz".
QString Stamp(const QDateTime& now);

// The path up to the last "/", without it; the whole text when there is none.
QString FolderOf(const QString& path);

// Whether the file name begins with a dot.
bool IsHidden(const QString& path);

// With ".bmp" appended unless the last n characters hold ".bmp", ".raw" or ".jpg", n being the position of
// the last "/".
QString WithPictureExtension(const QString& path);

enum class Picture { Bmp, Jpeg, Raw };
// By the first of ".raw", ".jpg" and ".bmp" anywhere in the path; raw without any.
Picture PictureOf(const QString& path);

// The proposed path of a recording: the name alone without a folder, and one separator between the two.
QString RecordPath(const QString& folder, const QString& name);

// The folder for the camera core: the parts of the path that aren't empty, but for the last, each with a "/"
// before it.
QString RecordDirectory(const QString& path);

} // namespace CapturePaths
