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
