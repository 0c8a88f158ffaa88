// kolt_live: the live picture of a camera through the C contract alone. It tells a fault of the platform
// libraries from a fault of the main program, and is an example of how the contract is used. With --core it
// shows the same picture through the main program's camera core.

#include "ArgumentParser.h"
#include "CoreRun.h"
#include "Libraries.h"
#include "LiveRun.h"
#include "Output.h"

#include <exception>

int main(int argc, char** argv) {
    try {
        live::StopSignals signals; // before a library starts its threads
        const auto [options, error] = live::ParseArguments({argv + 1, argv + argc});
        if (!error.empty()) {
            live::Complain(error + "\n  hint: kolt_live --help");
            return live::exitUsage;
        }
        switch (options.job) {
        case live::Options::Job::Help:
            live::Say(live::HelpText());
            return live::exitDone;
        case live::Options::Job::Version:
            live::Say(live::VersionText());
            return live::exitDone;
        case live::Options::Job::List:
            return live::RunList();
        case live::Options::Job::Show:
            if (options.core)
                return live::CoreRun(options, signals).Run();
            return live::LiveRun(options, signals).Run();
        }
    } catch (const std::exception& exception) {
        live::Complain(exception.what());
    }
    return live::exitFailed;
}
