#include "XServer.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kolt::tests {

XServer::XServer(const std::string& screen, const std::vector<std::string>& options) {
    int numbers[2];
    if (pipe(numbers) != 0) {
        throw std::runtime_error("pipe");
    }
    std::vector<std::string> words = {"Xvfb",      "-displayfd", std::to_string(numbers[1]),
                                      "-screen",   "0",          screen,
                                      "-nolisten", "tcp",        "-noreset"};
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    m_process = fork();
    if (m_process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(numbers[0]);
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(numbers[1]);
    std::string number;
    char byte = 0;
    pollfd waited{numbers[0], POLLIN, 0};
    while (poll(&waited, 1, 30000) > 0 && read(numbers[0], &byte, 1) == 1 && byte != '\n') {
        number += byte;
    }
    close(numbers[0]);
    if (number.empty()) {
        kill();
        throw std::runtime_error("Xvfb did not start");
    }
    m_display = ":" + number;
}

XServer::~XServer() {
    kill();
}

void XServer::kill() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
        m_process = -1;
        // Killed, it leaves its lock file and socket behind.
        if (!m_display.empty()) {
            unlink(("/tmp/.X" + m_display.substr(1) + "-lock").c_str());
            unlink(("/tmp/.X11-unix/X" + m_display.substr(1)).c_str());
        }
    }
}

void XServer::freeze() const {
    ::kill(m_process, SIGSTOP);
}

void XServer::resume() const {
    ::kill(m_process, SIGCONT);
}

EnvironmentChange::EnvironmentChange(const char* name, const char* value) : m_name(name) {
    if (const char* before = std::getenv(name)) {
        m_was = true;
        m_before = before;
    }
    if (value != nullptr) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

EnvironmentChange::~EnvironmentChange() {
    if (m_was) {
        setenv(m_name.c_str(), m_before.c_str(), 1);
    } else {
        unsetenv(m_name.c_str());
    }
}

} // namespace kolt::tests
