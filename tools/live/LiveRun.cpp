#include "LiveRun.h"

#include "DeviceTable.h"
#include "Output.h"
#include "PictureFile.h"

#include <algorithm>
#include <array>
#include <poll.h>

namespace live {
namespace {

/// Without a window and without --seconds, a stream that brings nothing for so long has failed.
constexpr auto patience = std::chrono::seconds(5);
constexpr auto reportPeriod = std::chrono::seconds(1);
constexpr auto searchPeriod = std::chrono::seconds(1);

} // namespace

int RunList() {
    std::vector<DeviceRecord> records;
    if (const Failure failure = ListDevices(records)) {
        Complain(Describe(failure));
        return exitFailed;
    }
    std::vector<ListedDevice> devices;
    devices.reserve(records.size());
    for (const DeviceRecord& record : records)
        devices.push_back({record, IsFree(record)});
    Say(DeviceTable(devices));
    return exitDone;
}

int LiveRun::Run() {
    if (!options_.Headless()) {
        std::string error;
        viewer_ = Viewer::Open(maker_, options_.engine, options_.displayRate, error);
        if (!viewer_) {
            Complain(error);
            return exitFailed;
        }
    }
    begin_ = Clock::now();
    int exitCode = exitDone;
    std::optional<DeviceRecord> device = ChooseCamera(options_, exitCode);
    while (device) {
        exitCode = Open(*device);
        if (exitCode == exitDone)
            exitCode = Stream();
        session_.Close();
        if (exitCode != exitLost || !options_.reconnect || !WaitForReturn(*device))
            break;
    }
    return exitCode;
}

std::string LostText() {
    return "the camera is lost: it does not answer any more, or another host took its control\n"
           "  hint: check its power and cable";
}

std::optional<DeviceRecord> ChooseCamera(const Options& options, int& exitCode) {
    std::vector<DeviceRecord> devices;
    if (const Failure failure = ListDevices(devices)) {
        Complain(Describe(failure));
        exitCode = exitFailed;
        return std::nullopt;
    }
    const Selection selection = SelectCamera(devices, options.selector, IsFree);
    if (!selection.error.empty()) {
        Complain(selection.error);
        exitCode = exitNoCamera;
        return std::nullopt;
    }
    if (selection.remote)
        Say(IpText(selection.device.transport.gige.currentIp) +
            " is not listed: trying it as a remote camera");
    if (!selection.note.empty())
        Complain(selection.note);
    return selection.device;
}

int LiveRun::Open(const DeviceRecord& device) {
    Session::Settings settings;
    settings.buffers = options_.buffers;
    settings.dropIncomplete = options_.dropIncomplete;
    settings.optimalPacketSize = options_.packetSize == Options::PacketSize::Optimal;
    settings.packetBytes = options_.packetBytes;
    settings.frameLimit = options_.Headless() ? options_.WantedFrames() : 0;
    if (const Failure failure = session_.Open(device, settings)) {
        Complain("cannot open " + TitleOf(device) + "\n" + Describe(failure));
        return exitFailed;
    }
    Say("opened " + TitleOf(session_.Device()));
    if (viewer_)
        viewer_->SetTitle(TitleOf(session_.Device()), "");
    for (const std::string& note : session_.Notes())
        Say(note);
    if (const int exitCode = SaveXml(); exitCode != exitDone)
        return exitCode;
    if (const Failure failure = session_.Start()) {
        Complain(Describe(failure));
        return exitFailed;
    }
    return exitDone;
}

int LiveRun::SaveXml() {
    if (options_.xmlFile.empty())
        return exitDone;
    std::string xml;
    const Failure failure = session_.ReadXml(xml);
    const std::string error =
        failure ? Describe(failure) : WriteFile(options_.xmlFile, xml.data(), xml.size());
    if (error.empty()) {
        Say("wrote " + options_.xmlFile + ", " + std::to_string(xml.size()) + " bytes");
        return exitDone;
    }
    Complain(error);
    return exitFailed;
}

int LiveRun::Stream() {
    toldFormat_.clear();
    toldTrouble_.clear();
    newest_ = nullptr;
    lastProgress_ = Clock::now();
    lastCount_ = 0;
    start_ = before_ = TakeSample();
    beat_.emplace(start_.time, reportPeriod);
    std::optional<int> exitCode;
    while (!(exitCode = EndOfStream())) {
        Wait(NextWake());
        DrawIfNew();
        ReportIfDue();
    }
    return Finish(*exitCode);
}

std::optional<int> LiveRun::EndOfStream() {
    if (const Failure failure = session_.GrabFailure()) {
        Complain(Describe(failure));
        return exitFailed;
    }
    if (session_.IsLimitReached())
        return exitDone;
    if (session_.IsLost()) {
        Complain(LostText() + "; --reconnect waits until it is back");
        return exitLost;
    }
    const bool isOver = isStopWanted_ || Clock::now() >= Deadline();
    if (!isOver)
        return std::nullopt;
    if (viewer_)
        return exitDone;
    Sample sample = TakeSample();
    Complain("only " + std::to_string(sample.frames) + " of " + std::to_string(options_.WantedFrames()) +
             " frames came" + (isStopWanted_ ? " until the run was ended" : "") +
             (sample.frames == 0 ? "\n  hint: " + HintFor(OV_STATUS_NO_DATA) : ""));
    return exitTooFew;
}

LiveRun::Clock::time_point LiveRun::Deadline() const {
    if (options_.seconds)
        return begin_ +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*options_.seconds));
    return viewer_ ? Clock::time_point::max() : lastProgress_ + patience;
}

LiveRun::Clock::time_point LiveRun::NextWake() const {
    return std::min(beat_->Next(), Deadline());
}

void LiveRun::Wait(Clock::time_point until) {
    std::vector<pollfd> fds = {{signals_.Fd(), POLLIN, 0}, {session_.Fd(), POLLIN, 0}};
    if (viewer_) {
        isStopWanted_ =
            viewer_->Look() || isStopWanted_; // xcb may hold events that it read along with a reply
        fds.push_back({viewer_->Fd(), POLLIN, 0});
        if (Clock::now() >= viewer_->NextDraw())
            fds.push_back({frames_.Fd(), POLLIN, 0});
        else
            until = std::min(until, viewer_->NextDraw());
    }
    if (isStopWanted_)
        return;
    const auto left = std::max<Clock::duration>(until - Clock::now(), Clock::duration::zero());
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout = {static_cast<time_t>(whole.count()),
                              static_cast<long>(std::chrono::nanoseconds(left - whole).count())};
    ppoll(fds.data(), fds.size(), &timeout, nullptr);
    if (fds[0].revents != 0)
        isStopWanted_ = signals_.Take() != 0 || isStopWanted_;
    if (viewer_)
        isStopWanted_ = viewer_->Look() || isStopWanted_;
}

void LiveRun::DrawIfNew() {
    if (!viewer_ || Clock::now() < viewer_->NextDraw())
        return;
    Frame* frame = frames_.Take();
    if (frame == nullptr)
        return;
    TellFormat(*frame);
    const std::string trouble = viewer_->Draw(*frame, Clock::now());
    if (!trouble.empty() && trouble != toldTrouble_)
        Complain(trouble);
    toldTrouble_ = trouble;
}

void LiveRun::TellFormat(const Frame& frame) {
    const _OV_CC_FRAME_OUT_INFO_& info = frame.info;
    // The length of an incomplete frame says nothing about the format.
    const std::string format = std::to_string(info.width) + " x " + std::to_string(info.height) + " " +
                               PixelFormatName(info.pixelFormat);
    if (format == toldFormat_)
        return;
    toldFormat_ = format;
    Say("frames of " + format + ", " + std::to_string(info.frameLength) + " bytes");
}

Sample LiveRun::TakeSample() const {
    Sample sample;
    sample.time = Clock::now();
    sample.cpu = ProcessCpuTime();
    sample.shown = viewer_ ? viewer_->PicturesDrawn() : 0;
    session_.Count(sample);
    return sample;
}

void LiveRun::ReportIfDue() {
    if (!beat_->IsDue(Clock::now()))
        return;
    const Sample now = TakeSample();
    if (!Say(StatisticsLine(start_, before_, now)))
        isStopWanted_ = true;
    if (viewer_)
        viewer_->SetTitle(TitleOf(session_.Device()), RatesBetween(before_, now), now);
    else if (toldFormat_.empty())
        TakeNewest();
    if (now.frames != lastCount_)
        lastProgress_ = now.time;
    lastCount_ = now.frames;
    before_ = now;
}

int LiveRun::Finish(int exitCode) {
    const Sample end = TakeSample();
    session_.Stop();
    if (viewer_ && !options_.screenshotFile.empty() && exitCode != exitLost) {
        const std::string error = viewer_->Screenshot(options_.screenshotFile);
        if (error.empty())
            Say("wrote " + options_.screenshotFile);
        else
            Complain(error);
        exitCode = error.empty() ? exitCode : exitFailed;
    }
    if (!viewer_) {
        TakeNewest();
        if (exitCode == exitDone && !options_.saveFile.empty())
            exitCode = SaveNewest();
    }
    Say(SummaryLine(start_, end));
    return exitCode;
}

void LiveRun::TakeNewest() {
    Frame* frame = frames_.Take();
    if (frame == nullptr)
        return;
    newest_ = frame;
    TellFormat(*frame);
}

int LiveRun::SaveNewest() {
    const std::string error = SaveFrame(options_.saveFile, *newest_, maker_);
    if (!error.empty()) {
        Complain(error);
        return exitFailed;
    }
    Say("wrote " + options_.saveFile);
    return exitDone;
}

bool LiveRun::WaitForReturn(DeviceRecord& device) {
    Say("waiting for " + TitleOf(device) + " to come back");
    viewer_->SetTitle(TitleOf(device), "lost, waiting for it to come back");
    Beat beat(Clock::now(), searchPeriod);
    while (!isStopWanted_) {
        if (options_.seconds && Clock::now() >= Deadline())
            return false;
        Wait(std::min(beat.Next(), Deadline()));
        if (!beat.IsDue(Clock::now()))
            continue;
        std::vector<DeviceRecord> devices;
        ListDevices(devices);
        for (const DeviceRecord& found : devices)
            if (SameCamera(found, device) && IsFree(found)) {
                device = found;
                return true;
            }
    }
    return false;
}

} // namespace live
