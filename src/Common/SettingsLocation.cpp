#include "Common/SettingsLocation.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

const char kProgramFolder[] = "KOLT_CAPTURE";

bool CanMakeFilesIn(const QString& folder) {
    const QFileInfo info(folder);
    return info.isDir() && info.isWritable();
}

} // namespace

QString SettingsDirectory(const QString& executableDir) {
    if (CanMakeFilesIn(executableDir))
        return executableDir;
    QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/" + kProgramFolder;
    QDir().mkpath(folder);
    return folder;
}

QString FirstOutputFolder(const QString& executableDir) {
    if (CanMakeFilesIn(executableDir))
        return executableDir + "/Data";
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) + "/" + kProgramFolder;
}
