#pragma once

// Settings of a simulator run and the torv-sim command line.

#include "sim/signal.h"
#include "sim/types.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace torv::sim {

struct SimOptions {
    // Where torv-sim listens (SimHost always listens on 127.0.0.1).
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 8080;

    // The load cell: channel 1 follows `signal`, channel 2 the same kind around weight2.
    SignalShape signal;
    double weight2 = 0.0;
    double maxLoad = 3000.0;
    QString unit = QStringLiteral("KG");
    bool overload = false; // the converter reports more than 130000 counts
    int integration = 8;
    // Every inputsPeriodMs one input changes (0: the inputs stay as they are set).
    int inputsPeriodMs = 4000;

    // Fast sampling: the largest integration that can sample, and the readings per answer.
    int maxSampleIntegration = 64;
    int maxBlockReadings = 500;

    // Connections: a request must complete within readTimeoutMs of the last byte received;
    // a request may be at most maxRequestBytes long; a silent answer holds the connection
    // at most silentHoldMs.
    int readTimeoutMs = 5000;
    int maxRequestBytes = 64 * 1024;
    int silentHoldMs = 600000;
    // A connection whose request has not arrived whole within requestDeadlineMs of the
    // connect is closed, however slowly its bytes keep coming; above maxConnections open at
    // once a new connection gets a "busy" error answer and is closed.
    int requestDeadlineMs = 10000;
    int maxConnections = 64;

    // How long the card takes to answer a whole request. A real card's small server needs
    // milliseconds; 0 answers at once (the library's default, for tests and benchmarks that
    // measure rates). The programs start with kCardAnswerMs.
    int answerMs = 0;

    // Faults active from the start.
    QList<Fault> faults;

    // One line per request on stderr.
    bool log = false;

    // The request log and the record of readings sent keep at most this many entries
    // (the oldest go first).
    int requestLogLimit = 200000;
    int sampleLogLimit = 1000000;
};

// The answer time torv-sim and torv-panel --simulate use unless told otherwise: about 30
// answers a second, the pace of a card, at which the weight digits can be read.
constexpr int kCardAnswerMs = 25;

struct CommandLine {
    SimOptions options;
    bool help = false;
    bool version = false;
    QString error;    // a message for the user when the arguments are wrong
    QString helpText; // the --help text
};

// Parses the torv-sim arguments (args[0] is the program name). Runs no event loop and
// prints nothing.
CommandLine parseCommandLine(const QStringList& args);

} // namespace torv::sim
