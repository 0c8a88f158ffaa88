#include "UI/MainWindow/CapturePaths.h"

#include <QStringList>

namespace CapturePaths {

QString Stamp(const QDateTime& now) {
    return now.toString("yyyyMMddhhmmsszzz");
}

QString FolderOf(const QString& path) {
    return path.left(path.lastIndexOf('/'));
}

bool IsHidden(const QString& path) {
    return path.mid(path.lastIndexOf('/') + 1).startsWith('.');
}

QString WithPictureExtension(const QString& path) {
    // Deliberate: as many characters as stand before the last separator, not the file name's.
    const QString end = path.right(path.lastIndexOf('/'));
    if (end.contains(".bmp") || end.contains(".raw") || end.contains(".jpg"))
        return path;
    return path + ".bmp";
}

Picture PictureOf(const QString& path) {
    // Deliberate: anywhere in the path, so a folder's name decides as well.
    if (path.contains(".raw"))
        return Picture::Raw;
    if (path.contains(".jpg"))
        return Picture::Jpeg;
    return path.contains(".bmp") ? Picture::Bmp : Picture::Raw;
}

QString RecordPath(const QString& folder, const QString& name) {
    if (folder.isEmpty())
        return name;
    return folder.endsWith('/') || folder.endsWith('\\') ? folder + name : folder + '/' + name;
}

QString RecordDirectory(const QString& path) {
    QStringList parts = path.split('/', Qt::SkipEmptyParts);
    if (!parts.isEmpty())
        parts.removeLast();
    QString folder;
    for (const QString& part : qAsConst(parts))
        folder += '/' + part;
    return folder;
}

} // namespace CapturePaths
