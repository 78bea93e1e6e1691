#include "catalogue.h"

namespace torv {

namespace fn {
const QString GetRTStatus = QStringLiteral("GetRTStatus");
const QString GetFastSampling = QStringLiteral("GetFastSampling");
const QString StartSample = QStringLiteral("StartSample");
const QString StopSample = QStringLiteral("StopSample");
const QString ch1_switch = QStringLiteral("ch1_switch");
const QString ch2_switch = QStringLiteral("ch2_switch");
const QString SetOutput = QStringLiteral("SetOutput");
const QString GetSetpoints = QStringLiteral("GetSetpoints");
const QString SetSetpoints = QStringLiteral("SetSetpoints");
const QString SetD2A = QStringLiteral("SetD2A");
const QString SetIntegration = QStringLiteral("SetIntegration");
} // namespace fn

std::array<QByteArray, 3> requestParts(const QString& functionName, const QString& body) {
    const QString crLf = QStringLiteral("\r\n");
    return {(QStringLiteral("POST /") + functionName + crLf).toLatin1(),
            (QStringLiteral("Content-Length: ") + QString::number(body.size()) + crLf + crLf)
                .toLatin1(),
            (body + crLf).toLatin1()};
}

QString bodyOnConnect(const QString& functionName, const QString& currentParameters) {
    if (functionName == fn::GetFastSampling || functionName == fn::GetRTStatus)
        return QStringLiteral("ID=4");
    if (functionName == fn::StartSample || functionName == fn::StopSample) return QString();
    if (functionName == fn::GetSetpoints) return QStringLiteral("ID=1");
    if (functionName == fn::ch1_switch || functionName == fn::ch2_switch ||
        functionName == fn::SetOutput || functionName == fn::SetSetpoints ||
        functionName == fn::SetIntegration || functionName == fn::SetD2A)
        return currentParameters;
    return QString();
}

QString setOutputBody(Int16 outputWord) {
    return QStringLiteral("ID=4&OUT_STATUS=") + QString::number(outputWord);
}

QString setD2ABody(int value) {
    return QStringLiteral("ID=1&D2A=") + QString::number(value);
}

QString setIntegrationBody(Int16 value) {
    return QStringLiteral("ID=1&INTEGRATION=") + QString::number(value);
}

QString setSetpointsBody(const QString& sp1, const QString& sp2, const QString& sp3,
                         const QString& sp4) {
    return QStringLiteral("ID=1&SETPOINT_1=") + sp1 + QStringLiteral("&SETPOINT_2=") + sp2 +
           QStringLiteral("&SETPOINT_3=") + sp3 + QStringLiteral("&SETPOINT_4=") + sp4;
}

QString channelSwitchName(int channel) {
    return QStringLiteral("ch") + QString::number(channel) + QStringLiteral("_switch");
}

QString GetInterUnit(const QString& strTORV_unit_Name) {
    const QString upper = strTORV_unit_Name.toUpper();
    if (upper == QLatin1String("GRAM")) return QStringLiteral("g");
    if (upper == QLatin1String("KG")) return QStringLiteral("kg");
    if (upper == QLatin1String("TON")) return QStringLiteral("ton");
    if (upper == QLatin1String("LB")) return QStringLiteral("lb");
    return strTORV_unit_Name;
}

Int16 statusWordValue(const QString& text) {
    return CInt(text);
}

Int32 a2dCountValue(const QString& text) {
    return CLng(text);
}

namespace {
bool parsePort(QStringView text, std::uint16_t& port) {
    if (text.isEmpty() || text.size() > 5) return false;
    int value = 0;
    for (QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) return false;
        value = value * 10 + (c.unicode() - u'0');
    }
    if (value < 1 || value > 65535) return false;
    port = static_cast<std::uint16_t>(value);
    return true;
}
} // namespace

bool parseHostPort(const QString& text, QString& host, std::uint16_t& port) {
    const QString t = text.trimmed();
    if (t.isEmpty()) return false;
    std::uint16_t p = 80;
    QString h;
    if (t.startsWith(QLatin1Char('['))) {
        // "[v6 address]" or "[v6 address]:port"
        const qsizetype close = t.indexOf(QLatin1Char(']'));
        if (close < 0) return false;
        h = t.mid(1, close - 1);
        const QStringView rest = QStringView(t).mid(close + 1);
        if (!rest.isEmpty()) {
            if (!rest.startsWith(QLatin1Char(':')) || !parsePort(rest.mid(1), p)) return false;
        }
    } else {
        const qsizetype colon = t.indexOf(QLatin1Char(':'));
        if (colon >= 0 && colon == t.lastIndexOf(QLatin1Char(':'))) {
            // One colon: host and port.
            h = t.left(colon);
            if (!parsePort(QStringView(t).mid(colon + 1), p)) return false;
        } else {
            h = t; // no colon, or a bare IPv6 address
        }
    }
    if (h.isEmpty() || h.contains(QLatin1Char(' '))) return false;
    host = h;
    port = p;
    return true;
}

} // namespace torv
