// The torv-sim command line.

#include "sim/options.h"

#include <gtest/gtest.h>

using namespace torv::sim;

namespace {

CommandLine parse(const QString& args) {
    return parseCommandLine(QStringList{"torv-sim"} + args.split(' ', Qt::SkipEmptyParts));
}

TEST(CommandLine, SwitchesAndHelp) {
    const CommandLine cl = parse("");
    EXPECT_TRUE(cl.error.isEmpty());
    EXPECT_TRUE(cl.options.log);
    EXPECT_FALSE(parse("--quiet").options.log);
    EXPECT_TRUE(parse("--help").help);
    EXPECT_TRUE(cl.helpText.contains("--fault-function"));
    EXPECT_EQ(parse("--host localhost").options.host, "127.0.0.1");
}

TEST(CommandLine, TakesTheCardSignalAndFaultSettings) {
    CommandLine cl =
        parse("--port 8081 --host 0.0.0.0 --signal Sine --weight 1500.5 --weight2 20 "
              "--period=2000 --noise 3 --max-load 6000 --unit LB --overload "
              "--integration 64 --inputs-period 0 --read-timeout 250 --fault trickle "
              "--chunks 1,2,8 --delay 5 --fault-connections 3 --fault-function SetD2A");
    ASSERT_TRUE(cl.error.isEmpty()) << cl.error.toStdString();
    const SimOptions& o = cl.options;
    EXPECT_EQ(o.host + ":" + QString::number(o.port), "0.0.0.0:8081");
    EXPECT_EQ(o.signal.kind, SignalKind::Sine);
    EXPECT_EQ(o.signal.weight, 1500.5);
    EXPECT_EQ(o.weight2, 20);
    EXPECT_EQ(o.signal.periodMs, 2000);
    EXPECT_EQ(o.signal.noise, 3);
    EXPECT_EQ(o.maxLoad, 6000);
    EXPECT_EQ(o.unit, "LB");
    EXPECT_TRUE(o.overload);
    EXPECT_EQ(o.integration, 64);
    EXPECT_EQ(o.inputsPeriodMs, 0);
    EXPECT_EQ(o.readTimeoutMs, 250);
    ASSERT_EQ(o.faults.size(), 1);
    const Fault f = o.faults.first();
    EXPECT_EQ(f.kind, Fault::Kind::Trickle);
    EXPECT_EQ(f.chunkSizes, (QList<int>{1, 2, 8}));
    EXPECT_EQ(f.delayMs, 5);
    EXPECT_EQ(f.connections, 3);
    EXPECT_EQ(f.function, "SetD2A");

    cl = parse("--fault error-code --error-code 42");
    EXPECT_EQ(cl.options.faults.first().kind, Fault::Kind::ErrorCode);
    EXPECT_EQ(cl.options.faults.first().errorCode, 42);
    EXPECT_EQ(cl.options.faults.first().connections, -1);
    EXPECT_EQ(parse("--fault refuse").options.faults.first().kind, Fault::Kind::Refuse);
}

TEST(CommandLine, NamesTheWrongArgument) {
    for (const auto& [args, mentions] : {std::pair{"--port 70000", "--port"},
                                         {"--port eighty", "--port"},
                                         {"--host card.local", "--host"},
                                         {"--signal square", "--signal"},
                                         {"--weight heavy", "--weight"},
                                         {"--max-load 0", "--max-load"},
                                         {"--unit <KG>", "--unit"},
                                         {"--integration 0", "--integration"},
                                         {"--fault flood", "--fault"},
                                         {"--fault chunked --chunks 4,0", "--chunks"},
                                         {"--chunks 4", "--fault"},
                                         {"--bogus", "bogus"},
                                         {"--port", "port"},
                                         {"extra", "extra"}}) {
        const CommandLine cl = parse(args);
        EXPECT_TRUE(cl.error.contains(mentions)) << args << " -> " << cl.error.toStdString();
    }
}

} // namespace
