#include "Common/SettingsLocation.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

TEST(SettingsLocation, BesideTheExecutableWhereFilesCanBeMade) {
    const QTemporaryDir folder;
    EXPECT_EQ(SettingsDirectory(folder.path()), folder.path());
    EXPECT_EQ(FirstOutputFolder(folder.path()), folder.path() + "/Data");
}

TEST(SettingsLocation, TheUsersOwnFolderElsewhere) {
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    // A folder that isn't there can't take files either; unlike a read-only one it also stops root.
    const QString absent = home.path() + "/absent";
    const QString settings = SettingsDirectory(absent);
    EXPECT_TRUE(settings.startsWith(home.path())) << settings.toStdString();
    EXPECT_TRUE(QDir(settings).exists());
    EXPECT_NE(FirstOutputFolder(absent), absent + "/Data");
    qunsetenv("XDG_CONFIG_HOME");
}

} // namespace
