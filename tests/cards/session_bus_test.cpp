// The session bus address and the knock that tells a live bus from a silent one without
// waiting on it.

#include "cards/session_bus.h"

#include "support/fake_session_bus.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(SessionBus, AddressNamesItsSocket)
{
    const struct {
        const char* address;
        std::string socket;
    } cases[] = {
        {"unix:path=/run/user/1000/bus", "/run/user/1000/bus"},
        {"unix:abstract=/tmp/dbus-Xy,guid=0123abcd", std::string(1, '\0') + "/tmp/dbus-Xy"},
        {"unix:guid=0123,path=/tmp/a%20b%3bc", "/tmp/a b;c"},
        {"tcp:host=localhost,port=4;unix:path=/second", "/second"},
        {"unix:tmpdir=/tmp", ""},
        {"disabled:", ""},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(sessionBusUnixSocket(QString::fromLatin1(c.address)), c.socket) << c.address;
}

TEST(SessionBus, AddressIsOnlyTheNamedOne)
{
    for (const char* value : {static_cast<const char*>(nullptr), ""}) {
        ScopedEnvVar address("DBUS_SESSION_BUS_ADDRESS", value);
        EXPECT_TRUE(sessionBusAddress().isEmpty());
    }
    ScopedEnvVar address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/x");
    EXPECT_EQ(sessionBusAddress(), "unix:path=/x");
}

TEST(SessionBus, ProbeTellsALiveBusFromASilentOne)
{
    FakeSessionBus live({}, std::nullopt, "OK 0123456789abcdef\r\n");
    FakeSessionBus silent;
    const struct {
        const char* name;
        std::string address;
        bool answers;
        bool waits; // until the deadline
    } cases[] = {
        {"live", live.address(), true, false},
        {"silent", silent.address(), false, true},
        {"nothing there", "unix:path=" + testHome() + "/no-bus", false, false},
        {"no address", "", false, false},
    };
    for (const auto& c : cases) {
        SessionBusProbe probe(QString::fromStdString(c.address));
        const auto start = Clock::now();
        EXPECT_EQ(probe.answered(start + 300ms), c.answers) << c.name;
        const auto waited = Clock::now() - start;
        if (c.waits)
            EXPECT_GE(waited, 290ms) << c.name;
        else
            EXPECT_LT(waited, 250ms) << c.name;
        EXPECT_EQ(probe.answered(Clock::now()), c.answers) << c.name; // the same on a second look
    }
    EXPECT_EQ(live.accepted(), 1);
    EXPECT_EQ(silent.accepted(), 1);
}

} // namespace
