#pragma once

// What every torvctl command shares: the cards, the exit status, messages on standard error,
// and an output that is written and flushed a line at a time.

#include "client/card_client.h"
#include "link/qt_net_platform.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace torv::ctl {

enum ExitStatus {
    ExitOk = 0,
    ExitCardError = 1, // the card answered with an error code other than "0"
    ExitUsage = 2,     // bad usage or a value out of range; nothing was sent
    ExitNoAnswer = 3,  // refused, silent, cut off
    ExitNotCard = 4,   // an answer that is not the card's
};

int exitStatusOf(client::FailureKind kind);

// "torvctl: " + text + line feed on standard error.
void complain(const QString& text);

// The files' messages (a damaged TORV_NET.cfg, a sample block without values) go to standard
// error; nothing asks, nothing opens a window.
class HeadlessPlatform : public QtNetPlatform {
public:
    void messageBox(const QString& text) override;
    bool askYesNo(const QString& text) override;
    int textWidth(const QString&) override { return 0; }
    int messageReferenceWidth() override { return 0; }
    std::optional<QString> openFileDialog(const FileDialogRequest&) override {
        return std::nullopt;
    }
    bool startProgram(const QString&, const QStringList&) override { return false; }
    void postCloseMessage(std::int64_t) override {}
    [[noreturn]] void endProgram() override;
};

// Standard output, or a file opened for appending. Each write is flushed at once; a file is
// also synced to the disk by a thread of its own every 100 ms while rows come, so a power
// loss costs at most the rows of the last tenth of a second and a slow disk never holds up
// the polling.
class LineOutput {
public:
    // Empty path: standard output. False (with `error`) when the file cannot be opened.
    bool open(const QString& path, QString& error);
    ~LineOutput();
    bool wasEmpty() const { return wasEmpty_; } // a new or empty file (or standard output)
    bool write(const QByteArray& bytes);
    bool isTerminal() const;

private:
    std::FILE* file_ = nullptr;
    bool own_ = false;
    bool wasEmpty_ = true;
    // The syncing thread: wakes every 100 ms, syncs when rows came since its last sync.
    std::atomic<bool> dirty_{false};
    std::mutex stopLock_;
    std::condition_variable stopSignal_;
    bool stop_ = false;
    std::thread syncer_;
};

// The cards of one run, in the order given, and the worst exit status so far.
struct Session {
    HeadlessPlatform* platform = nullptr;
    int xMode = 1; // of TORV_NET.cfg, for the sample data file
    int timeoutMs = 5000;
    std::vector<std::unique_ptr<client::CardClient>> cards;
    int status = ExitOk;
    void worsen(int s) { status = std::max(status, s); }
    // Names the card (when there are several) and the failure on standard error; worsens the
    // status.
    void fail(const client::Failure& failure);
    // The prefix of a line about a card: its address when there are several, else nothing.
    QString prefix(const client::CardClient& card) const;
};

} // namespace torv::ctl
