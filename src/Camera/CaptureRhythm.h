// Names and times of pictures and picture series.
#pragma once

#include <QString>
#include <cstdint>

// The quality setting 1 to 100 becomes the encoder's 50 to 99.
int JpegQualityOf(int setting);

// `number` in units: 1 seconds, 2 minutes, 3 hours; 0 for another unit.
int64_t MillisecondsOf(int number, int unit);

// A camera's name as the name of one folder: without the characters that RemoveIllegalChar takes, and never a
// way out of the folder above it.
QString SafeFolderName(const QString& cameraName);

// "folder/prefix number" with ".bmp" for format 0, ".jpg" for 1, ".raw" for any other.
QString SeriesFileName(const QString& folder, const QString& prefix, const QString& number, int format);
