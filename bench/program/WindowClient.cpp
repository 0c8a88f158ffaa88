#include "WindowClient.h"

#include "Camera/CCameraRef.h"
#include "Common/ApplicationStart.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/Look.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLive = 22;
constexpr int kJumbo = 8960;
constexpr auto kPatience = std::chrono::seconds(30);

double Ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

bool WaitFor(const std::function<bool()>& condition) {
    const auto deadline = Clock::now() + kPatience;
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

class Stamp : public QEvent {
public:
    Stamp() : QEvent(QEvent::User), posted(Clock::now()) {}
    const Clock::time_point posted;
};

class Receiver : public QObject {
public:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        m_waits.push_back(Clock::now() - static_cast<Stamp*>(event)->posted);
        return true;
    }
    std::vector<Clock::duration> m_waits;
};

// Posts an event each millisecond for ten seconds while the event loop runs.
void MeasureLatency(const std::function<long long()>& frames) {
    Receiver receiver;
    const auto start = Clock::now();
    const long long before = frames();
    std::thread poster([&receiver, start] {
        for (int i = 0; i < 10000; ++i) {
            std::this_thread::sleep_until(start + std::chrono::milliseconds(i));
            QCoreApplication::postEvent(&receiver, new Stamp);
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QApplication::exec();
    poster.join();
    const double seconds = Ms(Clock::now() - start) / 1000;
    auto& waits = receiver.m_waits;
    std::sort(waits.begin(), waits.end());
    const auto at = [&waits](double q) {
        return Ms(waits[static_cast<size_t>(q * static_cast<double>(waits.size() - 1))]) * 1000;
    };
    std::printf("events %zu median %.0f p99 %.0f max %.0f frames/s %.1f\n", waits.size(), at(0.5), at(0.99),
                at(1), static_cast<double>(frames() - before) / seconds);
}

class Window {
public:
    bool Open() {
        if (!InitORV() || !m_window.InitWidget())
            return false;
        m_window.show();
        return WaitFor([this] {
            const CCameraRef camera = CCameraRef::ByIndex(0);
            return camera && m_window.CentralWindow()->DeviceList()->GetCameraItem(camera->GetCameraID()) &&
                   !m_window.CentralWindow()->DeviceList()->IsDetecting();
        });
    }
    void OpenCamera() { Central().OnOpenCamera(CCameraRef::ByIndex(0)->GetCameraID()); }
    void CloseCamera() { Central().OnCloseCamera(Central().CurrentCameraID()); }
    void ToggleLive() { Central().OnToolBarBtnClicked(kLive); }
    bool WaitForPicture() {
        return WaitFor([] { return CCameraRef::ByIndex(0)->GetCounters().displayed > 0; });
    }

private:
    QOrvCentralWindow& Central() { return *m_window.CentralWindow(); }
    QOrvMainWindow m_window;
};

void Connects(Window& window) {
    for (int i = 0; i < 10; ++i) {
        const auto start = Clock::now();
        window.OpenCamera();
        const auto opened = Clock::now();
        window.ToggleLive();
        const auto started = Clock::now();
        window.WaitForPicture();
        const auto shown = Clock::now();
        std::printf("open %.1f start %.1f picture %.1f\n", Ms(opened - start), Ms(started - opened),
                    Ms(shown - start));
        window.CloseCamera();
        QCoreApplication::processEvents();
    }
}

} // namespace

int RunWindow(int argc, char** argv, const std::string& what) {
    Look::BeforeApplication();
    QApplication application(argc, argv);
    const auto none = [] { return 0LL; };
    if (what == "latency-bare") {
        MeasureLatency(none);
        return 0;
    }
    Look::Apply(application);
    const QTemporaryDir folder;
    QLocalCfg::SetDirectory(folder.path());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    Window window;
    if (!window.Open()) {
        std::printf("no window with a camera\n");
        return 1;
    }
    if (what == "connect") {
        Connects(window);
        return 0;
    }
    window.OpenCamera();
    if (what == "latency-jumbo")
        CCameraRef::ByIndex(0)->SetIntegerNodePropertyValue("GevSCPSPacketSize", kJumbo);
    if (what != "latency-idle") {
        window.ToggleLive();
        if (!window.WaitForPicture()) {
            std::printf("no picture\n");
            return 1;
        }
    }
    std::printf("live\n");
    std::fflush(stdout);
    if (what == "show")
        return QApplication::exec();
    WaitFor([until = Clock::now() + std::chrono::seconds(3)] { return Clock::now() > until; });
    MeasureLatency([] { return static_cast<long long>(CCameraRef::ByIndex(0)->GetRecvFrameNum()); });
    window.CloseCamera();
    return 0;
}
