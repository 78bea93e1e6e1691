#include "card.h"

#include "base/numeric.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <memory>

namespace torv::sim {

namespace {

const QString kOk = QStringLiteral("OK");

QString element(const QString& name, const QString& value) {
    return QLatin1Char('<') + name + QLatin1Char('>') + value + QStringLiteral("</") + name +
           QLatin1Char('>');
}

QString wrap(const QString& tag, const QString& inner) {
    return QLatin1Char('<') + tag + QLatin1Char('>') + inner + QStringLiteral("</") + tag +
           QLatin1Char('>');
}

// A whole number in decimal text within [lo, hi].
bool wholeNumber(const QString& text, qint64 lo, qint64 hi, qint64& value) {
    bool ok = false;
    const qint64 v = text.trimmed().toLongLong(&ok, 10);
    if (!ok || v < lo || v > hi) return false;
    value = v;
    return true;
}

// A number with "." or "," as decimal point.
bool decimalNumber(QString text, double& value) {
    text = text.trimmed();
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    if (!isNumeric(text, QLatin1Char('.'))) return false;
    double v = 0;
    if (!numericValue(text, QLatin1Char('.'), v) || !std::isfinite(v)) return false;
    value = v;
    return true;
}

QString plainNumber(double v) {
    return numberText(v, QLatin1Char('.'));
}

double roundTo3(double v) {
    const double r = std::round(v * 1000.0) / 1000.0;
    return r == 0.0 ? 0.0 : r; // no "-0.000"
}

} // namespace

Card::Card(const SimOptions& options)
    : inputsPeriodMs_(options.inputsPeriodMs)
    , integration_(options.integration)
    , maxLoad_(options.maxLoad)
    , unit_(options.unit)
    , overload_(options.overload)
    , maxBlockReadings_(options.maxBlockReadings)
    , maxSampleIntegration_(options.maxSampleIntegration)
    , sampleLogLimit_(options.sampleLogLimit) {
    signals_[0] = options.signal;
    signals_[1] = options.signal;
    signals_[1].weight = options.weight2;
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    clock_ = [timer] { return timer->elapsed(); };
}

void Card::setClock(Clock clock) {
    if (clock) clock_ = std::move(clock);
}

qint64 Card::now() const {
    return clock_();
}

const QStringList& Card::functions() {
    static const QStringList names = {
        QStringLiteral("GetRTStatus"),    QStringLiteral("GetFastSampling"),
        QStringLiteral("StartSample"),    QStringLiteral("StopSample"),
        QStringLiteral("ch1_switch"),     QStringLiteral("ch2_switch"),
        QStringLiteral("SetOutput"),      QStringLiteral("GetSetpoints"),
        QStringLiteral("SetSetpoints"),   QStringLiteral("SetD2A"),
        QStringLiteral("SetIntegration"),
    };
    return names;
}

bool Card::isFunction(const QString& name) {
    return functions().contains(name);
}

QString Card::errorAnswer(const QString& tag, int code, const QString& description) {
    // A name longer than the card's longest function is not one: "Error" stands for it.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_]{1,15}$"));
    const QString t = plain.match(tag).hasMatch() ? tag : QStringLiteral("Error");
    return wrap(t, element(QStringLiteral("ERROR_CODE"), QString::number(code)) +
                       element(QStringLiteral("ERROR_DESCRIPTION"), description));
}

QString Card::status(int code, const QString& description) const {
    return element(QStringLiteral("ERROR_CODE"), QString::number(code)) +
           element(QStringLiteral("ERROR_DESCRIPTION"), description);
}

// ---- state ---------------------------------------------------------------------------------

quint8 Card::inputs() const {
    if (inputsPeriodMs_ <= 0) return inputs_;
    const qint64 t = now();
    const qint64 slot = t >= 0 ? t / inputsPeriodMs_ : 0;
    if (slot % 2 == 0) return inputs_;
    const int bit = static_cast<int>((slot / 2) % 8);
    return static_cast<quint8>(inputs_ ^ (1u << bit));
}

double Card::setpoint(int n) const {
    if (n < 1 || n > 4) return -1;
    return setpoints_[static_cast<std::size_t>(n - 1)];
}

void Card::setSetpoint(int n, double value) {
    if (n < 1 || n > 4) return;
    setpoints_[static_cast<std::size_t>(n - 1)] = value < 0 ? -1.0 : value;
}

namespace {

int spStatusFor(const std::array<double, 4>& sp, double weight) {
    int bits = 0;
    for (int n = 1; n <= 4; ++n) {
        const double v = sp[static_cast<std::size_t>(n - 1)];
        if (v >= 0 && weight >= v) bits |= 1 << n;
    }
    return bits;
}

quint16 outputsFor(quint16 word, const std::array<double, 4>& sp, double weight) {
    for (int n = 1; n <= 4; ++n) {
        const double v = sp[static_cast<std::size_t>(n - 1)];
        if (v < 0) continue;
        const quint16 bit = static_cast<quint16>(1u << (n + 9)); // output n + 10
        if (weight >= v)
            word = static_cast<quint16>(word & ~bit); // on
        else
            word = static_cast<quint16>(word | bit); // off
    }
    return word;
}

qint32 countFor(double weight, bool overload) {
    const double c = std::round(weight * Card::countsPerUnit);
    const double clamped = std::clamp(c, -2147483648.0, 2147483647.0);
    auto count = static_cast<qint32>(clamped);
    if (overload && count <= 130000) count = Card::overloadCount;
    return count;
}

} // namespace

int Card::spStatus() const {
    return spStatusFor(setpoints_, weight());
}

quint16 Card::reportedOutputs() const {
    return outputsFor(outputs_, setpoints_, weight());
}

SignalShape Card::signal(int channel) const {
    return signals_[channel == 2 ? 1 : 0];
}

void Card::setSignal(const SignalShape& shape, int channel) {
    signals_[channel == 2 ? 1 : 0] = shape;
}

double Card::weightAt(qint64 ms, int channel) const {
    return roundTo3(signalValue(signal(channel), ms));
}

double Card::weight() const {
    return weightAt(now(), channel_);
}

QString Card::weightText(double weight) {
    return QString::number(roundTo3(weight), 'f', 3);
}

qint32 Card::a2d() const {
    return countFor(weight(), overload_);
}

// ---- requests ------------------------------------------------------------------------------

Card::Params Card::parseBody(const QString& body) {
    Params p;
    const auto pairs = body.trimmed().split(QLatin1Char('&'), Qt::SkipEmptyParts);
    for (const QString& pair : pairs) {
        const int eq = pair.indexOf(QLatin1Char('='));
        const QString key = (eq < 0 ? pair : pair.left(eq)).trimmed().toUpper();
        p.insert(key, eq < 0 ? QString() : pair.mid(eq + 1));
    }
    return p;
}

QString Card::answer(const QString& function, const QString& body) {
    const Params p = parseBody(body);
    if (function == QLatin1String("GetRTStatus")) return doGetRTStatus(ErrOk, kOk);
    if (function == QLatin1String("GetFastSampling")) return doGetFastSampling();
    if (function == QLatin1String("StartSample")) return doStartSample();
    if (function == QLatin1String("StopSample")) return doStopSample();
    if (function == QLatin1String("ch1_switch")) return doChannel(function, 1);
    if (function == QLatin1String("ch2_switch")) return doChannel(function, 2);
    if (function == QLatin1String("SetOutput")) return doSetOutput(p);
    if (function == QLatin1String("GetSetpoints")) return doGetSetpoints(ErrOk, kOk);
    if (function == QLatin1String("SetSetpoints")) return doSetSetpoints(p);
    if (function == QLatin1String("SetD2A")) return doSetD2A(p);
    if (function == QLatin1String("SetIntegration")) return doSetIntegration(p);
    // Never more of the name than the longest real one is echoed.
    return errorAnswer(function, ErrUnknownFunction,
                       QStringLiteral("Unknown function ") + function.left(kLongestFunctionName));
}

QString Card::forcedAnswer(const QString& function, int code, const QString& description) {
    if (function == QLatin1String("GetRTStatus")) return doGetRTStatus(code, description);
    if (function == QLatin1String("GetSetpoints")) return doGetSetpoints(code, description);
    if (function == QLatin1String("SetOutput"))
        return wrap(function, element(QStringLiteral("OUT_STATUS_ECHO"),
                                      QString::number(static_cast<qint16>(reportedOutputs()))) +
                                  status(code, description));
    if (function == QLatin1String("SetD2A"))
        return wrap(function, element(QStringLiteral("ANALOG_OUT"), QString::number(analogOut_)) +
                                  status(code, description));
    if (function == QLatin1String("SetIntegration"))
        return wrap(function,
                    element(QStringLiteral("INTEGRATION_ECHO"), QString::number(integration_)) +
                        status(code, description));
    return errorAnswer(function, code, description);
}

QString Card::doGetRTStatus(int code, const QString& description) const {
    const double w = weight();
    QString s;
    s += element(QStringLiteral("WEIGHT"), weightText(w));
    s += element(QStringLiteral("A2D"), QString::number(countFor(w, overload_)));
    s += element(QStringLiteral("OUT_STATUS"),
                 QString::number(static_cast<qint16>(outputsFor(outputs_, setpoints_, w))));
    s += element(QStringLiteral("IN_STATUS"), QString::number(inputs()));
    s += element(QStringLiteral("INTEGRATION"), QString::number(integration_));
    s += element(QStringLiteral("MAXIMUM_LOAD"), plainNumber(maxLoad_));
    s += element(QStringLiteral("UNIT"), unit_);
    s += element(QStringLiteral("SP_STATUS"), QString::number(spStatusFor(setpoints_, w)));
    s += status(code, description);
    return wrap(QStringLiteral("GetRTStatus"), s);
}

QString Card::doSetOutput(const Params& p) {
    qint64 v = 0;
    if (!p.contains(QStringLiteral("OUT_STATUS")) ||
        !wholeNumber(p.value(QStringLiteral("OUT_STATUS")), -32768, 65535, v))
        return forcedAnswer(
            QStringLiteral("SetOutput"), ErrBadValue,
            QStringLiteral("OUT_STATUS must be a whole number from -32768 to 65535"));
    outputs_ = static_cast<quint16>(v & 0xFFFF);
    return forcedAnswer(QStringLiteral("SetOutput"), ErrOk, kOk);
}

QString Card::doGetSetpoints(int code, const QString& description) const {
    QString s;
    for (int n = 1; n <= 4; ++n) {
        const double v = setpoint(n);
        s += element(QStringLiteral("SETPOINT_") + QString::number(n),
                     v < 0 ? QStringLiteral("-1") : plainNumber(v));
    }
    return wrap(QStringLiteral("GetSetpoints"), s + status(code, description));
}

QString Card::doSetSetpoints(const Params& p) {
    std::array<double, 4> next = setpoints_;
    for (int n = 1; n <= 4; ++n) {
        const QString key = QStringLiteral("SETPOINT_") + QString::number(n);
        if (!p.contains(key)) continue;
        double v = 0;
        if (!decimalNumber(p.value(key), v))
            return errorAnswer(QStringLiteral("SetSetpoints"), ErrBadValue,
                               key + QStringLiteral(" must be a number"));
        next[static_cast<std::size_t>(n - 1)] = v < 0 ? -1.0 : v;
    }
    setpoints_ = next;
    return wrap(QStringLiteral("SetSetpoints"), status(ErrOk, kOk));
}

QString Card::doSetD2A(const Params& p) {
    qint64 v = 0;
    if (!wholeNumber(p.value(QStringLiteral("D2A")), 0, 255, v))
        return forcedAnswer(QStringLiteral("SetD2A"), ErrBadValue,
                            QStringLiteral("D2A must be a whole number from 0 to 255"));
    analogOut_ = static_cast<int>(v);
    return forcedAnswer(QStringLiteral("SetD2A"), ErrOk, kOk);
}

QString Card::doSetIntegration(const Params& p) {
    qint64 v = 0;
    if (!wholeNumber(p.value(QStringLiteral("INTEGRATION")), 1, 32767, v))
        return forcedAnswer(QStringLiteral("SetIntegration"), ErrBadValue,
                            QStringLiteral("INTEGRATION must be a whole number from 1 to 32767"));
    integration_ = static_cast<int>(v);
    return forcedAnswer(QStringLiteral("SetIntegration"), ErrOk, kOk);
}

QString Card::doChannel(const QString& function, int channel) {
    if (session_.active)
        return errorAnswer(function, ErrSampling,
                           QStringLiteral("Fast sampling is running: stop it first"));
    channel_ = channel;
    return errorAnswer(function, ErrOk, kOk);
}

// ---- fast sampling -------------------------------------------------------------------------

int Card::periodForIntegration(int integration) {
    return std::max(1, integration);
}

qint64 Card::recordedUpTo(qint64 ms) const {
    if (ms < session_.startMs) return -1;
    return (ms - session_.startMs) / session_.periodMs;
}

int Card::pendingReadings() const {
    if (!session_.active) return 0;
    const qint64 last = session_.stopped ? session_.lastIndex : recordedUpTo(now());
    return static_cast<int>(std::clamp<qint64>(last - session_.next + 1, 0, 1 << 30));
}

qint64 Card::msUntilReadingDue() const {
    if (!session_.active || session_.stopped || pendingReadings() > 0) return 0;
    const qint64 due = session_.startMs + session_.next * session_.periodMs;
    return std::max<qint64>(1, due - now());
}

QString Card::doStartSample() {
    const QString tag = QStringLiteral("StartSample");
    if (channel_ != 1)
        return errorAnswer(tag, ErrRefused,
                           QStringLiteral("Fast sampling works on channel 1 only"));
    if (integration_ > maxSampleIntegration_)
        return errorAnswer(tag, ErrRefused,
                           QStringLiteral("Integration too large for fast sampling (at most ") +
                               QString::number(maxSampleIntegration_) + QLatin1Char(')'));
    // A start while a session runs begins a new one: a panel that lost its session can always
    // start again.
    session_ = Session{};
    session_.active = true;
    session_.startMs = now();
    session_.periodMs = periodForIntegration(integration_);
    return errorAnswer(tag, ErrOk, kOk);
}

QString Card::doStopSample() {
    const QString tag = QStringLiteral("StopSample");
    if (!session_.active)
        return errorAnswer(tag, ErrRefused, QStringLiteral("Fast sampling is not running"));
    if (!session_.stopped) {
        session_.stopped = true;
        session_.lastIndex = recordedUpTo(now());
    }
    return errorAnswer(tag, ErrOk, kOk);
}

void Card::logReading(const QString& text) {
    sentReadings_.append(text);
    if (sampleLogLimit_ > 0 && sentReadings_.size() > sampleLogLimit_)
        sentReadings_.remove(0, sentReadings_.size() - sampleLogLimit_);
}

QString Card::doGetFastSampling() {
    const QString tag = QStringLiteral("GetFastSampling");
    if (!session_.active)
        return errorAnswer(tag, ErrSampling, QStringLiteral("Fast sampling is not running"));
    const int count = std::min(pendingReadings(), std::max(1, maxBlockReadings_));
    if (session_.stopped && count == 0) {
        session_ = Session{};
        return errorAnswer(tag, ErrSampling, QStringLiteral("Fast sampling stopped"));
    }
    // The readings come last: the last one's closing tag is right before the answer's.
    QString s = status(ErrOk, kOk);
    for (int i = 0; i < count; ++i) {
        const qint64 k = session_.next + i;
        // Each reading is the card's average over its integration, as on the card.
        const QString text = weightText(
            signalAverage(signal(1), session_.startMs + k * session_.periodMs, session_.periodMs));
        const QString name = QLatin1Char('W') + QString::number(i);
        s += element(name, text);
        logReading(text);
    }
    session_.next += count;
    return wrap(tag, s);
}

} // namespace torv::sim
