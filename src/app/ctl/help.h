#pragma once

// The --help texts of torvctl and of each command.

#include <QString>

namespace torv::ctl {

QString programHelp();
// Empty for a name that is no command.
QString commandHelpText(const QString& command);

} // namespace torv::ctl
