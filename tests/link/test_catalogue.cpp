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

TEST(Catalogue, HostAndPortFromTheAddressText) {
    for (const auto& [text, hostPort] : {std::pair{"10.1.2.3", "10.1.2.3 80"},
                                         {"  10.1.2.3 ", "10.1.2.3 80"},
                                         {"localhost:8081", "localhost 8081"},
                                         {"[::1]:8081", "::1 8081"},
                                         {"::1", "::1 80"}}) {
        QString host;
        std::uint16_t port = 0;
        EXPECT_TRUE(parseHostPort(text, host, port)) << text;
        EXPECT_EQ(host + " " + QString::number(port), QString(hostPort)) << text;
    }
    for (const char* bad :
         {"", "host:", "host:0", "host:65536", "host:8o", ":8080", "[::1", "[::1]8080", "a b:80"}) {
        QString host = "keep";
        std::uint16_t port = 1;
        EXPECT_FALSE(parseHostPort(bad, host, port)) << bad;
        EXPECT_EQ(host + " " + QString::number(port), "keep 1") << bad;
    }
}

} // namespace
