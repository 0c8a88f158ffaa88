// The pictures that are kept are those that the drawings and the tokens give.

#include "support/ChildProcess.h"
#include "support/Places.h"

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

static QByteArray Bytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static void ExpectSamePictures(const QString& drawn, const QString& kept, int atLeast) {
    const QStringList pictures = Pictures(drawn);
    EXPECT_EQ(pictures, Pictures(kept));
    EXPECT_GE(pictures.size(), atLeast);
    for (const QString& name : pictures)
        EXPECT_EQ(QImage(drawn + '/' + name), QImage(kept + '/' + name)) << name.toStdString();
}

TEST(Icons, AreTheRenderingOfTheirDrawings) {
    const QTemporaryDir folder;
    const auto finished =
        kolt::test::run({KOLT_SOURCE_DIR "/scripts/render-icons", folder.path().toStdString()});
    ASSERT_EQ(finished.exitCode, 0) << finished.output;
    ExpectSamePictures(folder.filePath("resources"), KOLT_SOURCE_DIR "/resources", 300);

    // The program's icon: inside of it, and for desktops.
    EXPECT_EQ(Bytes(folder.filePath("resources/ORV.ico")), Bytes(KOLT_SOURCE_DIR "/resources/ORV.ico"));
    const QString desktop = KOLT_SOURCE_DIR "/packaging/icons";
    ExpectSamePictures(folder.filePath("packaging/icons"), desktop, 8);
    const QByteArray drawing = Bytes(desktop + "/scalable/kolt-capture.svg");
    EXPECT_EQ(drawing, Bytes(KOLT_SOURCE_DIR "/resources/icons/logo.svg"));
    EXPECT_TRUE(drawing.startsWith("<svg"));
}

TEST(Icons, OfTheDesktopHaveTheSizesOfTheirFolders) {
    for (int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
        const QString path = QString(KOLT_SOURCE_DIR "/packaging/icons/%1x%1/kolt-capture.png").arg(size);
        const QImage icon(path);
        EXPECT_EQ(icon.size(), QSize(size, size)) << path.toStdString();
        // Round corners, and the white of a blade on the ground's colours.
        EXPECT_LT(qAlpha(icon.pixel(0, 0)), 64) << size;
        EXPECT_EQ(qAlpha(icon.pixel(size / 2, size / 2)), 255) << size;
        EXPECT_GT(qBlue(icon.pixel(size / 2, size / 2)), qRed(icon.pixel(size / 2, size / 2)) + 60) << size;
    }
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
        if (name.startsWith("logo") || name == "background.svg")
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
