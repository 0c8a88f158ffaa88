// A command "ping" of the test's own, first in PATH.
#pragma once

#include <QDir>
#include <QFile>
#include <QString>

namespace devices {

class FakePing {
public:
    // Shell lines with absolute paths; PATH holds nothing else meanwhile. No lines: there is no such command.
    FakePing(const QString& folder, const char* lines) : m_path(qgetenv("PATH")) {
        const QString place = folder + "/path";
        QDir().mkpath(place);
        if (lines) {
            QFile script(place + "/ping");
            script.open(QIODevice::WriteOnly);
            script.write("#!/bin/sh\n" + QByteArray(lines) + "\n");
            script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        qputenv("PATH", place.toLocal8Bit());
    }
    ~FakePing() { qputenv("PATH", m_path); }
    FakePing(const FakePing&) = delete;
    FakePing& operator=(const FakePing&) = delete;

private:
    QByteArray m_path;
};

} // namespace devices
