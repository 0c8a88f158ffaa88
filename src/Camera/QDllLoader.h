// Loads libraries by their file names and unloads them together. The program itself links its libraries.
#pragma once

#include <QString>
#include <QVector>

class QLibrary;

// Not for several threads at once.
class QDllLoader {
public:
    QDllLoader() = default;
    // Frees what it holds of the objects; libraries that are still loaded stay so.
    ~QDllLoader();
    QDllLoader(const QDllLoader&) = delete;
    QDllLoader& operator=(const QDllLoader&) = delete;

    // False when the file can't be loaded.
    bool LoadDLL(const QString& fileName);
    // Unloads all that LoadDLL has loaded.
    void FreeDLL();

private:
    QVector<QLibrary*> m_libraries; // loaded, in order
};
