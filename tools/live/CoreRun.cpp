#include "CoreRun.h"

#include "Camera/QCamera.h"
#include "CameraSelector.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "LiveRun.h"
#include "Output.h"
#include "PixelFormat.h"
#include "Viewer.h"

#include <QCoreApplication>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <poll.h>

namespace live {
namespace {

constexpr auto reportPeriod = std::chrono::seconds(1);
constexpr int displayOn30 = 8; // QCamera::SetDisplayMode
constexpr int displayOn60 = 9;
constexpr int engineSoftware = 2; // QCamera::SetVREngineMode; 0 is OpenGL where there is hardware for it
constexpr int engineFirst = 0;
constexpr int remarkSize = 513;

/// The core reads its settings from QLocalCfg. Those of this run live in a folder that goes with it, so that
/// the settings of the main program are neither used nor changed.
class RunSettings {
public:
    explicit RunSettings(const Options& options) {
        QLocalCfg::SetDirectory(folder_.path());
        QLocalCfg* cfg = QLocalCfg::Instance();
        if (cfg == nullptr)
            return;
        cfg->SetSDKBufferSize(static_cast<int>(options.buffers));
        cfg->SetAutoCheckThrowFrame(options.dropIncomplete);
        cfg->SetAutoCheckNetwork(options.packetSize == Options::PacketSize::Optimal);
    }
    RunSettings(const RunSettings&) = delete;
    RunSettings& operator=(const RunSettings&) = delete;
    ~RunSettings() { QLocalCfg::ReleaseInstance(); }

private:
    QTemporaryDir folder_;
};

} // namespace

CoreRun::~CoreRun() {
    if (camera_ != nullptr)
        camera_->ReleaseRef();
}

int CoreRun::Run() {
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr);
    const RunSettings settings(options_);
    std::string error;
    window_ = Window::Open({960, 600}, error);
    if (!window_) {
        Complain(error);
        return exitFailed;
    }
    window_->SetTitle("kolt_live");
    begin_ = Clock::now();
    int exitCode = exitDone;
    const std::optional<DeviceRecord> device = ChooseCamera(options_, exitCode);
    if (!device)
        return exitCode;
    device_ = *device;
    exitCode = Open();
    if (exitCode == exitDone)
        exitCode = Stream();
    camera_->CloseCamera();
    return exitCode;
}

int CoreRun::Complaint(const char* call, int code) const {
    Complain("cannot open " + TitleOf(device_) + "\n" + call + " failed with code " + std::to_string(code) +
             ": " + QFunction::GenerateCameraOperateError(code).toStdString());
    return exitFailed;
}

int CoreRun::Open() {
    camera_ = QCamera::NewInstance();
    camera_->AddRef();
    camera_->SetOVCCDevInfo(device_);
    if (ModelOf(device_).empty()) {
        if (const int code = camera_->GenerateOVCDevInfoByConnectDev())
            return Complaint("GenerateOVCDevInfoByConnectDev", code);
        device_ = camera_->GetOVCCDevInfo();
    }
    if (const int code = camera_->OpenCamera())
        return Complaint("OpenCamera", code);
    Say("opened " + TitleOf(device_) + " by the camera core");
    window_->SetTitle("kolt_live - " + TitleOf(device_));
    SetPacketSize();
    if (const int exitCode = SaveXml(); exitCode != exitDone)
        return exitCode;
    camera_->SetCameraDisconnectCallBackInfo(
        [](void* user, long) {
            auto& self = *static_cast<CoreRun*>(user);
            self.isLost_ = true;
            self.changed_.Raise();
        },
        this);
    camera_->SetFrameSizeChangedCallBack(
        [](int, int, void* user) {
            auto& self = *static_cast<CoreRun*>(user);
            self.isSizeChanged_ = true;
            self.changed_.Raise();
        },
        this);
    camera_->SetBayerInterpolation(static_cast<int>(options_.interpolation));
    camera_->SetVREngineMode(options_.engine == engineSoftware ? engineSoftware : engineFirst);
    camera_->SetDisplayMode(options_.displayRate == 30 ? displayOn30 : displayOn60);
    if (const int code = camera_->OnStartGettingFrame(true))
        return Complaint("OnStartGettingFrame", code);
    camera_->SetPlayWnd(window_->Native());
    return exitDone;
}

void CoreRun::SetPacketSize() {
    if (options_.packetSize == Options::PacketSize::AsItIs)
        return;
    if (options_.packetSize == Options::PacketSize::Fixed &&
        camera_->SetIntegerNodePropertyValue("GevSCPSPacketSize", options_.packetBytes) == 0) {
        std::array<char, remarkSize> remark{};
        camera_->GetLastErrorRemark(remark.data(), remarkSize);
        Complain("the packet size could not be set to " + std::to_string(options_.packetBytes) + ": " +
                 remark.data());
    }
    Say("packet size " + std::to_string(camera_->GetCameraPacketSize()) + " bytes");
}

int CoreRun::SaveXml() {
    if (options_.xmlFile.empty())
        return exitDone;
    if (!camera_->SaveGenIcamXml(QString::fromLocal8Bit(options_.xmlFile.c_str()))) {
        Complain("cannot write " + options_.xmlFile);
        return exitFailed;
    }
    Say("wrote " + options_.xmlFile);
    return exitDone;
}

int CoreRun::Stream() {
    start_ = before_ = TakeSample();
    beat_.emplace(start_.time, reportPeriod);
    while (!isStopWanted_ && !isLost_ && Clock::now() < Deadline()) {
        Wait(std::min(beat_->Next(), Deadline()));
        if (isSizeChanged_.exchange(false))
            TakeShape();
        if (beat_->IsDue(Clock::now()))
            Report();
    }
    if (isLost_)
        Complain(LostText());
    return Finish(isLost_ ? exitLost : exitDone);
}

int CoreRun::Finish(int exitCode) {
    const Sample end = TakeSample();
    if (!isLost_)
        camera_->StopGettingFrame();
    if (!options_.screenshotFile.empty() && exitCode == exitDone)
        exitCode = Screenshot();
    Say(SummaryLine(start_, end));
    return exitCode;
}

int CoreRun::Screenshot() {
    const std::string error =
        TakeSample().shown == 0 ? "no screenshot: no picture came"
                                : SaveWindow(*window_, options_.screenshotFile, [this] { OnWindowEvents(); });
    if (!error.empty()) {
        Complain(error);
        return exitFailed;
    }
    Say("wrote " + options_.screenshotFile);
    return exitDone;
}

CoreRun::Clock::time_point CoreRun::Deadline() const {
    if (!options_.seconds)
        return Clock::time_point::max();
    return begin_ +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*options_.seconds));
}

void CoreRun::Wait(Clock::time_point until) {
    OnWindowEvents(); // xcb may hold events that it read along with a reply
    if (isStopWanted_)
        return;
    std::array<pollfd, 3> fds = {pollfd{signals_.Fd(), POLLIN, 0}, pollfd{window_->Fd(), POLLIN, 0},
                                 pollfd{changed_.Fd(), POLLIN, 0}};
    const auto left = std::max<Clock::duration>(until - Clock::now(), Clock::duration::zero());
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout = {static_cast<time_t>(whole.count()),
                              static_cast<long>(std::chrono::nanoseconds(left - whole).count())};
    ppoll(fds.data(), fds.size(), &timeout, nullptr);
    if (fds[0].revents != 0)
        isStopWanted_ = signals_.Take() != 0 || isStopWanted_;
    if (fds[2].revents != 0)
        changed_.Clear();
    OnWindowEvents();
}

void CoreRun::OnWindowEvents() {
    const WindowEvents events = window_->Look();
    isStopWanted_ = isStopWanted_ || events.close;
    // Who has chosen a size before the first picture keeps it.
    hasShape_ = hasShape_ || events.resized;
    for (int i = 0; i < events.turns; ++i)
        camera_->RotateLeft();
    for (int i = 0; i > events.turns; --i)
        camera_->RotateRight();
    if (events.turns != 0 || events.resized)
        Place();
}

void CoreRun::TakeShape() {
    const Size picture = {camera_->GetWidth(), camera_->GetHeight()};
    if (picture == Size{}) // no frame has come yet
        return;
    const std::string pixels = PixelFormatName(static_cast<uint32_t>(camera_->GetPixelType()));
    const std::string width = std::to_string(picture.width);
    const std::string height = std::to_string(picture.height);
    format_ = width + "x" + height + " " + pixels; // as short as titles are
    Say("frames of " + width + " x " + height + " " + pixels + ", " +
        std::to_string(camera_->GetFrameSize()) + " bytes");
    if (!hasShape_)
        window_->Resize(FirstSize(picture, window_->ScreenSize()));
    hasShape_ = true;
    Place();
}

void CoreRun::Place() {
    Size seen = {camera_->GetWidth(), camera_->GetHeight()};
    if (camera_->IsNeedReverseXYAfterRotate())
        std::swap(seen.width, seen.height);
    const Fractions place = KeepAspect(seen, window_->CurrentSize());
    const tagVRRectF whole = {0, 1, 0, 1};
    const tagVRRectF destination = {place.top, place.bottom, place.left, place.right};
    camera_->SetDisplayRect(&whole, &destination);
    camera_->SetDisplayFrame();
}

void CoreRun::Report() {
    const Sample now = TakeSample();
    if (!Say(StatisticsLine(start_, before_, now)))
        isStopWanted_ = true;
    window_->SetTitle("kolt_live - " + TitleOf(device_) + (format_.empty() ? "" : " - " + format_) + " - " +
                      TitleFigures(RatesBetween(before_, now), now));
    before_ = now;
}

Sample CoreRun::TakeSample() const {
    Sample sample;
    sample.time = Clock::now();
    sample.cpu = ProcessCpuTime();
    const _CAMERA_COUNTERS_ counters = camera_->GetCounters();
    sample.frames = static_cast<uint64_t>(counters.received);
    sample.shown = static_cast<uint64_t>(counters.displayed);
    sample.grabErrors = static_cast<uint64_t>(counters.grabErrors);
    _OV_MATCH_INFO_NET_DETECT_ net{};
    if (camera_->GetMatchInfoNetDetect(&net) == 0)
        sample.transport = TransportCounters{net.receivedBytes, net.lostPackets, net.resentPackets,
                                             net.errorCount, net.lostFrames};
    return sample;
}

} // namespace live
