#pragma once

// The commands of torvctl. Each checks its arguments first (a usage error returns ExitUsage
// before anything is sent), then starts its requests on every card and returns -1: the event
// loop then ends with the session's status once every card is done.

#include "session.h"

#include <QStringList>

namespace torv::ctl {

int startOutputs(Session& session, const QStringList& args);
int startSetpoints(Session& session, const QStringList& args);
int startD2A(Session& session, const QStringList& args);
int startIntegration(Session& session, const QStringList& args);
int startChannel(Session& session, const QStringList& args);

// "torvctl: MESSAGE" and the hint to --help; returns ExitUsage.
int usage(const QString& message, const QString& command = {});

// A whole number in decimal (or hexadecimal after "0x") within [low, high].
bool parseWhole(const QString& text, qint64 low, qint64 high, qint64& out);

} // namespace torv::ctl
