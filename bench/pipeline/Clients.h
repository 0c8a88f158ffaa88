// The two clients that bench_pipeline starts as processes of their own, beside kolt_live.
#pragma once

#include <string>

// What a client does once it is connected.
enum class Activity { Show, StreamWithoutDisplay, ConnectedOnly };

// Both say one line a second, "T s  frames N  shown R fps", as kolt_live does, until SIGTERM. Exit codes.
int RunCoreClient(const std::string& address, Activity activity, unsigned long window, int displayRate);
int RunPlainClient(const std::string& address);

constexpr int kPacketSize = 9000;
constexpr int kLibraryBuffers = 8; // as kolt_live has by default
