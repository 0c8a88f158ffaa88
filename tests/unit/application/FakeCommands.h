// Stand-ins for "ps" and "kill", first in the search path: nothing real is ever killed.
#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <string>
#include <vector>

namespace app_test {

class FakeCommands {
public:
    FakeCommands() : m_path(qgetenv("PATH")) {
        Write("ps", "echo ps \"$@\" >>" + m_bin.filePath("run") + "; cat " + m_bin.filePath("list"));
        Write("kill", "echo kill \"$@\" >>" + m_bin.filePath("run"));
        List({});
        qputenv("PATH", SearchPath().toUtf8());
    }
    ~FakeCommands() { qputenv("PATH", m_path); }
    FakeCommands(const FakeCommands&) = delete;
    FakeCommands& operator=(const FakeCommands&) = delete;

    QString SearchPath() const { return m_bin.path() + ":" + m_path; }

    // What "ps" tells from now on.
    void List(const QString& text) {
        QFile file(m_bin.filePath("list"));
        if (file.open(QIODevice::WriteOnly))
            file.write(text.toUtf8());
    }
    // The commands that were run, with their arguments.
    std::vector<std::string> Run() const {
        std::vector<std::string> lines;
        QFile file(m_bin.filePath("run"));
        if (file.open(QIODevice::ReadOnly))
            for (const QString& line : QString(file.readAll()).split('\n', Qt::SkipEmptyParts))
                lines.push_back(line.toStdString());
        return lines;
    }

private:
    void Write(const QString& name, const QString& script) {
        QFile file(m_bin.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(("#!/bin/sh\n" + script + "\n").toUtf8());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QTemporaryDir m_bin;
    QByteArray m_path;
};

} // namespace app_test
