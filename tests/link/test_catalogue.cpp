// The function catalogue, request bodies, answer conversions, addresses and dispatch.

#include "link/catalogue.h"
#include "link/dispatch.h"
#include "link_recorders.h"
#include "support/fake_platform.h"

#include "base/runtime_error.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::RecordingHandlers;

namespace {

int errorNumber(const std::function<void()>& f) {
    try {
        f();
    } catch (const RuntimeError& e) {
        return e.number();
    }
    return 0;
}

TEST(Catalogue, ConnectStepFixesTheBodyByFunctionName) {
    const QString stored = QStringLiteral("ID=9&X=1");
    struct Row {
        QString name;
        QString body;
    };
    const Row rows[] = {
        {fn::GetFastSampling, "ID=4"},
        {fn::GetRTStatus, "ID=4"},
        {fn::StartSample, ""},
        {fn::StopSample, ""},
        {fn::GetSetpoints, "ID=1"},
        {fn::ch1_switch, stored},
        {fn::ch2_switch, stored},
        {fn::SetOutput, stored},
        {fn::SetSetpoints, stored},
        {fn::SetIntegration, stored},
        {fn::SetD2A, stored},
        {"getrtstatus", ""},
        {"ch3_switch", ""},
        {"", ""},
    };
    for (const Row& r : rows)
        EXPECT_EQ(bodyOnConnect(r.name, stored), r.body) << r.name.toStdString();
}

TEST(Catalogue, BuildsCommandBodies) {
    // The output word with all sixteen bits set travels as signed decimal.
    EXPECT_EQ(setOutputBody(static_cast<Int16>(0xFFFF)), "ID=4&OUT_STATUS=-1");
    EXPECT_EQ(setD2ABody(128), "ID=1&D2A=128");
    EXPECT_EQ(setSetpointsBody("100", "-1", "2.5", "3000"),
              "ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=2.5&SETPOINT_4=3000");
}

TEST(Catalogue, UnitWordsMapToAbbreviationsInAnyCase) {
    EXPECT_EQ(GetInterUnit("kg"), "kg");
    EXPECT_EQ(GetInterUnit("KG"), "kg");
    EXPECT_EQ(GetInterUnit("Gram"), "g");
    EXPECT_EQ(GetInterUnit("ton"), "ton");
    EXPECT_EQ(GetInterUnit("lB"), "lb");
    EXPECT_EQ(GetInterUnit("Newton"), "Newton");
    EXPECT_EQ(GetInterUnit(" KG"), " KG");
    EXPECT_EQ(GetInterUnit(""), "");
}

TEST(Catalogue, StatusWordsAre16BitAndCountsAre32Bit) {
    EXPECT_EQ(statusWordValue("-1"), -1);
    EXPECT_EQ(errorNumber([] { statusWordValue("32768"); }), RuntimeError::Overflow);
    EXPECT_EQ(errorNumber([] { statusWordValue("abc"); }), RuntimeError::TypeMismatch);
    EXPECT_EQ(a2dCountValue("130001"), 130001);
}

TEST(Catalogue, HostAndPortFromTheAddressText) {
    struct Row {
        const char* text;
        const char* host;
        int port;
    };
    const Row good[] = {
        {"10.1.2.3", "10.1.2.3", 80},
        {"  10.1.2.3 ", "10.1.2.3", 80},
        {"localhost:8081", "localhost", 8081},
        {"card.local:65535", "card.local", 65535},
        {"[::1]:8081", "::1", 8081},
        {"[fe80::1]", "fe80::1", 80},
        {"::1", "::1", 80},
    };
    for (const Row& r : good) {
        QString host;
        std::uint16_t port = 0;
        ASSERT_TRUE(parseHostPort(QLatin1String(r.text), host, port)) << r.text;
        EXPECT_EQ(host, QLatin1String(r.host)) << r.text;
        EXPECT_EQ(port, r.port) << r.text;
    }
    for (const char* bad : {"", "   ", "host:", "host:0", "host:65536", "host:8o", "host:-1",
                            ":8080", "[::1", "[::1]8080", "[]:80", "[::1]:", "a b:80"}) {
        QString host = QStringLiteral("keep");
        std::uint16_t port = 1;
        EXPECT_FALSE(parseHostPort(QLatin1String(bad), host, port)) << bad;
        EXPECT_EQ(host, "keep");
        EXPECT_EQ(port, 1);
    }
}

TEST(Dispatch, RoutesEveryAnsweredFunctionToItsHandler) {
    FakePlatform platform;
    RecordingHandlers handlers;
    const QString names[] = {fn::GetFastSampling, fn::GetRTStatus,  fn::SetOutput,
                             fn::SetD2A,          fn::GetSetpoints, fn::SetSetpoints,
                             fn::StartSample,     fn::StopSample,   fn::SetIntegration};
    for (const QString& name : names)
        dispatchAnswer(platform, name, handlers);
    EXPECT_EQ(handlers.calls,
              QStringList({"FastSampling", "GetRTStatus", "SetOutput", "SetD2A", "GetSetpoints",
                           "SetSetpoints", "StartSample", "StopSample", "SetIntegration"}));
    EXPECT_TRUE(platform.dialogs.empty());
}

TEST(Dispatch, OtherNamesIncludingChannelSwitchesAreUnknown) {
    FakePlatform platform;
    RecordingHandlers handlers;
    for (const QString& name :
         {fn::ch1_switch, fn::ch2_switch, QStringLiteral("getrtstatus"), QString()})
        dispatchAnswer(platform, name, handlers);
    EXPECT_TRUE(handlers.calls.isEmpty());
    EXPECT_EQ(platform.messages(),
              QStringList({"Unknown Function ch1_switch", "Unknown Function ch2_switch",
                           "Unknown Function getrtstatus", "Unknown Function "}));
}

} // namespace
