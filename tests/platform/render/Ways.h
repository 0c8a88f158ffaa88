/*
 * The ways by which pixels reach the screen. Every test of what is seen runs for each.
 */
#ifndef KOLT_TESTS_RENDER_WAYS_H
#define KOLT_TESTS_RENDER_WAYS_H

#include "Harness.h"
#include "XServer.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace kolt::tests {

struct Way {
    const char* name;
    uint32_t engine;
    const char* variable; /* set to 1 meanwhile; null for none */
};

inline void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

constexpr Way kSharedMemory{"SharedMemory", VR_ENGINE_SOFTWARE, nullptr};
constexpr Way kPutImage{"PutImage", VR_ENGINE_SOFTWARE, "KOLT_RENDER_NO_SHM"};
constexpr Way kOpenGl{"OpenGl", VR_ENGINE_OPENGL, "KOLT_RENDER_FORCE_GL"};

class EveryWay : public testing::TestWithParam<Way> {
protected:
    EveryWay() {
        if (GetParam().variable != nullptr) {
            m_variable.emplace(GetParam().variable, "1");
        }
    }
    uint32_t engine() const { return GetParam().engine; }

private:
    std::optional<EnvironmentChange> m_variable;

protected:
    XClient client;
};

#define KOLT_EVERY_WAY(Fixture)                                                                              \
    INSTANTIATE_TEST_SUITE_P(Ways, Fixture, testing::Values(kSharedMemory, kPutImage, kOpenGl),              \
                             [](const auto& way) { return std::string(way.param.name); })

} // namespace kolt::tests

#endif
