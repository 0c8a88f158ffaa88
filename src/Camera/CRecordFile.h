// The file of a raw recording.
#pragma once

#include "Camera/CWriteBehind.h"

#include <QFile>

// A QFile for writing at its end in large pieces that doesn't make its writer wait for the disk: a regular
// file is written by a CWriteBehind, anything else (a pipe, a device) as QFile does. One thread at a time.
class CRecordFile : public QFile {
public:
    explicit CRecordFile(const QString& name) : QFile(name) {}
    ~CRecordFile() override { CRecordFile::close(); }

    // Empties the file. `mode` is QIODevice::WriteOnly, with or without Unbuffered.
    using QFile::open;
    bool open(OpenMode mode) override;

    // Comes back when the system has all of the data.
    void close() override;

    // After close: bytes at the end of what was written whose failure shows only now.
    int64_t GetLost() const { return m_writeBehind.GetLost(); }

protected:
    qint64 writeData(const char* data, qint64 length) override;

private:
    CWriteBehind m_writeBehind;
};
