#include "start_file.h"

#include "base/numeric.h"
#include "base/platform.h"
#include "base/runtime_error.h"
#include "fields.h"

#include <QFile>

#include <cmath>
#include <limits>
#include <optional>

namespace torv {

namespace {

constexpr char kMarker[] = "Orvel";
// A damaged file is replaced and read again; a default file that still cannot be read after
// this many passes means the folder itself is at fault.
constexpr int kMaxPasses = 4;

QString line(const QString& text) {
    return text + QLatin1String(kLineEnd);
}

// A single as the print list writes it: whole numbers through printNumber, others with the
// same blanks around them, the single's seven digits and "." as the decimal point, so the file
// always reads back.
QString printValue(float v) {
    if (v == std::trunc(v) && std::fabs(v) < 1e15f) return printNumber(static_cast<qint64>(v));
    const QString digits = singleText(v, QLatin1Char('.'));
    return v < 0 ? digits + QLatin1Char(' ') : QLatin1Char(' ') + digits + QLatin1Char(' ');
}

// Restarting the load from its first step.
struct Restart {};

// The start file opened for comma-field input, as the load reads it: one statement at a time,
// each value converted to its type.
class StartFileInput {
public:
    void open(QByteArray content) {
        reader_.emplace(content);
        open_ = true;
    }
    void close() { open_ = false; }

    QString text() {
        if (!open_) throw RuntimeError(52, QStringLiteral("Bad file name or number"));
        QString field = reader_->readField();
        while (field.endsWith(QLatin1Char(' ')) || field.endsWith(QLatin1Char('\t')))
            field.chop(1);
        return field;
    }
    // A number field: blank is 0, "." is the decimal point, anything else not numeric is
    // a type mismatch.
    double number() {
        const QString t = text();
        if (t.trimmed().isEmpty()) return 0;
        double v = 0;
        if (!numericValue(t, QLatin1Char('.'), v)) raiseTypeMismatch();
        return v;
    }
    Int16 int16() { return CInt(number()); }
    Int32 int32() { return CLng(number()); }
    std::uint8_t byte() { return CByte(number()); }
    float single() {
        const double v = number();
        if (std::fabs(v) > static_cast<double>(std::numeric_limits<float>::max())) raiseOverflow();
        return static_cast<float>(v);
    }

private:
    std::optional<FieldReader> reader_;
    bool open_ = false;
};

QString errorText(const RuntimeError& e) {
    return QStringLiteral("Error !!!%1  %2").arg(e.number()).arg(e.description());
}

// Writes the default file while a load repairs a file. When even that fails nothing valid
// can be made: the message says why and the program ends.
void writeDefaultOrEnd(Platform& platform, const QString& path) {
    try {
        writeTextFile(path, defaultStartFileText());
    } catch (const RuntimeError& e) {
        platform.messageBox(e.number() == 61 ? QStringLiteral("Disk Full") : errorText(e));
        platform.endProgram();
    }
}

} // namespace

QString singleText(float v, QChar sep) {
    return numberText(QString::number(double(v), 'g', 7).toDouble(), sep);
}

QByteArray defaultStartFileText() {
    const QString text =
        line(QStringLiteral("StartDataFile for Orvel")) +
        line(QStringLiteral("Card_Name:, QX, 1234568, VANT")) +
        line(QStringLiteral("1_channel_active_status, 0")) +
        line(QStringLiteral("2_channel_active_status, 0")) +
        line(QStringLiteral("3_channel_active_status, 0")) +
        line(QStringLiteral("4_channel_active_status, 0")) +
        line(QStringLiteral("TxtNumberOfPoints, 500 ")) + line(QStringLiteral("txtSampling, 50")) +
        line(QStringLiteral("txtProcentMinMax, 10 ")) + line(QStringLiteral("txtMinMaxMiss , 1")) +
        line(QStringLiteral("txtMnMxTime, 3")) + line(QStringLiteral("txtBandRadius, 3")) +
        line(QStringLiteral("txtRound, 3")) + line(QStringLiteral("txtTimeDivision, 6")) +
        line(QStringLiteral("OptValueType, 2")) + line(QLatin1String(kMarker));
    return text.toUtf8();
}

QByteArray startFileText(const GraphParameters& p) {
    QString text = line(QStringLiteral("StartDataFile for Orvel")) +
                   line(QStringLiteral("Card_name:, ") + p.leftCardName + QStringLiteral(", ") +
                        printNumber(p.cardNumber) + QStringLiteral(", ") + p.rightCardName);
    for (int ch = 0; ch < 4; ++ch)
        text += line(QStringLiteral("%1_channel_active_status, ").arg(ch + 1) +
                     printNumber(p.channelStatus[ch]));
    text += line(QStringLiteral("TxtNumberOfPoints,  ") + printNumber(p.numberOfPoints)) +
            line(QStringLiteral("txtSampling, ") + printNumber(p.sampling)) +
            line(QStringLiteral("txtProcentMinMax,  ") + printValue(p.percent)) +
            line(QStringLiteral("txtMinMaxMiss ,") + printNumber(p.minMaxMiss)) +
            line(QStringLiteral("txtMnMxTime, ") + printNumber(p.minMaxTime)) +
            line(QStringLiteral("txtBandRadius, ") + printNumber(p.bandRadius)) +
            line(QStringLiteral("txtRound, ") + printNumber(p.round)) +
            line(QStringLiteral("txtTimeDivision, ") + printNumber(p.timeDivision)) +
            line(QStringLiteral("optValueType, ") + printNumber(p.valueType)) +
            line(QLatin1String(kMarker));
    return text.toUtf8();
}

void WriteDefaultStartFile(Platform& platform, const QString& path) {
    writeDefaultOrEnd(platform, path);
}

bool IsChannelStatusValid(Platform& platform, int status) {
    if (status == 0 || status == 1) return true;
    platform.messageBox(QStringLiteral("Channel status must be 0 or 1 only\n"
                                       "The file Start.dat is destroyed!!!\n"
                                       "It will be created automatically with default "
                                       "parameteres"));
    return false;
}

void LoadStartFile(Platform& platform, const QString& path, GraphParameters& p) {
    StartFileInput in;

    // Runs one read statement. A failure is handled by its number: some restart the load,
    // some end the program, the others are shown and the load goes on with the next statement.
    auto statement = [&](auto&& read) {
        try {
            read();
        } catch (const RuntimeError& e) {
            switch (e.number()) {
            case 53:
                platform.messageBox(QStringLiteral("File not found.") + QLatin1Char('\r') +
                                    QStringLiteral("The file will create with default "
                                                   "parameters. Run this application again, "
                                                   "please."));
                writeDefaultOrEnd(platform, path);
                throw Restart{};
            case 55:
                platform.messageBox(QStringLiteral("File already open"));
                platform.endProgram();
                break;
            case 61:
                platform.messageBox(QStringLiteral("Disk Full"));
                platform.endProgram();
                break;
            case 62:
                platform.messageBox(QStringLiteral("Input past end of file ") +
                                    QStringLiteral("or Bad structure of the file: ") + path);
                in.close();
                QFile::remove(path);
                writeDefaultOrEnd(platform, path);
                platform.endProgram();
                break;
            default:
                platform.messageBox(errorText(e));
            }
        }
    };

    for (int pass = 1;; ++pass) {
        // The default file was just written; reading it failed again, so the folder keeps
        // no file: nothing more can be done here.
        if (pass > kMaxPasses) platform.endProgram();
        try {
            statement([&] {
                QByteArray content;
                int error = 0;
                in.close();
                if (!readFileCapped(path, kStartFileMaxBytes, content, &error))
                    throw RuntimeError(error);
                in.open(content);
            });
            statement([&] { in.text(); });
            statement([&] {
                in.text();
                p.leftCardName = in.text();
                p.cardNumber = in.int32();
                p.rightCardName = in.text();
            });
            for (int ch = 0; ch <= 3; ++ch) {
                statement([&] {
                    in.text();
                    p.channelStatus[ch] = in.byte();
                });
                if (!IsChannelStatusValid(platform, p.channelStatus[ch])) {
                    in.close();
                    writeDefaultOrEnd(platform, path);
                    // The fourth channel reads on from the closed file.
                    if (ch < 3) throw Restart{};
                }
            }
            auto labelled = [&](auto&& readValue) {
                statement([&] {
                    in.text();
                    readValue();
                });
            };
            labelled([&] { p.numberOfPoints = in.int16(); });
            labelled([&] { p.sampling = in.int16(); });
            labelled([&] { p.percent = in.single(); });
            labelled([&] { p.minMaxMiss = in.int16(); });
            labelled([&] { p.minMaxTime = in.int32(); });
            labelled([&] { p.bandRadius = in.int16(); });
            labelled([&] { p.round = in.int16(); });
            labelled([&] { p.timeDivision = in.byte(); });
            labelled([&] { p.valueType = in.byte(); });
            QString marker;
            statement([&] { marker = in.text(); });
            if (marker == QLatin1String(kMarker)) {
                in.close();
                return;
            }
            platform.messageBox(QStringLiteral("Bad file structure. Last string not Orvel"));
            in.close();
            writeDefaultOrEnd(platform, path);
        } catch (const Restart&) {
        }
    }
}

void SaveConfig(Platform& platform, const QString& path, const StartEntries& entries,
                GraphParameters& p) {
    try {
        writeTextFile(path, QByteArray());
        p.leftCardName = entries.leftCardName;
        p.cardNumber = CLng(entries.cardNumber);
        p.rightCardName = entries.rightCardName;
        p.numberOfPoints = CInt(entries.numberOfPoints);
        p.sampling = CInt(entries.sampling);
        p.percent = CSng(entries.percent);
        p.minMaxMiss = CInt(entries.minMaxMiss);
        p.minMaxTime = CLng(entries.minMaxTime);
        p.bandRadius = CInt(entries.bandRadius);
        p.round = CInt(entries.round);
        p.valueType = entries.firstValueTypeSelected ? 1 : 2;
        p.timeDivision = CByte(entries.timeDivision);
        for (int ch = 0; ch < 4; ++ch)
            p.channelStatus[ch] = static_cast<std::uint8_t>(entries.channelChecks[ch] ? 1 : 0);
        writeTextFile(path, startFileText(p));
    } catch (const RuntimeError& e) {
        switch (e.number()) {
        case 55:
            platform.messageBox(QStringLiteral("File already open"));
            break;
        case 61:
        case 62:
            platform.messageBox(QStringLiteral("Disk Full"));
            break;
        default:
            platform.messageBox(errorText(e));
        }
        platform.endProgram();
    }
}

} // namespace torv
