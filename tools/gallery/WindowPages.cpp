#include "Pages.h"

#include "UI/Controls/CFileDialog.h"
#include "UI/Controls/Look.h"
#include "UI/Controls/QAboutDlg.h"
#include "UI/Controls/QComboBoxEx.h"
#include "UI/Controls/QDockTitleBar.h"
#include "UI/Controls/QDockWidgetEx.h"
#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/Controls/QMainWindowEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/Controls/QShowMessageDlg.h"
#include "UI/Controls/QSliderEx.h"
#include "UI/Controls/QStatusLabel.h"
#include "UI/Controls/QTreeWidgetEx.h"
#include "UI/Controls/SystemKind.h"

#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolBar>
#include <QVBoxLayout>

static QWidget* MakeMessage(const QString& title, const QString& text, bool cancel, int kind) {
    auto* dialog = new QMessageBoxDlg;
    dialog->SetMsgText(title, text, cancel, kind);
    return dialog;
}

static QWidget* MakeDetails(bool shown) {
    auto* dialog = new QShowMessageDlg;
    dialog->SetInfo("Connecting camera failed.",
                    "Camera is opened by other client, please close it and try again.", "Error", 1);
    if (shown)
        dialog->OnBtnDetails();
    return dialog;
}

static QWidget* MakeForm() {
    auto* dialog = new QDialogEx;
    dialog->SetTitleText("Edit IP Address");
    auto* rows = new QVBoxLayout;
    rows->setContentsMargins(20, 16, 20, 8);
    rows->setSpacing(16);
    auto* hint = new QLabel("Editing IP address to make device reachable.");
    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    row->addWidget(new QLabel("IP address:"));
    row->addWidget(new QLineEditEx("192.168.1.64"), 1);
    rows->addWidget(hint);
    rows->addLayout(row);
    rows->addStretch();
    dialog->SetLayoutEx(rows);
    dialog->setFixedSize(374, 206);
    return dialog;
}

static QWidget* MakeHint() {
    auto* dialog = new QHintAdjustDlg;
    dialog->SetMsgText("Hint", "The packet loss is too much.Please adjust the bandwidth.");
    return dialog;
}

static QWidget* MakeSaved() {
    auto* dialog = new QSaveDoneHintDlg;
    dialog->SetMsgText("Images captured.", "/tmp");
    return dialog;
}

static QToolBar* MakeToolBar() {
    auto* bar = new QToolBar;
    bar->setMovable(false);
    const char* const sets[] = {"connect", "",        "stop",   "capture", "record",
                                "",        "enlarge", "narrow", "fit",     "actual"};
    for (const QString set : sets) {
        if (set.isEmpty()) {
            bar->addSeparator();
            continue;
        }
        auto* button = new QImageButton;
        button->SetBtnImageSet(":/ORV/Resources/btn2/" + set);
        button->setFixedSize(44, 32);
        button->setFocusPolicy(Qt::NoFocus);
        button->SetCheckable(set == "connect" || set == "stop");
        button->SetCheck(true);
        button->setEnabled(set != "actual");
        bar->addWidget(button);
    }
    return bar;
}

static void AddFeature(QTreeWidgetEx& tree, QTreeWidgetItem* group, const QString& name, QWidget* editor) {
    auto* item = new QTreeWidgetItem(group, {name});
    auto* cell = new QWidget;
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 1, 8, 1);
    layout->setSpacing(10);
    if (qobject_cast<QLineEditEx*>(editor) && editor->isEnabled()) {
        auto* slider = new QSliderEx(Qt::Horizontal);
        slider->setValue(42);
        layout->addWidget(slider, 1);
        editor->setFixedWidth(70);
        layout->addWidget(editor);
    } else {
        layout->addWidget(editor, 1);
    }
    editor->setFixedHeight(24);
    tree.setItemWidget(item, 1, cell);
}

static QWidget* MakeFeatureTree() {
    auto* tree = new QTreeWidgetEx;
    tree->setColumnCount(2);
    tree->setHeaderHidden(true);
    auto* group = new QTreeWidgetItem(tree, {"ImageFormatControl"});
    QFont bold = tree->font();
    bold.setWeight(QFont::DemiBold);
    group->setFont(0, bold);
    auto* format = new QComboBoxEx;
    format->addItems({"BayerRG8", "Mono8"});
    AddFeature(*tree, group, "Pixel Format", format);
    AddFeature(*tree, group, "Width", new QLineEditEx("1920"));
    AddFeature(*tree, group, "Height", new QLineEditEx("1080"));
    auto* payload = new QLineEditEx("2073600");
    payload->setEnabled(false);
    AddFeature(*tree, group, "Payload Size", payload);
    auto* acquisition = new QTreeWidgetItem(tree, {"AcquisitionControl"});
    acquisition->setFont(0, bold);
    new QTreeWidgetItem(acquisition, {"Trigger Software"});
    group->setExpanded(true);
    group->setFirstColumnSpanned(true);
    acquisition->setFirstColumnSpanned(true);
    tree->setColumnWidth(0, 150);
    tree->setCurrentItem(group->child(1));
    return tree;
}

static QWidget* MakePreview() {
    auto* preview = new QWidget;
    auto* layout = new QVBoxLayout(preview);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* picture = new QLabel;
    picture->setStyleSheet("background: #14181D");
    picture->setPixmap(Look::Picture(":/ORV/Resources/backgroundImage.png"));
    picture->setAlignment(Qt::AlignCenter);
    picture->setMinimumSize(1, 1);
    auto* status = new QWidget;
    status->setFixedHeight(25);
    status->setStyleSheet("background: rgb(236, 244, 244)");
    auto* items = new QHBoxLayout(status);
    items->setContentsMargins(10, 0, 10, 0);
    items->setSpacing(10);
    for (const char* text : {"AcquisitionRate:30.00fps", "Image:2517", "BW:497.7Mbps", "LostPacket: 0"})
        items->addWidget(new QStatusLabel(text));
    items->addStretch();
    layout->addWidget(picture, 1);
    layout->addWidget(status);
    return preview;
}

static QWidget* MakeMain(bool ubuntu) {
    SetSystemProbe([ubuntu] { return QString(ubuntu ? "Ubuntu" : "Linux"); });
    auto* window = new QMainWindowEx;
    SetSystemProbe(nullptr);
    window->SetTitleText("KOLT CAPTURE 1.0.0");
    for (const char* text : {"File", "View", "Camera", "Setting", "Tool", "Lang", "Help"})
        window->AddTitleBarMenu(text, new QMenuEx(window));
    auto* central = new QMainWindow;
    central->addToolBar(MakeToolBar());
    auto* dock = new QDockWidgetEx("Feature");
    new QDockTitleBar(dock);
    dock->setWidget(MakeFeatureTree());
    dock->widget()->setMinimumWidth(318);
    central->addDockWidget(Qt::LeftDockWidgetArea, dock);
    auto* info = new QDockWidgetEx("Embedded Information");
    new QDockTitleBar(info);
    auto* facts = new QTreeWidgetEx;
    facts->setHeaderHidden(true);
    facts->setMinimumWidth(220);
    for (const char* fact : {"Timestamp", "Gain", "Exposure", "Frame Number"})
        new QTreeWidgetItem(facts, {fact});
    info->setWidget(facts);
    central->addDockWidget(Qt::RightDockWidgetArea, info);
    central->setCentralWidget(MakePreview());
    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(central);
    window->SetLayoutEx(layout);
    window->resize(1100, 560);
    return window;
}

// A folder with pictures to choose from, there until the gallery ends.
static QString PictureFolder() {
    static const QTemporaryDir folder;
    for (const char* name : {"Line 1 top", "Line 3 east"})
        QDir(folder.path()).mkpath(name);
    for (const char* name : {"20261121101530042.bmp", "20261121101544871.bmp", "reference.bmp"}) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.resize(6220854);
    }
    return folder.path();
}

static QWidget* MakeFileDialog(QFileDialog::AcceptMode accept, QFileDialog::FileMode mode,
                               const QString& title, const QString& name) {
    auto* dialog = new CFileDialog(nullptr, title, PictureFolder(), "Images (*.bmp);;RawData (*.raw)");
    dialog->setAcceptMode(accept);
    dialog->setFileMode(mode);
    dialog->selectFile(name);
    return dialog;
}

std::vector<Page> WindowPages() {
    return {
        {"message-information", "",
         [] { return MakeMessage("Hint", "Applied to camera successfully.", false, 0); }},
        {"message-question", "", [] { return MakeMessage("Hint", "Exit the client?", true, 0); }},
        {"message-warning", "",
         [] {
             return MakeMessage(
                 "Hint",
                 "The network speed is less than 1.0 Gbps.\nPlease check the network card, the switch "
                 "and the cable between the camera and this computer.",
                 true, 2);
         }},
        {"message-error", "", [] { return MakeDetails(false); }},
        {"message-details", "", [] { return MakeDetails(true); }},
        {"dialog-form", "", MakeForm},
        {"hint-adjust", "", MakeHint},
        {"notice-saved", "", MakeSaved},
        {"about", "", [] { return new QAboutDlg; }},
        {"file-save", "",
         [] {
             return MakeFileDialog(QFileDialog::AcceptSave, QFileDialog::AnyFile, "Save Image",
                                   "20261122101530042.bmp");
         }},
        {"file-open", "",
         [] {
             return MakeFileDialog(QFileDialog::AcceptOpen, QFileDialog::ExistingFile, "Load Attribute",
                                   "reference.bmp");
         }},
        {"file-folder", "",
         [] {
             return MakeFileDialog(QFileDialog::AcceptOpen, QFileDialog::Directory, "Open Directory",
                                   "Line 3 east");
         }},
        {"main-window", "", [] { return MakeMain(false); }},
        {"main-window-ubuntu", "", [] { return MakeMain(true); }},
    };
}
