#include "UI/Controls/CFileDialog.h"

#include "UI/Controls/CDialogTitle.h"
#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/SystemKind.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileIconProvider>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

namespace {

constexpr QSize kSize(760, 500);
constexpr int kSidebarWidth = 160;
constexpr int kButtonWidth = 88;
constexpr int kIconSide = 20;
constexpr int kQuestionKind = 2; // the warning picture

QIcon Picture(const char* name) {
    return QIcon(QString(":/ORV/Resources/file/%1.png").arg(name));
}

// The tool buttons of Qt's dialog by their names there.
constexpr std::pair<const char*, const char*> kTools[] = {
    {"backButton", "back"},       {"forwardButton", "forward"},
    {"toParentButton", "parent"}, {"newFolderButton", "new_folder"},
    {"listModeButton", "list"},   {"detailModeButton", "details"},
};

// The program's pictures for all that can stand in the lists.
class Icons : public QFileIconProvider {
public:
    QIcon icon(IconType type) const override;
    QIcon icon(const QFileInfo& info) const override;
};

QIcon Icons::icon(IconType type) const {
    switch (type) {
    case Computer:
    case Desktop:
    case Network:
        return Picture("computer");
    case Drive:
        return Picture("drive");
    case Folder:
        return Picture("folder");
    default:
        return Picture("file");
    }
}

QIcon Icons::icon(const QFileInfo& info) const {
    if (info.isRoot())
        return Picture("drive");
    if (info.isDir())
        return Picture(info.absoluteFilePath() == QDir::homePath() ? "home" : "folder");
    return Picture("file");
}

} // namespace

CFileDialog::CFileDialog(QWidget* parent, const QString& title, const QString& folder, const QString& filter)
    : QFileDialog(parent, title, QFileInfo(folder).isDir() ? folder : QString(), filter), m_drag(*this) {
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setOption(DontUseNativeDialog);
    setOption(DontConfirmOverwrite); // this class asks
    static Icons icons;              // used by the dialog to its end
    setIconProvider(&icons);
    m_pTitle = new CDialogTitle("dialogTitle", IsUbuntuSystem(), this);
    m_pTitle->setProperty("framed", true); // it lies over the line round the window
    m_pTitle->SetText(title);
    m_pTitle->CloseButton()->setAccessibleName(QDialogEx::tr("Close"));
    connect(m_pTitle->CloseButton(), &QPushButton::clicked, this, &QDialog::close);
    new CFrameGrips(this);
    Arrange();
}

// Qt's parts in the order and size of the program's dialogs: buttons in a row below, the primary one first.
void CFileDialog::Arrange() {
    for (const auto& [button, picture] : kTools) {
        if (auto* tool = findChild<QToolButton*>(button)) {
            tool->setIcon(Picture(picture));
            tool->setIconSize({kIconSide, kIconSide});
            tool->setFixedSize(Look::fieldHeight + 2, Look::fieldHeight);
        }
    }
    auto* grid = qobject_cast<QGridLayout*>(layout());
    auto* buttons = findChild<QDialogButtonBox*>("buttonBox");
    auto* name = findChild<QLineEdit*>("fileNameEdit");
    auto* type = findChild<QComboBox*>("fileTypeCombo");
    auto* splitter = findChild<QSplitter*>("splitter");
    auto* files = findChild<QTreeView*>("treeView");
    if (!grid || !buttons || !name || !type || !splitter || !files)
        return; // another Qt than this one: its own arrangement
    grid->setMenuBar(m_pTitle);
    grid->setContentsMargins(20, 16, 20, 12);
    grid->setSpacing(8);
    grid->setColumnStretch(1, 1);
    setSizeGripEnabled(false); // its edges resize it
    for (QWidget* widget :
         {static_cast<QWidget*>(buttons), static_cast<QWidget*>(name), static_cast<QWidget*>(type)})
        grid->removeWidget(widget);
    grid->addWidget(name, 2, 1, 1, 2);
    grid->addWidget(type, 3, 1, 1, 2);
    buttons->setOrientation(Qt::Horizontal);
    grid->addWidget(buttons, 4, 0, 1, 3);
    buttons->setCenterButtons(false);
    for (QWidget* field : {static_cast<QWidget*>(name), static_cast<QWidget*>(type),
                           static_cast<QWidget*>(findChild<QComboBox*>("lookInCombo"))})
        if (field)
            field->setMinimumHeight(Look::fieldHeight);
    splitter->setHandleWidth(1);
    splitter->setSizes({kSidebarWidth, kSize.width() - kSidebarWidth});
    files->header()->setFixedHeight(Look::dockTitleHeight);
    files->header()->setStretchLastSection(false);
    files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    resize(kSize);
}

// Qt makes the buttons anew with each change of the mode.
void CFileDialog::showEvent(QShowEvent* event) {
    for (auto* buttons : findChildren<QDialogButtonBox*>()) {
        for (QPushButton* button : buttons->findChildren<QPushButton*>()) {
            button->setMinimumSize(kButtonWidth, Look::buttonHeight);
            // The primary button stays the primary one while another has the focus.
            const bool primary = buttons->buttonRole(button) == QDialogButtonBox::AcceptRole;
            button->setAutoDefault(primary);
            button->setDefault(primary);
        }
    }
    QFileDialog::showEvent(event);
}

QString CFileDialog::Run() {
    return exec() == Accepted ? selectedFiles().value(0) : QString();
}

QString CFileDialog::GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                                     const QString& filter) {
    const QFileInfo path(QDir::cleanPath(proposed));
    CFileDialog dialog(parent, title, path.path(), filter);
    dialog.setAcceptMode(AcceptSave);
    dialog.setFileMode(AnyFile);
    dialog.selectFile(path.fileName());
    return dialog.Run();
}

QString CFileDialog::GetOpenFileName(QWidget* parent, const QString& title, const QString& folder,
                                     const QString& filter) {
    CFileDialog dialog(parent, title, folder, filter);
    dialog.setFileMode(ExistingFile);
    return dialog.Run();
}

QString CFileDialog::GetExistingDirectory(QWidget* parent, const QString& title, const QString& folder) {
    CFileDialog dialog(parent, title, folder);
    dialog.setFileMode(Directory);
    dialog.setOption(ShowDirsOnly);
    return dialog.Run();
}

bool CFileDialog::MayReplace() {
    const QFileInfo file(selectedFiles().value(0));
    if (acceptMode() != AcceptSave || fileMode() != AnyFile || !file.exists() || file.isDir())
        return true;
    QMessageBoxDlg question(this);
    question.SetMsgText(tr("Hint"), tr("%1 already exists.\nDo you want to replace it?").arg(file.fileName()),
                        true, kQuestionKind);
    return question.exec() == Accepted;
}

void CFileDialog::accept() {
    if (MayReplace())
        QFileDialog::accept();
}

void CFileDialog::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::surface));
    painter.setPen(QColor(Look::fieldLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void CFileDialog::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && m_pTitle->geometry().contains(event->pos()))
        m_drag.Start(*event);
    QFileDialog::mousePressEvent(event);
}

void CFileDialog::mouseMoveEvent(QMouseEvent* event) {
    m_drag.Follow(*event);
    QFileDialog::mouseMoveEvent(event);
}

void CFileDialog::mouseReleaseEvent(QMouseEvent* event) {
    m_drag.Stop();
    QFileDialog::mouseReleaseEvent(event);
}

void CFileDialog::changeEvent(QEvent* event) {
    QFileDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && m_pTitle)
        m_pTitle->ShowActive(isActiveWindow());
}
