#include "support/TextFit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabBar>
#include <QToolButton>
#include <QTreeWidget>
#include <functional>
#include <gmock/gmock.h>
#include <ostream>

namespace {

using kolt::test::FindMisfits;
using kolt::test::FindMisfitsInAllLanguages;
using kolt::test::FindTextsThatStayEnglish;
using kolt::test::TextMisfit;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

const QString kText = "Acquisition frame rate";

template<class Control>
QWidget* WithText(QWidget* parent) {
    auto* control = new Control(parent);
    control->setText(kText);
    return control;
}

struct Kind {
    const char* name;
    std::function<QWidget*(QWidget*)> make;
    int narrow; // a width in which the text can't be shown
};
void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

std::vector<Kind> Kinds() {
    return {
        {"label", WithText<QLabel>, 60},
        {"richLabel",
         [](QWidget* parent) {
             auto* label = new QLabel("<b>Acquisition frame rate</b>", parent);
             return label;
         },
         60},
        {"wrappedLabelTooLow",
         [](QWidget* parent) {
             auto* label = new QLabel(kText, parent);
             label->setWordWrap(true);
             label->setMaximumHeight(20);
             return label;
         },
         100},
        {"pushButton", WithText<QPushButton>, 80},
        {"checkBox", WithText<QCheckBox>, 100},
        {"radioButton", WithText<QRadioButton>, 100},
        {"toolButton", WithText<QToolButton>, 80},
        {"groupBox", [](QWidget* parent) { return new QGroupBox(kText, parent); }, 80},
        {"comboBox",
         [](QWidget* parent) {
             auto* combo = new QComboBox(parent);
             combo->addItems({"a", kText}); // not the one in front
             return combo;
         },
         100},
        {"placeHolder",
         [](QWidget* parent) {
             auto* edit = new QLineEdit(parent);
             edit->setPlaceholderText(kText);
             return edit;
         },
         100},
        {"readOnlyLineEdit",
         [](QWidget* parent) {
             auto* edit = new QLineEdit(kText, parent);
             edit->setReadOnly(true);
             return edit;
         },
         100},
        {"spinBox",
         [](QWidget* parent) {
             auto* spin = new QSpinBox(parent);
             spin->setSpecialValueText(kText);
             return spin;
         },
         100},
        {"tab",
         [](QWidget* parent) {
             auto* bar = new QTabBar(parent);
             bar->setElideMode(Qt::ElideRight);
             bar->setUsesScrollButtons(false);
             bar->addTab(kText);
             return bar;
         },
         100},
        {"menuBar",
         [](QWidget* parent) {
             auto* bar = new QMenuBar(parent);
             bar->addAction(kText);
             return bar;
         },
         60},
        {"header",
         [](QWidget* parent) {
             auto* tree = new QTreeWidget(parent);
             tree->setHeaderLabels({kText});
             return tree;
         },
         60},
        {"list",
         [](QWidget* parent) {
             auto* list = new QListWidget(parent);
             list->addItem(kText);
             return list;
         },
         100},
    };
}

class EachKind : public testing::TestWithParam<Kind> {};

TEST_P(EachKind, IsFoundWhereItIsTooNarrowAndNotElsewhere) {
    QWidget window;
    QWidget* control = GetParam().make(&window);
    window.resize(800, 300);
    window.show();
    control->setGeometry(0, 0, 600, 60);
    QCoreApplication::processEvents();
    EXPECT_THAT(FindMisfits(window), IsEmpty());

    control->setFixedWidth(GetParam().narrow);
    QCoreApplication::processEvents();
    const std::vector<TextMisfit> misfits = FindMisfits(window);
    ASSERT_EQ(misfits.size(), 1u);
    EXPECT_TRUE(misfits[0].text.contains(kText));
    EXPECT_TRUE(misfits[0].where.startsWith("QWidget/")) << misfits[0].where.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Controls, EachKind, testing::ValuesIn(Kinds()),
                         [](const auto& row) { return std::string(row.param.name); });

class OneLabel : public testing::Test {
protected:
    OneLabel() : m_label(kText, &m_window) {
        m_window.resize(400, 200);
        m_label.resize(300, 30);
        m_window.show();
    }
    QWidget m_window;
    QLabel m_label;
};

TEST_F(OneLabel, IsCutOffByItsParent) {
    m_label.move(350, 0);
    EXPECT_THAT(FindMisfits(m_window), testing::SizeIs(1));
}

TEST_F(OneLabel, InAScrollAreaIsCutOffByNothing) {
    QScrollArea area(&m_window);
    area.setGeometry(0, 0, 50, 50);
    auto* inside = new QLabel(kText);
    inside->resize(300, 30);
    area.setWidget(inside);
    area.show();
    EXPECT_THAT(FindMisfits(m_window), IsEmpty());
}

TEST_F(OneLabel, TooLowIsFound) {
    m_label.setFixedHeight(5);
    EXPECT_THAT(FindMisfits(m_window), testing::SizeIs(1));
}

TEST_F(OneLabel, MayBeCutWhenItsToolTipSaysItAll) {
    m_label.resize(20, 30);
    EXPECT_THAT(FindMisfits(m_window), testing::SizeIs(1));
    m_label.setToolTip("Acquisition");
    EXPECT_THAT(FindMisfits(m_window), testing::SizeIs(1));
    m_label.setToolTip(kText);
    EXPECT_THAT(FindMisfits(m_window), IsEmpty());
}

TEST_F(OneLabel, HiddenOrEmptyIsNotLookedAt) {
    m_label.resize(20, 30);
    m_label.hide();
    EXPECT_THAT(FindMisfits(m_window), IsEmpty());
    m_label.show();
    m_label.setText(" ");
    EXPECT_THAT(FindMisfits(m_window), IsEmpty());
}

// A label that follows the language, or doesn't.
class CFollowing : public QLabel {
public:
    CFollowing(const char* source, bool follows, QWidget* parent)
        : QLabel(parent), m_source(source), m_follows(follows) {
        SetIt();
    }

protected:
    void changeEvent(QEvent* event) override {
        if (event->type() == QEvent::LanguageChange && m_follows)
            SetIt();
        QLabel::changeEvent(event);
    }

private:
    void SetIt() { setText(QCoreApplication::translate("QFunction", m_source)); }
    const char* m_source;
    bool m_follows;
};

class Languages : public testing::Test {
protected:
    QLabel& Add(const char* source, bool follows = true) {
        auto* label = new CFollowing(source, follows, &m_window);
        m_layout.addWidget(label);
        return *label;
    }
    QWidget m_window;
    QHBoxLayout m_layout{&m_window};
};

TEST_F(Languages, AreBothLookedAtAndEnglishIsLeftBehind) {
    QLabel& label = Add("No data.");
    label.setFixedWidth(10);
    EXPECT_THAT(
        FindMisfitsInAllLanguages(m_window),
        ElementsAre(
            testing::AllOf(Field(&TextMisfit::language, "English"), Field(&TextMisfit::text, "No data.")),
            testing::AllOf(Field(&TextMisfit::language, "Chinese"), Field(&TextMisfit::text, "无数据。"))));
    EXPECT_EQ(label.text(), "No data.");
}

TEST_F(Languages, LayoutsFollowBeforeTheCheck) {
    Add("No data.");
    Add("Not supported.");
    EXPECT_THAT(FindMisfitsInAllLanguages(m_window), IsEmpty());
}

TEST_F(Languages, TextsThatDontFollowAreFound) {
    Add("No data.");
    Add("Not supported.", false).setObjectName("stays");
    Add("KOLT CAPTURE");
    Add("1/4 %");
    EXPECT_THAT(FindTextsThatStayEnglish(m_window, {"KOLT CAPTURE"}),
                ElementsAre("Not supported. in QWidget/stays:QLabel"));
}

TEST(AMisfit, IsToldInOneLine) {
    std::ostringstream out;
    out << TextMisfit{"Chinese", "QDialog/0:QLabel", "确定", {30, 12}, {20, 12}};
    EXPECT_EQ(out.str(), "Chinese: \"确定\" takes 30 x 12 and has 20 x 12 in QDialog/0:QLabel");
}

} // namespace
