// The function catalogue, answer conversions, addresses and dispatch. The request bodies
// built here are checked on the wire by the transport and loopback tests.

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

TEST(Catalogue, ConnectStepFixesTheBodyByFunctionName) {
    const QString stored = "ID=9&X=1";
    for (const QString& name : {fn::ch1_switch, fn::ch2_switch, fn::SetOutput, fn::SetSetpoints,
                                fn::SetIntegration, fn::SetD2A})
        EXPECT_EQ(bodyOnConnect(name, stored), stored) << name.toStdString();
    for (const auto& [name, body] : {std::pair{fn::GetFastSampling, "ID=4"},
                                     {fn::GetRTStatus, "ID=4"},
                                     {fn::StartSample, ""},
                                     {fn::StopSample, ""},
                                     {fn::GetSetpoints, "ID=1"},
                                     {QString("getrtstatus"), ""},
                                     {QString("ch3_switch"), ""},
                                     {QString(), ""}})
        EXPECT_EQ(bodyOnConnect(name, stored), QString(body)) << name.toStdString();
}

TEST(Catalogue, HostAndPortFromTheAddressText) {
    for (const auto& [text, hostPort] : {std::pair{"10.1.2.3", "10.1.2.3 80"},
                                         {"  10.1.2.3 ", "10.1.2.3 80"},
                                         {"localhost:8081", "localhost 8081"},
                                         {"card.local:65535", "card.local 65535"},
                                         {"[::1]:8081", "::1 8081"},
                                         {"[fe80::1]", "fe80::1 80"},
                                         {"::1", "::1 80"}}) {
        QString host;
        std::uint16_t port = 0;
        EXPECT_TRUE(parseHostPort(text, host, port)) << text;
        EXPECT_EQ(host + " " + QString::number(port), QString(hostPort)) << text;
    }
    for (const char* bad : {"", "   ", "host:", "host:0", "host:65536", "host:8o", "host:-1",
                            ":8080", "[::1", "[::1]8080", "[]:80", "[::1]:", "a b:80"}) {
        QString host = "keep";
        std::uint16_t port = 1;
        EXPECT_FALSE(parseHostPort(bad, host, port)) << bad;
        EXPECT_EQ(host + " " + QString::number(port), "keep 1") << bad;
    }
}

TEST(Dispatch, RoutesEveryAnsweredFunctionToItsHandlerAndNoOther) {
    FakePlatform platform;
    RecordingHandlers handlers;
    for (const QString& name :
         {fn::GetFastSampling, fn::GetRTStatus, fn::SetOutput, fn::SetD2A, fn::GetSetpoints,
          fn::SetSetpoints, fn::StartSample, fn::StopSample, fn::SetIntegration})
        dispatchAnswer(platform, name, "<" + name + ">", handlers);
    EXPECT_EQ(handlers.answers.last(), "<SetIntegration>"); // each gets the answer
    EXPECT_EQ(handlers.calls,
              QStringList({"FastSampling", "GetRTStatus", "SetOutput", "SetD2A", "GetSetpoints",
                           "SetSetpoints", "StartSample", "StopSample", "SetIntegration"}));
    EXPECT_TRUE(platform.dialogs.empty());

    // Other names, the channel switches among them, are unknown.
    for (const QString& name : {fn::ch1_switch, fn::ch2_switch, QString("getrtstatus"), QString()})
        dispatchAnswer(platform, name, QString(), handlers);
    EXPECT_EQ(handlers.calls.size(), 9);
    EXPECT_EQ(platform.messages(),
              QStringList({"Unknown Function ch1_switch", "Unknown Function ch2_switch",
                           "Unknown Function getrtstatus", "Unknown Function "}));
}

} // namespace
