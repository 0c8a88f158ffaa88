#include "Pages.h"
#include "StateTable.h"

#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QComboBoxEx.h"
#include "UI/Controls/QFolderSelectWidget.h"
#include "UI/Controls/QGroupBoxEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QPushButtonEx.h"
#include "UI/Controls/QPushButtonExColor.h"
#include "UI/Controls/QRadioButtonEx.h"
#include "UI/Controls/QScrollAreaEx.h"
#include "UI/Controls/QSearchWidget.h"
#include "UI/Controls/QSliderEx.h"
#include "UI/Controls/QSpinBoxEx.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/QStatusLabel.h"
#include "UI/Controls/QTreeWidgetEx.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTextEdit>
#include <QVBoxLayout>

static QWidget* Framed(QWidget* content) {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->addWidget(content);
    layout->addStretch();
    return page;
}

static QImageButton* ToolButton(const QString& set, bool checked = false) {
    auto* button = new QImageButton;
    button->SetBtnImageSet(":/ORV/Resources/" + set);
    button->setFixedSize(44, 32);
    button->setFocusPolicy(Qt::StrongFocus);
    button->SetCheckable(checked);
    button->SetCheck(checked);
    return button;
}

static QWidget* MakeButtons() {
    auto* table = new StateTable;
    table->Add("QPushButtonEx", [] { return new QPushButtonEx("Show Details"); });
    table->Add("QPushButtonExColor", [] { return new QPushButtonExColor("Apply"); });
    table->Add("QImageButton", [] { return ToolButton("btn2/capture"); });
    table->Add("QImageButton, checked", [] { return ToolButton("btn2/connect", true); });
    table->Add("QImageButton, recording", [] { return ToolButton("btn2/record"); });
    table->Add("QImageButton, with text", [] {
        auto* button = ToolButton("function btn/export");
        button->setText("Export");
        button->setFixedSize(button->sizeHint().width() + 4, 32);
        return button;
    });
    table->Add("QImageButton, with menu", [] {
        auto* button = ToolButton("function btn/settings");
        button->AddMenu("30 fps", true, 0);
        button->AddMenu("60 fps", true, 1);
        return button;
    });
    table->Add("QImageButton, 20 by 20", [] {
        auto* button = ToolButton("function btn/refresh");
        button->setFixedSize(20, 20);
        return button;
    });
    return Framed(table);
}

static QWidget* MakeChoices() {
    auto* table = new StateTable;
    table->Add("QCheckBoxEx", [] { return new QCheckBoxEx("Auto-Refresh"); });
    table->Add("QCheckBoxEx, checked", [] {
        auto* box = new QCheckBoxEx("Auto-Refresh");
        box->setChecked(true);
        return box;
    });
    table->Add("QCheckBoxEx, in part", [] {
        auto* box = new QCheckBoxEx("All");
        box->setTristate(true);
        box->setCheckState(Qt::PartiallyChecked);
        return box;
    });
    table->Add("QRadioButtonEx", [] { return new QRadioButtonEx("By frame"); });
    table->Add("QRadioButtonEx, checked", [] {
        auto* radio = new QRadioButtonEx("By time");
        radio->setAutoExclusive(false);
        radio->setChecked(true);
        return radio;
    });
    table->Add("QComboBoxEx", [] {
        auto* combo = new QComboBoxEx;
        combo->addItems({"BayerRG8", "Mono8", "RGB8Packed"});
        return combo;
    });
    table->Add("QGroupBoxEx", [] {
        auto* group = new QGroupBoxEx("Enable");
        group->setMinimumWidth(116);
        group->setCheckable(true);
        auto* layout = new QVBoxLayout(group);
        layout->addWidget(new QLabel("Gain"));
        return group;
    });
    return Framed(table);
}

static QLineEditEx* Field(const QString& text) {
    auto* field = new QLineEditEx(text);
    field->setFixedWidth(120);
    return field;
}

static void AddFieldVariants(StateTable& table) {
    auto* error = Field("192.168.1.300");
    error->setProperty("error", true);
    auto* readOnly = Field("2073600");
    readOnly->setReadOnly(true);
    auto* hint = Field("");
    hint->setPlaceholderText("Search features");
    hint->setFixedWidth(140);
    auto* search = Field("Exposure");
    search->setFixedWidth(140);
    new QSearchWidget(search);
    table.AddRow("error, read-only, hint, search", {error, readOnly, hint, search});
}

static QWidget* MakeFields() {
    auto* table = new StateTable;
    table->Add("QLineEditEx", [] { return Field("10000.00"); });
    AddFieldVariants(*table);
    table->Add("QSpinBoxEx", [] {
        auto* box = new QSpinBoxEx;
        box->setRange(0, 4096);
        box->setValue(1920);
        return box;
    });
    table->Add("QSliderEx", [] {
        auto* slider = new QSliderEx(Qt::Horizontal);
        slider->setValue(42);
        slider->setFixedWidth(120);
        return slider;
    });
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(16);
    layout->addWidget(table);
    auto* folder = new QFolderSelectWidget;
    folder->SetText("/home/operator/Pictures/KOLT CAPTURE");
    folder->setMaximumWidth(420);
    layout->addWidget(new QLabel("QFolderSelectWidget"));
    layout->addWidget(folder);
    layout->addWidget(new QLabel("QStaticLabel, with room for it and without"));
    for (int width : {420, 200}) {
        auto* name = new QStaticLabel("Line 3 east, reject station, camera above the belt (KV-1042)");
        name->setFixedWidth(width);
        layout->addWidget(name);
    }
    layout->addWidget(new QLabel("QStatusLabel"));
    auto* row = new QWidget;
    row->setFixedHeight(25);
    row->setStyleSheet("background: rgb(236, 244, 244)");
    auto* items = new QHBoxLayout(row);
    items->setContentsMargins(10, 0, 10, 0);
    items->setSpacing(10);
    for (const char* text : {"AcquisitionRate:30.00fps", "Image:2517", "BW:497.7Mbps",
                             "Resolution: 1920 * 1080", "LostPacket: 0", "RGB: 111 217 168"})
        items->addWidget(new QStatusLabel(text));
    items->addStretch();
    layout->addWidget(row);
    return Framed(content);
}

static void FillTree(QTreeWidgetEx& tree) {
    tree.setHeaderHidden(true);
    auto* gige = new QTreeWidgetItem(&tree, {"GigE"});
    gige->setIcon(0, QIcon(":/ORV/Resources/tree/network.png"));
    auto* eth = new QTreeWidgetItem(gige, {"enp3s0[192.168.1.2]"});
    eth->setIcon(0, QIcon(":/ORV/Resources/tree/interface.png"));
    const char* const names[] = {"Line 3 east(KV-1042)", "Line 3 west(KV-1043)",
                                 "Reject station above the belt, second camera from the left(KV-2210)"};
    for (const char* name : names)
        (new QTreeWidgetItem(eth, {name}))->setIcon(0, QIcon(":/ORV/Resources/tree/camera.png"));
    auto* lost = new QTreeWidgetItem(eth, {"KV-1044(Unreachable)"});
    lost->setIcon(0, QIcon(":/ORV/Resources/tree/camera.png"));
    lost->setForeground(0, tree.palette().color(QPalette::Disabled, QPalette::Text));
    QFont bold = tree.font();
    bold.setWeight(QFont::Bold);
    eth->child(0)->setFont(0, bold);
    auto* usb = new QTreeWidgetItem(&tree, {"USB"});
    usb->setIcon(0, QIcon(":/ORV/Resources/tree/usb.png"));
    new QTreeWidgetItem(usb, {"Microscope(KU-501)"});
    tree.expandAll();
    usb->setExpanded(false);
    tree.setCurrentItem(eth->child(1));
}

static QWidget* MakeMenu() {
    auto* menu = new QMenuEx;
    menu->setWindowFlags(Qt::Widget);
    menu->addAction("Zoom in");
    menu->addAction("Fit to Window");
    menu->addSeparator();
    auto* checked = menu->addAction("30 fps");
    checked->setCheckable(true);
    checked->setChecked(true);
    menu->addAction("60 fps")->setCheckable(true);
    menu->addAction("Disable Display")->setEnabled(false);
    menu->addSeparator();
    menu->addMenu(new QMenuEx("Display Mode", menu));
    menu->setActiveAction(menu->actions()[1]);
    menu->setFixedSize(menu->sizeHint());
    return menu;
}

static QWidget* MakeLists() {
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->setSpacing(24);
    auto* tree = new QTreeWidgetEx;
    FillTree(*tree);
    tree->setFixedWidth(300);
    auto* right = new QVBoxLayout;
    right->setSpacing(16);
    right->addWidget(MakeMenu(), 0, Qt::AlignLeft);
    auto* area = new QScrollAreaEx;
    auto* tall = new QWidget;
    auto* lines = new QVBoxLayout(tall);
    lines->setContentsMargins(12, 12, 12, 12);
    for (int i = 1; i < 20; ++i)
        lines->addWidget(new QLabel(QString("QScrollAreaEx, line %1").arg(i)));
    area->setWidget(tall);
    area->setFixedHeight(150);
    right->addWidget(area);
    auto* text = new QTextEdit;
    text->setReadOnly(true);
    text->setHtml("<b>Width</b><br>Width of the image provided by the device (in pixels).");
    text->setFixedHeight(72);
    right->addWidget(text);
    right->addStretch();
    layout->addWidget(tree);
    layout->addLayout(right, 1);
    return page;
}

std::vector<Page> ControlPages() {
    return {{"buttons", "Buttons", MakeButtons},
            {"choices", "Choices", MakeChoices},
            {"fields", "Fields", MakeFields},
            {"lists", "Lists", MakeLists}};
}
