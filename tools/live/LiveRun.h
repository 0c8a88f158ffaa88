#ifndef LIVE_LIVE_RUN_H
#define LIVE_LIVE_RUN_H

#include "ArgumentParser.h"
#include "CameraSelector.h"
#include "Descriptor.h"
#include "PictureMaker.h"
#include "Session.h"
#include "Statistics.h"
#include "Viewer.h"

#include <memory>
#include <optional>
#include <string>

namespace live {

/// Exit codes of the program.
enum ExitCode : int {
    exitDone = 0,
    exitFailed = 1,   ///< a call of a library or of the system failed
    exitUsage = 2,    ///< wrong arguments
    exitNoCamera = 3, ///< none found, or none by that name
    exitLost = 4,     ///< the camera was lost while it was in use
    exitTooFew = 5    ///< fewer frames than wanted
};

/// Prints the table of devices; an exit code.
int RunList();

/// The camera that the options name; nothing, with the exit code set and the reason said, when there is none.
std::optional<DeviceRecord> ChooseCamera(const Options& options, int& exitCode);

/// What is said when the camera is lost.
std::string LostText();

/// One run of the program with a camera: chooses, opens, shows or counts, says the figures once a second, and
/// ends by key, signal, time, number of frames or the camera's loss. Everything but the fetching of frames
/// happens on the calling thread, which sleeps until one of its descriptors has something to say.
class LiveRun {
public:
    LiveRun(const Options& options, StopSignals& signals)
        : options_(options), signals_(signals), session_(frames_), maker_(options.interpolation) {}

    /// An exit code.
    int Run();

private:
    using Clock = std::chrono::steady_clock;

    /// True when the camera that was lost is in sight again; false when the user ended the wait.
    bool WaitForReturn(DeviceRecord& device);
    int Open(const DeviceRecord& device);
    int SaveXml();
    /// From a started stream to its end; an exit code.
    int Stream();
    /// The exit code, once the stream has come to an end.
    std::optional<int> EndOfStream();
    int Finish(int exitCode);
    /// Without a window: keeps the newest frame, if there is one that was not yet taken.
    void TakeNewest();
    int SaveNewest();

    void Wait(Clock::time_point until);
    Clock::time_point Deadline() const;
    Clock::time_point NextWake() const;
    void DrawIfNew();
    void TellFormat(const Frame& frame);
    void ReportIfDue();
    Sample TakeSample() const;

    const Options& options_;
    StopSignals& signals_;
    FrameMailbox frames_;
    Session session_;
    PictureMaker maker_;
    std::unique_ptr<Viewer> viewer_; // null: without a window
    bool isStopWanted_ = false;
    Frame* newest_ = nullptr; // without a window: the latest that was taken out of frames_
    std::string toldFormat_;
    std::string toldTrouble_;
    Clock::time_point begin_; // --seconds counts from here
    Clock::time_point lastProgress_;
    uint64_t lastCount_ = 0;
    std::optional<Beat> beat_;
    Sample start_;
    Sample before_;
};

} // namespace live

#endif
