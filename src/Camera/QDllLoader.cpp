#include "Camera/QDllLoader.h"

#include <QLibrary>
#include <memory>

QDllLoader::~QDllLoader() {
    qDeleteAll(m_libraries);
}

bool QDllLoader::LoadDLL(const QString& fileName) {
    auto library = std::make_unique<QLibrary>();
    library->setFileName(fileName);
    if (!library->load())
        return false;
    m_libraries.append(library.release());
    return true;
}

void QDllLoader::FreeDLL() {
    for (QLibrary* library : m_libraries)
        library->unload();
    qDeleteAll(m_libraries);
    m_libraries.clear();
}
