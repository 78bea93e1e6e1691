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

TEST(CommandLine, AnswerTimeIsACardsUnlessSet) {
    EXPECT_EQ(parse("").options.answerMs, kCardAnswerMs);
    EXPECT_EQ(SimOptions{}.answerMs, 0); // tests and benchmarks run at full speed
    EXPECT_EQ(parse("--answer-ms 0").options.answerMs, 0);
    EXPECT_EQ(parse("--answer-ms 40").options.answerMs, 40);
    EXPECT_FALSE(parse("--answer-ms -1").error.isEmpty());
    EXPECT_FALSE(parse("--answer-ms x").error.isEmpty());
}

} // namespace
