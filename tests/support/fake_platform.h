#pragma once

// A scripted Platform for tests: a fake millisecond clock, fake sockets and timers that the
// test drives by hand, and message boxes answered from a script and recorded.

#include "base/platform.h"

#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <map>
#include <vector>

namespace torv::test {

// Thrown by FakePlatform::endProgram so a test can see that the program would end.
struct ProgramEnded {};

class FakePlatform;

class FakeTcpClient : public TcpClient {
public:
    explicit FakeTcpClient(FakePlatform& platform, int id);
    ~FakeTcpClient() override;

    void connectToHost(const QString& host, std::uint16_t port) override;
    void send(const QByteArray& data) override;
    void close() override;

    // Driven by the test.
    void fireConnect();
    void deliver(const QByteArray& data);
    void peerClose();
    void fail(int number = 10061, const QString& description = QStringLiteral("refused"));

    int id() const { return id_; }
    QString host() const { return host_; }
    std::uint16_t port() const { return port_; }
    bool isClosed() const { return closed_; }
    bool connectRequested() const { return connectRequested_; }
    const std::vector<QByteArray>& sends() const { return sends_; }
    QByteArray sentText() const;

private:
    FakePlatform& platform_;
    int id_;
    QString host_;
    std::uint16_t port_ = 0;
    bool closed_ = false;
    bool connectRequested_ = false;
    std::vector<QByteArray> sends_;
};

class FakeTimer : public PeriodicTimer {
public:
    explicit FakeTimer(FakePlatform& platform);
    ~FakeTimer() override;
    void setInterval(int ms) override;
    int interval() const override { return interval_; }
    void setEnabled(bool enabled) override;
    bool isEnabled() const override { return enabled_; }

    void fire(); // one tick now, whatever the clock says
    std::uint32_t nextDue() const { return nextDue_; }

private:
    friend class FakePlatform;
    FakePlatform& platform_;
    int interval_ = 0;
    bool enabled_ = false;
    std::uint32_t nextDue_ = 0;
};

struct DialogRecord {
    enum Kind { Ok, YesNo } kind;
    QString text;
    bool answer = true;
};

class FakePlatform : public Platform {
public:
    FakePlatform();
    ~FakePlatform() override;

    // Clock -----------------------------------------------------------------
    std::uint32_t now = 100000;
    // Moves the clock one millisecond at a time, firing due timers and scheduled actions.
    void advance(int ms);
    // Runs `action` when the clock reaches `tick` (during advance or processEvents).
    void at(std::uint32_t tick, std::function<void()> action);
    void after(int ms, std::function<void()> action) {
        at(now + static_cast<std::uint32_t>(ms), std::move(action));
    }
    // How far processEvents moves the clock.
    int processStepMs = 1;
    int processEventsCalls = 0;
    // Runs after every millisecond of fake time (a fake card answers from here).
    std::function<void()> onTick;

    // Network ---------------------------------------------------------------
    // The wire as the fake saw it: "connect HOST:PORT", "send TEXT", "close #ID".
    QStringList wire;
    std::vector<FakeTcpClient*> sockets; // live sockets, oldest first
    int socketsCreated = 0;
    FakeTcpClient* socket() const { return sockets.empty() ? nullptr : sockets.back(); }
    std::vector<FakeTimer*> timers;

    // Dialogs ---------------------------------------------------------------
    std::vector<DialogRecord> dialogs;
    std::deque<bool> yesNoAnswers; // consumed in order; when empty, defaultAnswer
    bool defaultAnswer = true;
    QStringList messages() const; // texts of all dialogs in order
    QString lastMessage() const { return dialogs.empty() ? QString() : dialogs.back().text; }
    // Called (if set) inside messageBox/askYesNo, e.g. to fire events a modal box would pump.
    std::function<void(const DialogRecord&)> onDialog;

    std::optional<QString> fileDialogAnswer;
    std::vector<FileDialogRequest> fileDialogs;
    std::vector<std::pair<QString, QStringList>> startedPrograms;
    bool startProgramSucceeds = true;
    std::vector<std::int64_t> closedWindows;
    QString folder = QStringLiteral("/opt/torv-net");
    QString localeSample = QStringLiteral("1.5");
    int charWidth = 6;
    int referenceWidth = 0;
    int programEndings = 0;
    int errorEndings = 0; // of them, ends with a failure status
    QString nowText = QStringLiteral("2/19/2004 10:30:53 AM");

    // Platform --------------------------------------------------------------
    std::uint32_t GetTickCount() override { return now; }
    QString NowString() override { return nowText; }
    QString localeTextOfOnePointFive() override { return localeSample; }
    std::unique_ptr<TcpClient> createTcpClient() override;
    std::unique_ptr<PeriodicTimer> createTimer() override;
    void processEvents(int maxWaitMs = 0) override;
    void messageBox(const QString& text) override;
    bool askYesNo(const QString& text) override;
    int textWidth(const QString& text) override {
        return static_cast<int>(text.size()) * charWidth;
    }
    int messageReferenceWidth() override { return referenceWidth; }
    std::optional<QString> openFileDialog(const FileDialogRequest& request) override;
    bool startProgram(const QString& program, const QStringList& arguments) override;
    void postCloseMessage(std::int64_t windowHandle) override;
    QString programFolder() override { return folder; }
    [[noreturn]] void endProgram() override;
    [[noreturn]] void endProgramWithError() override;

protected:
    // Held events run on the next millisecond of fake time, as from the event loop.
    void scheduleHeldEvents() override { heldEventsDue_ = true; }

private:
    bool heldEventsDue_ = false;
    friend class FakeTcpClient;
    friend class FakeTimer;
    void tick();
    std::multimap<std::uint32_t, std::function<void()>> scheduled_;
};

} // namespace torv::test
