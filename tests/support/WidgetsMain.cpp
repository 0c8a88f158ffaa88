#include <QApplication>
#include <gmock/gmock.h>

int main(int argc, char** argv) {
#ifdef __SANITIZE_THREAD__
    // On X11 Qt has threads of its own (events, accessibility bus) that hand things over by futexes and GLib,
    // where ThreadSanitizer sees races which are none. What it can judge, our own threads, runs as well
    // without them.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_NO_GLIB", "1");
#endif
    QApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
