#pragma once

// torvctl's command line read into what to do, without touching a file, a card or the
// terminal: main() acts on the result, and the fuzzing target checks it on any arguments.

#include "client/card_client.h"
#include "sample_run.h"
#include "status_poll.h"

#include <QStringList>
#include <optional>
#include <vector>

namespace torv::ctl {

// A usage error: the one-line message, and the command whose --help the hint names (empty:
// torvctl's own). Exit status ExitUsage.
struct Refusal {
    QString message;
    QString command;
};

struct CommandLine {
    enum class Action { Run, Help, Version, Usage };
    Action action = Action::Run;
    QString command;                        // a known command, or empty (no command given)
    std::optional<Refusal> refusal;         // with Usage
    QStringList addresses;                  // --address texts; none: TORV_NET.cfg names the card
    std::vector<client::CardAddress> cards; // the --address texts read
    std::optional<int> timeoutMs;           // --timeout
    QStringList args;                       // the command's own arguments
    StatusOptions status;                   // of `status`
    SampleOptions sample;                   // of `sample`
    // With Run: arguments refused once a card address is known (a bad --address, a bad option
    // of status or sample), reported after the TORV_NET.cfg address is looked for.
    std::optional<Refusal> lateRefusal;
};

// `args` without the program's name.
CommandLine parseCommandLine(const QStringList& args);

} // namespace torv::ctl
