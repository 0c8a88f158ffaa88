// The pictures that are kept are those that the drawings and the tokens give.

#include "support/ChildProcess.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <gmock/gmock.h>

static QStringList Pictures(const QString& folder) {
    QStringList found;
    QDirIterator files(folder, {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        found += QDir(folder).relativeFilePath(files.next());
    found.sort();
    return found;
}

TEST(Icons, AreTheRenderingOfTheirDrawings) {
    const QTemporaryDir folder;
    const auto finished =
        kolt::test::run({KOLT_SOURCE_DIR "/scripts/render-icons", folder.path().toStdString()});
    ASSERT_EQ(finished.exitCode, 0) << finished.output;
    const QString kept = KOLT_SOURCE_DIR "/resources";
    const QStringList pictures = Pictures(folder.path());
    EXPECT_EQ(pictures, Pictures(kept));
    EXPECT_GT(pictures.size(), 300);
    for (const QString& name : pictures)
        EXPECT_EQ(QImage(folder.filePath(name)), QImage(kept + '/' + name)) << name.toStdString();
}

TEST(Icons, AreAllInTheListOfResources) {
    QFile list(KOLT_SOURCE_DIR "/resources/qrc_orv.qrc");
    ASSERT_TRUE(list.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(list.readAll());
    for (const QString& name : Pictures(KOLT_SOURCE_DIR "/resources"))
        EXPECT_TRUE(text.contains("<file>" + name + "</file>")) << name.toStdString();
    EXPECT_TRUE(text.contains("<file>ORV.ico</file>"));
    EXPECT_TRUE(text.contains("<file>style/kolt.qss</file>"));
}

TEST(Icons, AreDrawnOnOneGridWithOneStroke) {
    const QDir drawings(KOLT_SOURCE_DIR "/resources/icons");
    int count = 0;
    for (const QString& name : drawings.entryList({"*.svg"})) {
        if (name == "logo.svg" || name == "background.svg")
            continue;
        QFile file(drawings.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        EXPECT_TRUE(text.contains("viewBox=\"0 0 20 20\"")) << name.toStdString();
        EXPECT_TRUE(text.contains("stroke-linecap=\"round\"")) << name.toStdString();
        EXPECT_TRUE(text.contains("currentColor")) << name.toStdString();
        ++count;
    }
    EXPECT_GT(count, 30);
}
