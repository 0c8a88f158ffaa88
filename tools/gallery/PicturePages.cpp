#include "Pages.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QScrollAreaEx.h"

#include <QDirIterator>
#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

// The sets in the resources: paths without state, scale and suffix.
static QStringList PictureSets() {
    QStringList sets;
    QDirIterator files(":/ORV/Resources", {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next().mid(int(qstrlen(":/ORV/Resources/")));
        if (file.contains('/') && !file.contains('@') && !file.endsWith("_hov.png") &&
            !file.endsWith("_sel.png") && !file.endsWith("_dis.png"))
            sets += file.left(file.size() - 4);
    }
    sets.sort();
    return sets;
}

static QWidget* MakePictures() {
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(24, 16, 24, 16);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    constexpr int columns = 3;
    int place = 0;
    for (const QString& set : PictureSets()) {
        const int row = place / columns;
        const int left = place % columns * 6;
        auto* name = new QLabel(set);
        name->setObjectName("caption");
        grid->addWidget(name, row, left);
        int column = 1;
        for (const char* state : {"", "_hov", "_sel", "_dis"}) {
            const QPixmap picture = Look::Picture(":/ORV/Resources/" + set + state + ".png");
            if (picture.isNull())
                continue;
            auto* label = new QLabel;
            label->setPixmap(picture);
            label->setAlignment(Qt::AlignCenter);
            // White strokes stand on the colour that they are made for.
            if (set.endsWith("/close") && (column == 2 || column == 3))
                label->setStyleSheet("background: " + Look::Colour("badInk").name());
            grid->addWidget(label, row, left + column++);
        }
        ++place;
    }
    for (int i = 1; i < columns; ++i)
        grid->setColumnMinimumWidth(i * 6 - 1, 24);
    grid->setRowStretch(grid->rowCount(), 1);
    return page;
}

static QWidget* Swatch(const QString& name) {
    auto* swatch = new QLabel;
    swatch->setFixedSize(64, 28);
    swatch->setStyleSheet(QString("background: %1; border: 1px solid %2; border-radius: 4px")
                              .arg(Look::Colour(name).name(), Look::Colour("line").name()));
    return swatch;
}

static QWidget* MakeColours() {
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(24, 16, 24, 16);
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(4);
    int row = 0;
    for (const Look::Token& token : Look::tokens) {
        const int left = row >= 13 ? 3 : 0;
        const int line = row >= 13 ? row - 13 : row;
        grid->addWidget(Swatch(token.name), line, left);
        grid->addWidget(new QLabel(QString("%1  %2").arg(token.name, Look::Colour(token.name).name())), line,
                        left + 1);
        ++row;
    }
    row = 0;
    for (const Look::TextPair& pair : Look::textPairs) {
        const QColor text = Look::Colour(pair.text);
        const QColor ground = Look::Colour(pair.background);
        auto* sample = new QLabel(QString("%1 on %2: %3")
                                      .arg(pair.text, pair.background)
                                      .arg(Look::Contrast(text, ground), 0, 'f', 1));
        sample->setStyleSheet(
            QString("color: %1; background: %2; padding: 1px 6px").arg(text.name(), ground.name()));
        grid->addWidget(sample, row / 2, 6 + row % 2);
        ++row;
    }
    grid->setColumnMinimumWidth(2, 16);
    grid->setColumnMinimumWidth(5, 16);
    grid->setColumnStretch(8, 1);
    grid->setRowStretch(grid->rowCount(), 1);
    return page;
}

std::vector<Page> PicturePages() {
    return {{"pictures", "Pictures", MakePictures}, {"colours", "Colours", MakeColours}};
}
