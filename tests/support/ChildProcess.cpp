#include "support/ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace kolt::test {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int milliseconds(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left < 0 ? 0 : static_cast<int>(left);
}

// In the child, between fork and exec.
void become(const std::vector<std::string>& arguments, const ChildProcess::Environment& changed, int out,
            pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    for (const auto& [name, value] : changed) {
        if (value.empty())
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Environment& changed) {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0)
        fail("pipe2");
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ < 0)
        fail("fork");
    if (pid_ == 0)
        become(arguments, changed, pipe[1], parent);
    close(pipe[1]);
    outputFd_ = pipe[0];
    processFd_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    if (processFd_ < 0)
        fail("pidfd_open");
}

ChildProcess::~ChildProcess() {
    if (!exitCode_) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(outputFd_);
    close(processFd_);
}

void ChildProcess::signal(int number) const {
    if (!exitCode_)
        kill(pid_, number);
}

// Reads what is there, or waits for more; false at the end of the output or after the deadline.
bool ChildProcess::readUntil(Clock::time_point deadline) {
    pollfd entry = {outputFd_, POLLIN, 0};
    if (poll(&entry, 1, milliseconds(deadline)) != 1)
        return false;
    std::array<char, 4096> bytes{};
    const ssize_t got = read(outputFd_, bytes.data(), bytes.size());
    if (got > 0)
        output_.append(bytes.data(), static_cast<size_t>(got));
    return got > 0;
}

bool ChildProcess::waitForOutput(const std::string& text, Deadline deadline) {
    const auto end = Clock::now() + deadline;
    while (output_.find(text) == std::string::npos)
        if (!readUntil(end))
            return false;
    return true;
}

std::optional<int> ChildProcess::waitForExit(Deadline deadline) {
    if (exitCode_)
        return exitCode_;
    const auto end = Clock::now() + deadline;
    // A child of the child may hold the pipe open: the end of the process counts, not that of the output.
    std::array<pollfd, 2> entries = {{{processFd_, POLLIN, 0}, {outputFd_, POLLIN, 0}}};
    while (entries[0].revents == 0) {
        if (poll(entries.data(), entries.size(), milliseconds(end)) == 0)
            return std::nullopt;
        if (entries[1].revents != 0 && !readUntil(end))
            entries[1].fd = -1;
    }
    while (readUntil(Clock::now())) {
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return exitCode_;
}

Finished run(const std::vector<std::string>& arguments, const ChildProcess::Environment& changed) {
    ChildProcess child(arguments, changed);
    const std::optional<int> exitCode = child.waitForExit();
    return {exitCode.value_or(-1), child.output()};
}

} // namespace kolt::test
