// The tokens, the style sheet, the fonts and the pictures.

#include "KitFixture.h"

#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/Controls/QPushButtonEx.h"
#include "UI/Controls/QTreeWidgetEx.h"

#include <QDirIterator>
#include <QFile>
#include <QFontInfo>
#include <QFontMetrics>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QRegularExpression>
#include <QTextLayout>

using kit_test::Kit;

class LookOf : public Kit {};

TEST_F(LookOf, TextHasAContrastOfFourAndAHalfOnEveryGround) {
    for (const Look::TextPair& pair : Look::textPairs) {
        const QColor text = Look::Colour(pair.text);
        const QColor ground = Look::Colour(pair.background);
        ASSERT_TRUE(text.isValid() && ground.isValid()) << pair.text << " on " << pair.background;
        EXPECT_GE(Look::Contrast(text, ground), 4.5) << pair.text << " on " << pair.background;
    }
}

TEST_F(LookOf, ContrastIsThatOfTheGuidelines) {
    EXPECT_NEAR(Look::Contrast(Qt::black, Qt::white), 21.0, 0.01);
    EXPECT_NEAR(Look::Contrast(Qt::white, Qt::white), 1.0, 0.01);
    EXPECT_NEAR(Look::Contrast(QColor("#767676"), Qt::white), 4.54, 0.01);
    EXPECT_EQ(Look::Contrast(Qt::red, Qt::blue), Look::Contrast(Qt::blue, Qt::red));
}

TEST_F(LookOf, OutlinesOfControlsStandOutFromTheirGround) {
    // Check boxes and the focus ring are shapes, for which 3 to 1 is asked.
    EXPECT_GE(Look::Contrast(Look::Colour("accent"), Look::Colour("surface")), 3.0);
    EXPECT_GE(Look::Contrast(Look::Colour("mute"), Look::Colour("surface")), 3.0);
}

TEST_F(LookOf, StyleSheetNamesOnlyKnownColoursAndTextPairs) {
    const QString sheet = Look::StyleSheet();
    ASSERT_FALSE(sheet.isEmpty());
    EXPECT_FALSE(sheet.contains('@')) << sheet.mid(sheet.indexOf('@'), 20).toStdString();
}

// Each rule of the sheet that sets a text colour and a ground makes a pair that is declared, and so tested.
TEST_F(LookOf, RulesThatSetTextAndGroundAreAmongTheTestedPairs) {
    QFile file(":/ORV/Resources/style/kolt.qss");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString sheet = QString::fromUtf8(file.readAll());
    const QRegularExpression body("\\{([^}]*)\\}");
    const QRegularExpression text("(?:^|[;\\s])color: @(\\w+)");
    const QRegularExpression ground("(?:^|[;\\s])background: @(\\w+)");
    int seen = 0;
    auto rules = body.globalMatch(sheet);
    while (rules.hasNext()) {
        const QString rule = rules.next().captured(1);
        const QString ink = text.match(rule).captured(1);
        const QString paper = ground.match(rule).captured(1);
        if (ink.isEmpty() || paper.isEmpty())
            continue;
        ++seen;
        const bool known =
            std::any_of(std::begin(Look::textPairs), std::end(Look::textPairs),
                        [&](const auto& pair) { return ink == pair.text && paper == pair.background; });
        const bool tip = ink == "surface" && paper == "ink"; // the tool tip turns a tested pair round
        EXPECT_TRUE(known || tip) << ink.toStdString() << " on " << paper.toStdString();
    }
    EXPECT_GT(seen, 5);
}

TEST_F(LookOf, EveryPictureOfTheStyleSheetExists) {
    auto urls = QRegularExpression("url\\(\"([^\"]+)\"\\)").globalMatch(Look::StyleSheet());
    int count = 0;
    while (urls.hasNext()) {
        const QString path = urls.next().captured(1);
        EXPECT_FALSE(QPixmap(path).isNull()) << path.toStdString();
        ++count;
    }
    EXPECT_GT(count, 30);
}

TEST_F(LookOf, ResourcesHaveAFolderForEachKindOfControl) {
    for (const char* folder : {"ComboBox", "btn", "btn2", "checkbox", "dialog", "function btn", "radiobox",
                               "scrollbar", "slider", "spinbox", "tree", "Hint"})
        EXPECT_TRUE(QDirIterator(QString(":/ORV/Resources/") + folder, {"*.png"}, QDir::Files).hasNext())
            << folder;
    for (const char* name :
         {"Hint/figure.png", "Hint/error.png", "Hint/warning.png", "Hint/red.png", "backgroundImage.png"})
        EXPECT_FALSE(QPixmap(QString(":/ORV/Resources/") + name).isNull()) << name;
}

TEST_F(LookOf, EveryPictureOfTheToolBarHasFourStates) {
    for (const char* set :
         {"connect", "play", "stop", "capture", "record", "enlarge", "narrow", "fit", "actual"}) {
        QList<QImage> states;
        for (const char* state : {"", "_hov", "_sel", "_dis"}) {
            states += QImage(QString(":/ORV/Resources/btn2/") + set + state + ".png");
            EXPECT_EQ(states.last().size(), QSize(20, 20)) << set << state;
        }
        EXPECT_NE(states[0], states[1]) << set;
        EXPECT_NE(states[0], states[2]) << set;
        EXPECT_NE(states[0], states[3]) << set;
    }
}

TEST_F(LookOf, EveryPictureHasADoubleOfTwiceItsSize) {
    int count = 0;
    QDirIterator files(":/ORV/Resources", {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        if (path.contains('@') || path.endsWith("backgroundImage.png"))
            continue;
        const QImage twice(QString(path).replace(".png", "@2x.png"));
        EXPECT_EQ(twice.size(), QImage(path).size() * 2) << path.toStdString();
        ++count;
    }
    EXPECT_GT(count, 150);
}

TEST_F(LookOf, WindowIconHasTheSizesThatDesktopsAskFor) {
    const QList<QSize> sizes = QIcon(":/ORV/Resources/ORV.ico").availableSizes();
    for (int size : {16, 24, 32, 48, 64, 128})
        EXPECT_TRUE(sizes.contains(QSize(size, size))) << size;
}

TEST_F(LookOf, FontNamesFromElsewhereLeadToTheFacesOfTheLook) {
    EXPECT_EQ(QFontInfo(QApplication::font()).family(), "Inter");
    EXPECT_EQ(QApplication::font().pixelSize(), Look::fontPixels);
    EXPECT_EQ(QFontInfo(QFont("Fangsong Ti")).family(), "Inter");
    EXPECT_EQ(QFontInfo(QFont("FZShuSong-Z01S")).family(), "Inter");
}

TEST_F(LookOf, ChineseTextHasItsOwnFace) {
    QTextLayout layout(QStringLiteral("相机"), QApplication::font());
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    ASSERT_FALSE(runs.isEmpty());
    EXPECT_TRUE(runs.first().rawFont().familyName().startsWith("Noto Sans CJK"))
        << runs.first().rawFont().familyName().toStdString();
    EXPECT_FALSE(runs.first().glyphIndexes().contains(0));
}

TEST_F(LookOf, FiguresAreAllOfOneWidth) {
    const QFontMetrics metrics(QApplication::font());
    ASSERT_NE(metrics.horizontalAdvance("1111"), metrics.horizontalAdvance("8888"));
    EXPECT_EQ(Look::FigureWidth(metrics, "Image:1111"), Look::FigureWidth(metrics, "Image:8888"));
    EXPECT_LT(Look::FigureWidth(metrics, "Image:111"), Look::FigureWidth(metrics, "Image:8888"));
    EXPECT_EQ(Look::FigureWidth(metrics, ""), 0);
    EXPECT_EQ(Look::FigureWidth(metrics, "BW: --"), metrics.horizontalAdvance("BW: --"));
}

static QImage DrawnFigures(const QString& text, int width) {
    QImage image(width, 24, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(QApplication::font());
    Look::DrawFigures(painter, image.rect(), text);
    return image;
}

TEST_F(LookOf, WhatFollowsAFigureStaysInItsPlace) {
    const QFontMetrics metrics(QApplication::font());
    const int left = Look::FigureWidth(metrics, "1111");
    const QRect unit(left, 0, 60, 24);
    EXPECT_EQ(DrawnFigures("1111 fps", 160).copy(unit), DrawnFigures("8888 fps", 160).copy(unit));
    EXPECT_NE(DrawnFigures("1111 fps", 160), DrawnFigures("8888 fps", 160));
}

TEST_F(LookOf, FiguresWithoutRoomAreElided) {
    const QImage cut = DrawnFigures("Resolution: 1920 * 1080", 60);
    EXPECT_NE(cut, DrawnFigures("Resolution: 1920 * 1080", 400).copy(0, 0, 60, 24));
}

// A minimum height in the style sheet would undo the fixed sizes that panels ask for.
TEST_F(LookOf, FixedSizesAreKept) {
    QWidget window;
    window.resize(300, 300);
    QPushButtonEx button("Upload", &window);
    button.setFixedSize(80, 25);
    QLineEditEx field(&window);
    field.setFixedHeight(20);
    QImageButton picture(&window);
    picture.setFixedSize(16, 16);
    kit_test::Show(window);
    EXPECT_EQ(button.size(), QSize(80, 25));
    EXPECT_EQ(field.height(), 20);
    EXPECT_EQ(picture.size(), QSize(16, 16));
    EXPECT_EQ(button.minimumSize(), QSize(80, 25));
}

TEST_F(LookOf, RowsOfListsHaveTheHeightOfTheLook) {
    QTreeWidgetEx tree;
    auto* item = new QTreeWidgetItem(&tree, {"Line 3 east"});
    kit_test::Show(tree);
    EXPECT_EQ(tree.visualItemRect(item).height(), Look::rowHeight);
}

TEST_F(LookOf, PictureOfAnUnknownPathIsNull) {
    EXPECT_TRUE(Look::Picture(":/ORV/Resources/nothing.png").isNull());
    EXPECT_FALSE(Look::Colour("nothing").isValid());
}
