// What the tests of the real desktop take from a POSIX system. A line's far end is the unit's pseudo terminal.
#pragma once

#include "base/bytes.h"
#include "simulator/program/pseudoTerminal.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>

// A folder of the test's own.
inline std::filesystem::path makeTestFolder() {
    std::string path = testing::TempDir() + "testXXXXXX";
    return ::mkdtemp(path.data());
}

// What has come at the far end, once `count` bytes are there or none came for 50 milliseconds.
inline Bytes take(simulator::PseudoTerminal& end, std::size_t count) {
    Bytes bytes(count);
    std::size_t taken = 0;
    for (int patience = 50; taken < count && patience > 0; --patience) {
        if (const std::size_t part = end.read(std::span(bytes).subspan(taken))) {
            taken += part;
            patience = 50;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    bytes.resize(taken);
    return bytes;
}

// No file of this process grows beyond that; a write fails.
inline void limitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

// A program that does not close its files notices it soon.
inline void limitOpenFiles(rlim_t most) {
    const rlimit limit{most, most};
    ::setrlimit(RLIMIT_NOFILE, &limit);
}
