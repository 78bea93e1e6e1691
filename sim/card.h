#pragma once

// The state of a simulated TORV-NET card and the answers it gives. No sockets, no threads and
// no locking: the server serialises calls; tests drive it directly with their own clock.

#include "sim/options.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>

namespace torv::sim {

// Error codes the card answers with. 0 is success; 200 ends a fast-sampling session and
// refuses a channel switch while sampling runs.
enum CardError {
    ErrOk = 0,
    ErrRefused = 1,         // the card cannot do it now (sampling start, stop)
    ErrBadValue = 2,        // a parameter is missing, not a number or out of range
    ErrUnknownFunction = 3, // no such function
    ErrBadRequest = 4,      // the request is not "POST /name", or its header is broken
    ErrTooLarge = 5,        // the request is larger than the card accepts
    ErrIncomplete = 6,      // the request did not complete in time
    ErrBusy = 7,            // too many connections at once
    ErrSampling = 200,
};

// The longest device function name ("GetFastSampling").
inline constexpr int kLongestFunctionName = 15;

class Card {
public:
    using Clock = std::function<qint64()>; // milliseconds, never going backwards

    explicit Card(const SimOptions& options = {});

    // The card's clock; by default a monotonic clock started with the card.
    void setClock(Clock clock);
    qint64 now() const;

    static const QStringList& functions(); // the eleven function names
    static bool isFunction(const QString& name);

    // The tagged answer to one request, "<name>...</name>", after its effect on the card.
    QString answer(const QString& function, const QString& body);
    // The answer to `function` carrying `code` instead of doing anything: the elements show
    // the card as it is; no reading is taken from a sampling session.
    QString forcedAnswer(const QString& function, int code, const QString& description);
    // An answer that is only an error, tagged `tag`.
    static QString errorAnswer(const QString& tag, int code, const QString& description);

    // Outputs: bit k-1 is output k, 1 = off. The stored word is what SetOutput wrote; the
    // reported word has the set-point outputs 11..14 driven by the weight.
    quint16 outputWord() const { return outputs_; }
    void setOutputWord(quint16 word) { outputs_ = word; }
    quint16 reportedOutputs() const;

    // Inputs: bit i-1 is input i, 1 = inactive. With a non-zero inputs period one input after
    // the other becomes active for a period, then returns.
    quint8 baseInputs() const { return inputs_; }
    void setInputs(quint8 inputs) { inputs_ = inputs; }
    void setInputsPeriod(int ms) { inputsPeriodMs_ = ms; }
    quint8 inputs() const;

    // Set points 1..4; -1 = none. Set point n drives output n+10 on while weight >= value.
    double setpoint(int n) const;
    void setSetpoint(int n, double value);
    int spStatus() const; // bit n set while set point n is reached (2, 4, 8, 16)

    int analogOut() const { return analogOut_; }
    void setAnalogOut(int value) { analogOut_ = value; }
    int integration() const { return integration_; }
    void setIntegration(int value) { integration_ = value; }
    int channel() const { return channel_; }
    void setChannel(int channel) { channel_ = channel; }
    double maxLoad() const { return maxLoad_; }
    void setMaxLoad(double value) { maxLoad_ = value; }
    QString unit() const { return unit_; }
    void setUnit(const QString& unit) { unit_ = unit; }
    bool overload() const { return overload_; }
    void setOverload(bool on) { overload_ = on; }

    // The load cell: channel 1 follows signal(1), channel 2 signal(2).
    SignalShape signal(int channel = 1) const;
    void setSignal(const SignalShape& shape, int channel = 1);
    // The weight on the current channel now, to three decimals, and its texts and count.
    double weight() const;
    double weightAt(qint64 ms, int channel) const;
    static QString weightText(double weight); // "12.345"
    qint32 a2d() const;                       // weight * countsPerUnit, or overload count
    static constexpr double countsPerUnit = 40.0;
    static constexpr qint32 overloadCount = 131071;

    // Fast sampling. A session records a reading every samplePeriodMs() from its start;
    // readings are handed out in answers of at most maxBlockReadings.
    bool sampling() const { return session_.active; }
    bool stopping() const { return session_.active && session_.stopped; }
    int samplePeriodMs() const { return session_.periodMs; }
    static int periodForIntegration(int integration); // integration ms, at least 1
    int pendingReadings() const;
    // Milliseconds until a GetFastSampling answer has something to say: 0 when readings are
    // waiting, the session is stopping or none runs; else the time to the next reading.
    qint64 msUntilReadingDue() const;
    // Every reading text handed out in an answer, in order, across sessions.
    const QStringList& sentReadings() const { return sentReadings_; }
    void clearSentReadings() { sentReadings_.clear(); }
    void setMaxBlockReadings(int n) { maxBlockReadings_ = n; }
    void setMaxSampleIntegration(int n) { maxSampleIntegration_ = n; }
    void setSampleLogLimit(int n) { sampleLogLimit_ = n; }

private:
    struct Session {
        bool active = false;
        bool stopped = false;
        qint64 startMs = 0;
        int periodMs = 1;
        qint64 next = 0;       // index of the next reading to hand out
        qint64 lastIndex = -1; // after a stop: index of the last reading recorded
    };

    using Params = QHash<QString, QString>;
    static Params parseBody(const QString& body);
    static bool paramNumber(const Params& p, const QString& key, double& value);

    QString status(int code, const QString& description) const;
    QString doGetRTStatus(int code, const QString& description) const;
    QString doSetOutput(const Params& p);
    QString doGetSetpoints(int code, const QString& description) const;
    QString doSetSetpoints(const Params& p);
    QString doSetD2A(const Params& p);
    QString doSetIntegration(const Params& p);
    QString doChannel(const QString& function, int channel);
    QString doStartSample();
    QString doStopSample();
    QString doGetFastSampling();
    qint64 recordedUpTo(qint64 ms) const; // index of the last reading recorded by ms
    void logReading(const QString& text);

    Clock clock_;
    quint16 outputs_ = 16383;
    quint8 inputs_ = 255;
    int inputsPeriodMs_ = 0;
    std::array<double, 4> setpoints_{-1, -1, -1, -1};
    int analogOut_ = 0;
    int integration_ = 8;
    int channel_ = 1;
    double maxLoad_ = 3000;
    QString unit_;
    bool overload_ = false;
    std::array<SignalShape, 2> signals_;
    Session session_;
    int maxBlockReadings_ = 500;
    int maxSampleIntegration_ = 64;
    int sampleLogLimit_ = 1000000;
    QStringList sentReadings_;
};

} // namespace torv::sim
