#pragma once

// One status reading as a row of the chosen format: plain (aligned, for a person), csv,
// jsonl or influx line protocol.

#include "client/card_client.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

namespace torv::ctl {

enum class RowFormat { Plain, Csv, Jsonl, Influx };
std::optional<RowFormat> rowFormatFromName(const QString& name);

// The line before the first row: the CSV header, the column heads of plain, nothing else.
QByteArray headerLine(RowFormat format);
// One row, ending in a line feed. `card` names the card (its address).
QByteArray rowLine(RowFormat format, const QDateTime& timeUtc, const QString& card,
                   const client::StatusRecord& status);

// A number as the shortest text that reads back as the same double ("12.345", "3000").
QString shortestNumber(double value);

} // namespace torv::ctl
