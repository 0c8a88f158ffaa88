#include "VirtualCamera.h"

#include <csignal>
#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    try {
        vcam::Config config;
        if (argc > 1)
            config.address = argv[1];
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        vcam::VirtualCamera camera(config);
        camera.Start();
        std::printf("ready %s\n", camera.Address().c_str());
        std::fflush(stdout);
        int signal = 0;
        sigwait(&signals, &signal);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kolt_virtual_camera: %s\n", error.what());
        return 1;
    }
}
