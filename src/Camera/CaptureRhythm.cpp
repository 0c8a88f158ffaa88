#include "Camera/CaptureRhythm.h"

#include "Common/QFunction.h"

#include <algorithm>

int JpegQualityOf(int setting) {
    // Settings come from a file that a person may have edited.
    return static_cast<int>(std::clamp(setting, 0, 100) / 100.0 * 49.0 + 50.0);
}

int64_t MillisecondsOf(int number, int unit) {
    switch (unit) {
    case 1:
        return static_cast<int64_t>(number) * 1000;
    case 2:
        return static_cast<int64_t>(number) * 60000;
    case 3:
        return static_cast<int64_t>(number) * 3600000;
    default:
        return 0;
    }
}

QString SafeFolderName(const QString& cameraName) {
    QString name = cameraName;
    QFunction::RemoveIllegalChar(name);
    if (name == "." || name == "..")
        return "_";
    return name;
}

QString SeriesFileName(const QString& folder, const QString& prefix, const QString& number, int format) {
    const char* const ending = format == 0 ? ".bmp" : format == 1 ? ".jpg" : ".raw";
    return folder + "/" + prefix + number + ending;
}
