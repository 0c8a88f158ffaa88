// What a detection round with many cameras costs on the main thread (slots of the list and painting) and on
// its own thread, beside two measures of the same run: filling a bare QTreeWidget with the same texts, which
// is what rebuilding the tree would cost at the least, and one frame of a 60 Hz display.
//
// bench_device_list: runs without a display (offscreen).
#include "Camera/QCameraContainer.h"
#include "Camera/QDeviceDetectThread.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "DeviceRecords.h"
#include "UI/Controls/Look.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "support/PlatformDoubles.h"

#include <QApplication>
#include <QEvent>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 30;

double ThreadCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::vector<_OV_CC_DEVICE_INFO_> Plant(uint32_t count, const char* name) {
    std::vector<_OV_CC_DEVICE_INFO_> all;
    for (uint32_t i = 0; i < count; ++i) {
        devices::Gige camera;
        camera.mac = i;
        camera.host = devices::Ip(i % 4 * 256 + 1);
        camera.ip = camera.host + 10 + i / 4;
        camera.serial = "G" + std::to_string(i);
        camera.user = name + std::to_string(i);
        all.push_back(GigeRecord(camera));
    }
    return all;
}

// The main thread's share of a round: the longest single event, and all of it.
struct Share {
    double all = 0;
    double longest = 0;
};

// Measures each event that the main thread handles.
class MeasuredApplication : public QApplication {
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override {
        if (m_depth > 0)
            return QApplication::notify(receiver, event);
        ++m_depth;
        const auto before = Clock::now();
        const bool done = QApplication::notify(receiver, event);
        const double ms = std::chrono::duration<double, std::milli>(Clock::now() - before).count();
        --m_depth;
        share.all += ms;
        share.longest = std::max(share.longest, ms);
        return done;
    }
    Share share;

private:
    int m_depth = 0;
};

Share Round(MeasuredApplication& application, QDevListWidget& list) {
    application.share = {};
    const auto before = Clock::now();
    list.OnBtnRefresh();
    const double started = std::chrono::duration<double, std::milli>(Clock::now() - before).count();
    application.share.all = application.share.longest = started;
    while (list.IsDetecting())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents(); // what is left, and painting
    return application.share;
}

double Rebuild(QTreeWidget& tree, const std::vector<QString>& texts) {
    const double before = ThreadCpuMs();
    tree.clear();
    auto* root = new QTreeWidgetItem(&tree, {QStringLiteral("GigE")});
    for (const QString& text : texts) {
        auto* item = new QTreeWidgetItem(root, {text});
        item->setToolTip(0, text);
    }
    root->setExpanded(true);
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
    return ThreadCpuMs() - before;
}

void Print(int cameras, const char* what, const std::vector<Share>& shares, double rebuild) {
    std::vector<double> all, longest;
    for (const Share& share : shares) {
        all.push_back(share.all);
        longest.push_back(share.longest);
    }
    std::printf("%7d %-34s %8.2f %8.2f %10.2f %8.2f\n", cameras, what, Median(all),
                *std::max_element(all.begin(), all.end()), *std::max_element(longest.begin(), longest.end()),
                Median(all) / rebuild);
}

void Measure(MeasuredApplication& application, uint32_t count) {
    auto& doubles = support::PlatformDoubles::Get();
    doubles.Reset();
    QDevListWidget list;
    list.resize(320, 600);
    list.show();
    Round(application, list);
    const auto plant = Plant(count, "line ");

    std::vector<QString> texts;
    for (uint32_t i = 0; i < count; ++i)
        texts.push_back(QString("line %1(G%1)").arg(i));
    QTreeWidget bare;
    bare.resize(320, 600);
    bare.show();
    std::vector<double> rebuilds;
    for (int i = 0; i < kRounds; ++i)
        rebuilds.push_back(Rebuild(bare, texts));
    const double rebuild = Median(rebuilds);
    bare.hide();

    std::vector<Share> arrive, same, renamed, leave;
    std::vector<double> thread;
    doubles.OnCall("OV_CC_EnumDevices", [] {});
    for (int i = 0; i < kRounds; ++i) {
        doubles.SetDevices(plant);
        arrive.push_back(Round(application, list));
        same.push_back(Round(application, list));
        doubles.SetDevices(Plant(count, i % 2 ? "east " : "west "));
        renamed.push_back(Round(application, list));
        QDeviceDetectThread alone;
        const auto before = Clock::now();
        alone.start();
        alone.wait();
        thread.push_back(std::chrono::duration<double, std::milli>(Clock::now() - before).count());
        doubles.SetDevices({});
        leave.push_back(Round(application, list));
    }
    Print(static_cast<int>(count), "all arrive", arrive, rebuild);
    Print(static_cast<int>(count), "nothing has changed", same, rebuild);
    Print(static_cast<int>(count), "all names have changed", renamed, rebuild);
    Print(static_cast<int>(count), "all vanish", leave, rebuild);
    std::printf("%7d %-34s %8.2f\n", static_cast<int>(count), "(the round's own thread)", Median(thread));
    std::printf("%7d %-34s %8.2f %28s\n", static_cast<int>(count), "(filling a bare tree anew)", rebuild,
                "1.00");
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    MeasuredApplication application(argc, argv);
    Look::Apply(application);
    QTemporaryDir folder;
    QLocalCfg::SetDirectory(folder.path());
    QVector<_HOST_INTERFACE_> host;
    for (uint32_t i = 0; i < 4; ++i)
        host.append(devices::Interface("eth" + std::to_string(i), "M" + std::to_string(i), {i}));
    SetHostInterfaceSource([host] { return host; });
    std::printf("main thread's time for one round, ms (one frame at 60 Hz: 16.7; the bound: 50)\n");
    std::printf("%7s %-34s %8s %8s %10s %8s\n", "cameras", "what happens", "median", "worst", "one event",
                "x bare");
    for (const uint32_t count : {20u, 200u, 256u})
        Measure(application, count);
    QCameraContainer::ReleaseInstance();
    QLocalCfg::ReleaseInstance();
    return 0;
}
