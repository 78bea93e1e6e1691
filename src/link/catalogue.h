#pragma once

#include "base/integers.h"

#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>

namespace torv {

// The card's functions: request path after "POST /", closing tag of the answer and
// dispatch key at once.
namespace fn {
extern const QString GetRTStatus, GetFastSampling, StartSample, StopSample, ch1_switch, ch2_switch,
    SetOutput, GetSetpoints, SetSetpoints, SetD2A, SetIntegration;
}

// The body that actually goes out when the connection is up: the status and sampling reads
// always send "ID=4", start and stop always an empty body, the set-point read "ID=1"; the
// channel switches and the Set commands keep what their caller stored; an unknown name
// sends an empty body.
QString bodyOnConnect(const QString& functionName, const QString& currentParameters);

// One request as it goes on the wire, in its three sends: "POST /" + name + CR LF,
// "Content-Length: " + body length + CR LF CR LF, and body + CR LF (the length counts the
// body only). Characters outside Latin-1 go out as "?".
std::array<QByteArray, 3> requestParts(const QString& functionName, const QString& body);

QString setOutputBody(Int16 outputWord); // "ID=4&OUT_STATUS=" + signed decimal
QString setD2ABody(int value);           // "ID=1&D2A=" + decimal
QString setIntegrationBody(Int16 value); // "ID=1&INTEGRATION=" + decimal
// "ID=1&SETPOINT_1=" a "&SETPOINT_2=" b "&SETPOINT_3=" c "&SETPOINT_4=" d
QString setSetpointsBody(const QString& sp1, const QString& sp2, const QString& sp3,
                         const QString& sp4);
QString channelSwitchName(int channel); // "ch" + n + "_switch"

// The display abbreviation of the card's unit word: GRAM, KG, TON, LB in any letter case
// give g, kg, ton, lb; anything else is shown as received.
QString GetInterUnit(const QString& strTORV_unit_Name);

// Numeric answer fields: status words and integration in 16 bits, the converter count in
// 32 bits. Not numeric raises 13, out of range 6.
Int16 statusWordValue(const QString& text);
Int32 a2dCountValue(const QString& text);

// The address typed in TxtIP: "10.1.2.3" (port 80), "card.local:8081", "[::1]:8081", "::1".
// Blanks around the text are ignored. False for empty text, a bad port ("host:", "host:0",
// "host:70000", "host:8o") or an unclosed bracket.
bool parseHostPort(const QString& text, QString& host, std::uint16_t& port);

} // namespace torv
