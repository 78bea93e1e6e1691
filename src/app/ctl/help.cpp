#include "help.h"

#include <QHash>

namespace torv::ctl {

namespace {

const char* const kProgram =
    R"(Usage: torvctl [--address HOST[:PORT]]... [--timeout MS] COMMAND [ARGS]

The TORV-NET load-cell card from the command line: for scripts, for long unattended
logs and for several cards at once.

Commands:
  status     read the card's status, once or every interval, as plain, csv, jsonl or influx
  outputs    show the output word and lamps, or switch outputs on and off
  setpoints  read the four set points, or set them
  d2a        set the analog output (0..255)
  integration  set the integration (2 4 8 12 16 32 64 128 256 ms)
  channel    switch the measuring channel (1 or 2)
  sample     run a fast-sampling session into a sample data file

Options:
  -a, --address HOST[:PORT]  the card (port 80 unless given); repeat for several cards.
                             Default: the address in TORV_NET.cfg in the current folder.
  -t, --timeout MS           time-out of each request in ms (default 5000)
  -h, --help                 this help; 'torvctl COMMAND --help' for a command
  -V, --version              the version

Exit status: 0 success; 1 the card answered with an error code; 2 bad usage or a value
out of range (nothing sent); 3 no connection, no complete answer in time, or the
connection closed early; 4 an answer that is not the card's. With several cards the
worst status wins.
)";

const QHash<QString, const char*>& commandHelp() {
    static const QHash<QString, const char*> help = {
        {QStringLiteral("status"),
         R"(Usage: torvctl [--address HOST[:PORT]]... status [--count N] [--interval MS]
                      [--format plain|csv|jsonl|influx] [-o FILE]

Reads the status of every card (GetRTStatus), each card on its own, one row per card and
reading, each row naming its card.

  --count N         readings per card (default 1; 0 = until Ctrl-C or SIGTERM)
  --interval MS     from the start of one reading to the next (default 1000; 0 = at once)
  --format F        plain (aligned, for a person; the default), csv (with a header line),
                    jsonl (one JSON object a line) or influx (line protocol, measurement torv,
                    tag card, nanosecond time stamps)
  -o, --output FILE append the rows to FILE (the CSV header only to a new file)

Columns: time,card,weight,unit,a2d,outputs,inputs,integration,max_load,setpoint_status,
error_code; time in UTC, ISO 8601 with milliseconds. Every row is written and flushed as it
comes. A card that fails has no row for that reading (and is asked again no sooner than
100 ms later); the failure is named on standard error once, and when it answers again.
After more than one reading, or on Ctrl-C, a closing line per card goes to standard error:
requests, answers, failures, loss and the answer time minimum/median/maximum.
)"},
        {QStringLiteral("outputs"),
         R"(Usage: torvctl outputs [on K...] [off K...] [--word N]

Without arguments shows the output word and which of the 14 outputs are on, and the input
word and which of the 8 inputs are active. 'on 1 2 off 3' reads the output word, switches
those outputs and sends the new word (SetOutput); --word N sends the word N (0..65535, a 1
bit is an output off) as it stands. The card's echo is shown.
)"},
        {QStringLiteral("setpoints"),
         R"(Usage: torvctl setpoints [A B C D]

Without arguments reads the four set points (GetSetpoints). With four values sets them
(SetSetpoints) and reads them back: each from 0 to the card's maximum load, or -1 for no
set point. The maximum load is read first; nothing is set when a value is above it.
)"},
        {QStringLiteral("d2a"), R"(Usage: torvctl d2a VALUE

Sets the analog output (SetD2A) to VALUE, 0..255 (decimal, or hexadecimal after 0x), and
shows the card's echo.
)"},
        {QStringLiteral("integration"), R"(Usage: torvctl integration VALUE

Sets the integration (SetIntegration) to one of 2 4 8 12 16 32 64 128 256 ms and shows the
card's echo.
)"},
        {QStringLiteral("channel"), R"(Usage: torvctl channel 1|2

Switches the card to measuring channel 1 or 2 (ch1_switch, ch2_switch).
)"},
        {QStringLiteral("sample"),
         R"(Usage: torvctl sample (--seconds S | --readings N) [-o FILE]

Runs a fast-sampling session as the panel does: reads the status (integration and unit for
the file), StartSample, fetches the numbered blocks (GetFastSampling), sends StopSample
after S seconds or once N readings (1..20000) are in, fetches what the card still holds
until it ends the session, and writes the sample data file (default All_data.txt, replaced
as a whole) that trendlog opens. On a terminal a progress line shows readings, blocks and
rate. Ctrl-C stops the session early (a second Ctrl-C leaves at once). One card only.
)"},
    };
    return help;
}

} // namespace

QString programHelp() {
    return QString::fromUtf8(kProgram);
}

QString commandHelpText(const QString& command) {
    const auto it = commandHelp().find(command);
    return it == commandHelp().end() ? QString() : QString::fromUtf8(it.value());
}

} // namespace torv::ctl
