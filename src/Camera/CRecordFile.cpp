#include "Camera/CRecordFile.h"

bool CRecordFile::open(OpenMode mode) {
    if (!QFile::open(mode | QIODevice::Unbuffered | QIODevice::Truncate))
        return false;
    (void)m_writeBehind.Start(handle());
    return true;
}

void CRecordFile::close() {
    m_writeBehind.Finish();
    QFile::close();
}

qint64 CRecordFile::writeData(const char* data, qint64 length) {
    if (!m_writeBehind.IsStarted())
        return QFile::writeData(data, length);
    return m_writeBehind.Write(data, static_cast<size_t>(length)) ? length : -1;
}
