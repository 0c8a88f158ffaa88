#include "Common/ApplicationStart.h"

#include "Camera/QCameraContainer.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "Common/ToolProcess.h"

#include <QDebug>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QTextCodec>
#include <new>

namespace {

constexpr int kFontPoints = 13;

} // namespace

void InitializeCodec() {
    QCoreApplication::addLibraryPath("./plugins");
    // Only to have it loaded: it is nobody's default.
    QTextCodec::codecForName("GBK");
}

void InitApplicationFont(const QString& fontFile) {
    UseApplicationFont(QFontDatabase::addApplicationFont(fontFile));
}

void UseApplicationFont(int nFontId) {
    if (nFontId == -1) {
        qDebug("addApplicationFont failed");
        QFont font;
        font.setFamily("Fangsong Ti");
        QGuiApplication::setFont(font);
        return;
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(nFontId);
    if (!families.isEmpty()) {
        QFont font(families.first());
        font.setPointSize(kFontPoints);
        QGuiApplication::setFont(font);
    }
    qDebug("addApplicationFont success");
}

bool InitORV() {
    try {
        return QFunction::Instance() != nullptr;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void ClearORV() {
    // Deliberate: by these names, though the files that the menu starts have others.
    EndToolProcess("ORV_IP_Config");
    EndToolProcess("ORV_Firmware_Update");
    QFunction::Release();
    QLocalCfg::ReleaseInstance();
    QCameraContainer::ReleaseInstance();
    QCameraContainer::ReleaseInstance(); // deliberate: the second one finds nothing
}
