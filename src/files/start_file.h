#pragma once

// The graph start file "Start.dat": the card's name, which of the four channels are active and
// the display and minimum/maximum-tracking parameters of the real-time graph, closed by the
// marker line "Orvel". A missing or damaged file is replaced by the default file and read
// again, so after a load a valid file always exists.

#include "base/integers.h"

#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>

namespace torv {

class Platform;

// The graph parameters, shared by the set-up form, the graph windows and the min/max tracking.
// The initial values are those of the default file.
struct GraphParameters {
    QString leftCardName = QStringLiteral("QX"); // at most 2 characters
    Int32 cardNumber = 1234568;
    QString rightCardName = QStringLiteral("VANT"); // at most 5 characters
    std::array<std::uint8_t, 4> channelStatus{};    // 0 or 1, channels 0..3
    Int16 numberOfPoints = 500;                     // points on the screen
    Int16 sampling = 50;                            // timer interval in ms
    float percent = 10;                             // smallest percent change of a min/max kept
    Int16 minMaxMiss = 1;                           // new minima/maxima to ignore
    Int32 minMaxTime = 3;                           // time to ignore
    Int16 bandRadius = 3;                           // points on each side of a point
    Int16 round = 3;                                // zeros in the numbers of the time scale
    std::uint8_t timeDivision = 6;
    std::uint8_t valueType = 2; // 1 or 2
};

inline constexpr char kStartFileName[] = "Start.dat";

// The start file is never read beyond this size.
inline constexpr qint64 kStartFileMaxBytes = 1 << 20;

// The text of a single-precision value: its seven significant digits, with `sep` as the
// decimal point (10.1, not the 10.1000003814697 of the same value widened to double).
QString singleText(float v, QChar sep);

// The default file, byte for byte.
QByteArray defaultStartFileText();
// The file as SaveConfig writes it for `p`.
QByteArray startFileText(const GraphParameters& p);

void WriteDefaultStartFile(Platform& platform, const QString& path);
// True for 0 and 1; otherwise shows the three-line message and returns false.
bool IsChannelStatusValid(Platform& platform, int status);
// Fills `p` from the file at `path`, replacing a missing or damaged file by the default one.
// Some failures end the program (Platform::endProgram).
void LoadStartFile(Platform& platform, const QString& path, GraphParameters& p);

} // namespace torv

namespace torv {

// What SaveConfig takes from the set-up form: the texts of its boxes as typed, the value of
// each channel check box and whether the first value-type option is selected.
struct StartEntries {
    QString leftCardName, cardNumber, rightCardName;
    QString numberOfPoints, sampling, percent, minMaxMiss, minMaxTime, bandRadius, round,
        timeDivision;
    bool firstValueTypeSelected = false;
    std::array<int, 4> channelChecks{};
};

// Creates the file, takes the entries into `p` and writes the file in its saved layout. Every
// failure shows its message and ends the program; a failed conversion leaves an empty file.
void SaveConfig(Platform& platform, const QString& path, const StartEntries& entries,
                GraphParameters& p);

} // namespace torv
