#include "Camera/QCameraManager.h"
#include "Camera/QDllLoader.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

bool IsMapped(const char* library) {
    QFile maps("/proc/self/maps");
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(library);
}

TEST(DllLoader, UnloadsAllThatItLoaded) {
    QDllLoader loader;
    ASSERT_FALSE(IsMapped("libanl.so"));
    ASSERT_TRUE(loader.LoadDLL("libanl.so.1")); // of the C library, linked by nobody
    EXPECT_TRUE(IsMapped("libanl.so"));
    EXPECT_FALSE(loader.LoadDLL("/nowhere/libnothing.so"));
    loader.FreeDLL();
    EXPECT_FALSE(IsMapped("libanl.so"));
    loader.FreeDLL(); // nothing left
}

TEST(CameraManager, IsAnObjectWithoutADutyOfItsOwn) {
    const QCameraManager manager;
    EXPECT_STREQ(manager.metaObject()->className(), "QCameraManager");
    EXPECT_EQ(manager.metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
}

} // namespace
