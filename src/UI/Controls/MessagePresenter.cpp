#include "UI/Controls/MessagePresenter.h"

#include "Common/QFunction.h"
#include "UI/Controls/QShowMessageDlg.h"

#include <QGuiApplication>
#include <QScreen>

void RegisterMessagePresenter() {
    QFunction::SetMessagePresenter(
        [](QWidget* parent, const QString& message, const QString& detail, const QString& title, int kind) {
            QShowMessageDlg dialog(parent);
            dialog.SetInfo(message, detail, title, kind);
            if (const QScreen* screen = QGuiApplication::primaryScreen())
                dialog.move(screen->geometry().center() - dialog.rect().center());
            dialog.exec(parent == nullptr);
        });
}
