#pragma once

// torv-exporter's command line.

#include "exporter/exporter_server.h"

#include <QString>
#include <QStringList>

namespace torv::exporter {

struct CommandLine {
    ServerOptions options;
    bool help = false;
    bool version = false;
    QString error; // not empty: bad usage, one line naming the option
};

CommandLine parseCommandLine(const QStringList& args); // args[0] is the program
QString helpText();

} // namespace torv::exporter
