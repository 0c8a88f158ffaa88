// A program that a test starts, watches and ends. It never outlives its object, nor the test when that
// crashes (so start it on a thread that lives as long: the main one).
#ifndef KOLT_TESTS_SUPPORT_CHILD_PROCESS_H
#define KOLT_TESTS_SUPPORT_CHILD_PROCESS_H

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kolt::test {

class ChildProcess {
public:
    using Deadline = std::chrono::milliseconds;
    using Environment = std::map<std::string, std::string>;

    // Starts the program; its first word is looked up in PATH. `changed` is set in its environment, empty
    // values are unset. Standard input is empty. Standard output and error come together. Throws when it
    // can't be started.
    explicit ChildProcess(const std::vector<std::string>& arguments, const Environment& changed = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // True as soon as `text` has appeared; false after the deadline or when the program ended without it.
    bool waitForOutput(const std::string& text, Deadline deadline = std::chrono::seconds(60));

    // The exit code, or 128 and the number of the signal that ended it; nothing after the deadline.
    std::optional<int> waitForExit(Deadline deadline = std::chrono::seconds(60));

    // What it has written so far.
    const std::string& output() const { return output_; }

    void signal(int number) const;
    pid_t pid() const { return pid_; }

private:
    bool readUntil(std::chrono::steady_clock::time_point deadline);

    pid_t pid_ = -1;
    int outputFd_ = -1;
    int processFd_ = -1;
    std::string output_;
    std::optional<int> exitCode_;
};

// Runs a program to its end; its exit code (-1: not within a minute) and output.
struct Finished {
    int exitCode = -1;
    std::string output;
};
Finished run(const std::vector<std::string>& arguments, const ChildProcess::Environment& changed = {});

} // namespace kolt::test

#endif
