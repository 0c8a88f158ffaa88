#include "CommandLine.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

// Waits for SIGINT or SIGTERM; with a limit, at most so long. True for a signal.
bool WaitForEnd(const sigset_t& signals, std::optional<std::chrono::milliseconds> limit) {
    if (!limit) {
        int signal = 0;
        return sigwait(&signals, &signal) == 0;
    }
    const timespec time{limit->count() / 1000, limit->count() % 1000 * 1000000};
    return sigtimedwait(&signals, nullptr, &time) >= 0;
}

int Run(const vcam::ProgramOptions& options) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals,
                    nullptr); // before any thread starts, so that only this one takes them
    std::vector<std::unique_ptr<vcam::VirtualCamera>> cameras;
    std::string addresses;
    for (const vcam::Config& config : options.cameras) {
        cameras.push_back(std::make_unique<vcam::VirtualCamera>(config));
        cameras.back()->Start();
        addresses += ' ' + cameras.back()->Address();
    }
    std::printf("ready%s\n", addresses.c_str());
    std::fflush(stdout);
    if (!WaitForEnd(signals, options.silentAfter) && options.silentAfter) {
        for (const auto& camera : cameras) {
            vcam::Faults faults = camera->GetFaults();
            faults.silent = true;
            camera->SetFaults(faults);
        }
        WaitForEnd(signals, std::nullopt);
    }
    if (options.statistics) {
        for (const auto& camera : cameras)
            std::printf("%s %s\n", camera->Address().c_str(),
                        vcam::CounterText(camera->GetCounters()).c_str());
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const vcam::ProgramOptions options = vcam::ParseCommandLine({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(vcam::HelpText().c_str(), stdout);
            return 0;
        }
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kolt_virtual_camera: %s\n", error.what());
        return 1;
    }
}
