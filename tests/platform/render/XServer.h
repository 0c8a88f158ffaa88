/*
 * A virtual X server of a test's own: to look at other depths, to stop it, to kill it.
 */
#ifndef KOLT_TESTS_RENDER_X_SERVER_H
#define KOLT_TESTS_RENDER_X_SERVER_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace kolt::tests {

class XServer {
public:
    /* Waits until it takes connections. Throws std::runtime_error when it doesn't come up. */
    explicit XServer(const std::string& screen = "800x600x24", const std::vector<std::string>& options = {});
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    const std::string& display() const { return m_display; }
    /* The server's number, to look at what it holds. */
    pid_t process() const { return m_process; }
    void kill();
    /* Takes no more time until resumed: as a hung server looks to its clients. */
    void freeze() const;
    void resume() const;

private:
    pid_t m_process = -1;
    std::string m_display;
};

/* Sets an environment variable (or removes it: null) and puts it back. */
class EnvironmentChange {
public:
    EnvironmentChange(const char* name, const char* value);
    ~EnvironmentChange();
    EnvironmentChange(const EnvironmentChange&) = delete;
    EnvironmentChange& operator=(const EnvironmentChange&) = delete;

private:
    std::string m_name;
    bool m_was = false;
    std::string m_before;
};

} // namespace kolt::tests

#endif
