#include "Common/ApplicationStart.h"
#include "UI/Controls/Look.h"
#include "e2e/E2eFixture.h"

#include <QApplication>
#include <QIcon>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <thread>

// The main function of the program, with a person before it.
int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    // Cameras and program answer one another within fractions of a second. On a busy machine they therefore
    // go first, where they may.
    setpriority(PRIO_PROCESS, 0, -5);
    e2e::World world;
    Look::BeforeApplication();
    QApplication application(argc, argv);
    Look::Apply(application);
    InitializeCodec();
    InitApplicationFont(QCoreApplication::applicationDirPath() + "/segoeui.ttf");
    QApplication::setWindowIcon(QIcon(":/ORV/Resources/ORV.ico"));
    QApplication::setQuitOnLastWindowClosed(false); // several programs come and go
    int result = 1;
    std::thread person([&result] {
        result = RUN_ALL_TESTS();
        QMetaObject::invokeMethod(
            qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    });
    QApplication::exec();
    person.join();
    return result;
}
