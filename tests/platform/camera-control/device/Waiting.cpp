#include "Waiting.h"

#include <fstream>
#include <thread>

#include <dirent.h>
#include <unistd.h>

namespace kolt::test {

namespace {

std::size_t entriesOf(const char* folder) {
    std::size_t count = 0;
    if (DIR* open = opendir(folder)) {
        while (const dirent* entry = readdir(open)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(open);
    }
    return count;
}

} // namespace

bool eventually(const std::function<bool()>& condition, milliseconds deadline) {
    const auto end = Clock::now() + deadline;
    while (!condition()) {
        if (Clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

double millisecondsSince(Clock::time_point begun) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
}

std::size_t threadCount() {
    return entriesOf("/proc/self/task");
}

std::size_t descriptorCount() {
    return entriesOf("/proc/self/fd");
}

std::size_t residentKilobytes() {
    std::size_t pages = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

} // namespace kolt::test
