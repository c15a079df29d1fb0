// The lock that keeps the computer awake, on a bus of this test's own (tests/CMakeLists.txt), with a login manager.
#include "platform/qt/sleepInhibitor.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

using namespace platform;

namespace {

struct LoginManager {
    LoginManager() {
        sd_bus_open_user(&bus);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.login1", 0), 0);
        sd_bus_add_filter(bus, nullptr, answer, this);
    }
    ~LoginManager() { sd_bus_flush_close_unref(bus); }

    static int answer(sd_bus_message* call, void* manager, sd_bus_error*) {
        auto& self = *static_cast<LoginManager*>(manager);
        const char* text[4]{};
        if (sd_bus_message_is_method_call(call, "org.freedesktop.login1.Manager", "Inhibit") == 0 ||
            sd_bus_message_read(call, "ssss", &text[0], &text[1], &text[2], &text[3]) < 0) {
            return 0;
        }
        EXPECT_EQ(sd_bus_message_get_allow_interactive_authorization(call), 0);
        self.asked += std::string(text[1]) + ' ' + text[3] + ' ' + text[0] + '\n';
        if (self.refusals-- > 0) {
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "not you");
        }
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        self.lock.fd = ends[0];
        const int sent = sd_bus_reply_method_return(call, "h", ends[1]);
        ::close(ends[1]);
        return sent;
    }

    // The far end of the lock that was granted last is closed.
    bool hasLockBack() { return ::poll(&lock, 1, 0) == 1 && (lock.revents & POLLHUP) != 0; }

    template <class Condition>
    bool serveUntil(Condition condition) {
        QElapsedTimer timer;
        for (timer.start(); timer.elapsed() < 10'000 && !condition(); sd_bus_wait(bus, 1000)) {
            while (sd_bus_process(bus, nullptr) > 0) {
            }
            QCoreApplication::processEvents();
        }
        return condition();
    }

    sd_bus* bus = nullptr;
    int refusals = 0;
    std::string asked;
    pollfd lock{.fd = -1, .events = 0, .revents = 0};
};

class SleepInhibitorTest : public testing::Test {
  protected:
    SleepInhibitorTest() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", qgetenv("DBUS_SESSION_BUS_ADDRESS")); }

    int words_ = 0;
    QCoreApplication application_{words_, nullptr};
    SleepInhibitor inhibitor_;
};

TEST_F(SleepInhibitorTest, HoldsWhatItIsGrantedUntilTheDrop) {
    LoginManager manager;
    const std::string all = "TarnBeacon block sleep:idle:handle-lid-switch\n";
    const std::string idle = "TarnBeacon block idle\n";
    for (int refusals = 0; refusals <= 2; ++refusals) {
        const std::string asked = refusals == 0 ? all : all + idle;
        manager.asked.clear();
        manager.refusals = refusals;
        inhibitor_.hold();
        EXPECT_TRUE(manager.serveUntil([&] { return manager.asked == asked && inhibitor_.held() == (refusals < 2); }));
        if (inhibitor_.held()) {
            inhibitor_.hold(); // asks for no second one
            EXPECT_FALSE(manager.hasLockBack());
        }
        inhibitor_.drop();
        EXPECT_FALSE(inhibitor_.held());
        EXPECT_TRUE(manager.serveUntil([&] { return manager.hasLockBack(); }));
        EXPECT_EQ(manager.asked, asked);
    }
}

TEST_F(SleepInhibitorTest, TakesNoLockThatComesAfterTheDrop) {
    LoginManager manager;
    inhibitor_.hold();
    inhibitor_.drop();
    EXPECT_TRUE(manager.serveUntil([&] { return manager.hasLockBack(); }) && !inhibitor_.held());
}

TEST_F(SleepInhibitorTest, DoesWithoutABusThatIsMissingOrHangs) {
    for (const char* address : {"unix:path=/nowhere", "unixexec:path=/bin/sleep,argv1=60"}) {
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
        QElapsedTimer timer;
        timer.start();
        inhibitor_.hold();
        EXPECT_LT(timer.elapsed(), 1000) << address;
        EXPECT_FALSE(inhibitor_.held());
        inhibitor_.drop();
    }
}

} // namespace
