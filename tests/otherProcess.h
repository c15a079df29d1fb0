// A process beside the test: it does one thing and then lives on until it is killed.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

class OtherProcess {
  public:
    // Back once the process has done `action`, which says whether it went well.
    template <class Action>
    explicit OtherProcess(Action action) {
        int report[2];
        EXPECT_EQ(::pipe(report), 0);
        id_ = ::fork();
        if (id_ == 0) {
            const bool good = action();
            ::_exit(::write(report[1], &good, 1) == 1 ? ::pause() : 1);
        }
        ::close(report[1]);
        bool good = false;
        EXPECT_TRUE(::read(report[0], &good, 1) == 1 && good);
        ::close(report[0]);
    }

    void kill() const {
        ::kill(id_, SIGKILL);
        ::waitpid(id_, nullptr, 0);
    }

  private:
    pid_t id_ = -1;
};
