#include "UI/MainWindow/CapturePaths.h"

#include <gtest/gtest.h>

namespace {

using CapturePaths::Picture;

TEST(CapturePath, TheStampHasMilliseconds) {
    EXPECT_EQ(CapturePaths::Stamp(QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7, 89))), "20260304050607089");
}

struct PictureCase {
    const char* path;
    const char* withExtension;
    Picture kind;
    bool hidden;
    const char* folder;
};

TEST(CapturePath, PicturesByTheirNames) {
    const PictureCase cases[] = {
        {"/data/a.bmp", "/data/a.bmp", Picture::Bmp, false, "/data"},
        {"/data/a.jpg", "/data/a.jpg", Picture::Jpeg, false, "/data"},
        {"/data/a.raw", "/data/a.raw", Picture::Raw, false, "/data"},
        {"/data/a", "/data/a.bmp", Picture::Bmp, false, "/data"},
        {"/data/a.png", "/data/a.png.bmp", Picture::Bmp, false, "/data"},
        {"/data/.a", "/data/.a.bmp", Picture::Bmp, true, "/data"},
        // The folder's name decides as well, and before the ending.
        {"/x.raw/a.jpg", "/x.raw/a.jpg", Picture::Raw, false, "/x.raw"},
        {"/x.jpg/a.bmp", "/x.jpg/a.bmp", Picture::Jpeg, false, "/x.jpg"},
        // As many characters at the end as stand before the last separator are looked at: too few here...
        {"/d/a.bmp", "/d/a.bmp.bmp", Picture::Bmp, false, "/d"},
        // ...and more than the name here, so a folder's ending counts.
        {"/long/folder.bmp/a", "/long/folder.bmp/a", Picture::Bmp, false, "/long/folder.bmp"},
        {"/a.bmp", "/a.bmp.bmp", Picture::Bmp, false, ""},
    };
    for (const PictureCase& c : cases) {
        const QString path = CapturePaths::WithPictureExtension(c.path);
        EXPECT_EQ(path.toStdString(), c.withExtension) << c.path;
        EXPECT_EQ(CapturePaths::PictureOf(path), c.kind) << c.path;
        EXPECT_EQ(CapturePaths::IsHidden(c.path), c.hidden) << c.path;
        EXPECT_EQ(CapturePaths::FolderOf(c.path).toStdString(), c.folder) << c.path;
    }
    EXPECT_EQ(CapturePaths::PictureOf("/data/a"), Picture::Raw) << "without any of the endings";
}

TEST(CapturePath, Recordings) {
    EXPECT_EQ(CapturePaths::RecordPath("", "n.raw"), "n.raw");
    EXPECT_EQ(CapturePaths::RecordPath("/a", "n.raw"), "/a/n.raw");
    EXPECT_EQ(CapturePaths::RecordPath("/a/", "n.raw"), "/a/n.raw");
    EXPECT_EQ(CapturePaths::RecordPath("a\\", "n.raw"), "a\\n.raw");
    EXPECT_EQ(CapturePaths::RecordDirectory("/a/b/n.raw"), "/a/b");
    EXPECT_EQ(CapturePaths::RecordDirectory("/a//b/n.raw"), "/a/b");
    EXPECT_EQ(CapturePaths::RecordDirectory("/n.raw"), "");
    EXPECT_EQ(CapturePaths::RecordDirectory("n.raw"), "");
    EXPECT_EQ(CapturePaths::RecordDirectory(""), "");
}

} // namespace
