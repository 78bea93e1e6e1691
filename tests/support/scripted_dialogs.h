#pragma once

// The one scripted-dialog helper: message boxes, questions, the file dialog, started programs
// and the end of the program, answered from a script and recorded. Every partial Platform of
// the tests and the benchmarks takes its dialogs from here: `Scripted<Base>` adds them to a
// Base that provides the clock, sockets and timers.

#include "base/platform.h"

#include <QString>
#include <QStringList>
#include <cstdio>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace torv::test {

// Thrown by endProgram so a test can see that the program would end.
struct ProgramEnded {};

struct DialogRecord {
    enum Kind { Ok, YesNo } kind;
    QString text;
    bool answer = true;
};

template <class Base> class Scripted : public Base {
public:
    using Base::Base;

    std::vector<DialogRecord> dialogs;
    std::deque<bool> yesNoAnswers; // consumed in order; when empty, defaultAnswer
    bool defaultAnswer = true;
    bool echo = false; // also print every dialog to stderr (benchmarks)
    // Called (if set) inside messageBox/askYesNo, e.g. to fire events a modal box would pump.
    std::function<void(const DialogRecord&)> onDialog;
    std::optional<QString> fileDialogAnswer;
    std::vector<FileDialogRequest> fileDialogs;
    std::vector<std::pair<QString, QStringList>> startedPrograms;
    bool startProgramSucceeds = true;
    std::vector<std::int64_t> closedWindows;
    int charWidth = 6;
    int referenceWidth = 0;
    int programEndings = 0;
    int errorEndings = 0; // of them, ends with a failure status

    QStringList messages() const {
        QStringList out;
        for (const DialogRecord& d : dialogs)
            out << d.text;
        return out;
    }
    QString lastMessage() const { return dialogs.empty() ? QString() : dialogs.back().text; }

    void messageBox(const QString& text) override { record(DialogRecord::Ok, text, true); }
    bool askYesNo(const QString& text) override {
        bool answer = defaultAnswer;
        if (!yesNoAnswers.empty()) {
            answer = yesNoAnswers.front();
            yesNoAnswers.pop_front();
        }
        record(DialogRecord::YesNo, text, answer);
        return answer;
    }
    int textWidth(const QString& text) override {
        return static_cast<int>(text.size()) * charWidth;
    }
    int messageReferenceWidth() override { return referenceWidth; }
    std::optional<QString> openFileDialog(const FileDialogRequest& request) override {
        fileDialogs.push_back(request);
        return fileDialogAnswer;
    }
    std::int64_t startProgram(const QString& program, const QStringList& arguments) override {
        startedPrograms.emplace_back(program, arguments);
        return startProgramSucceeds ? 1000 + std::int64_t(startedPrograms.size()) : 0;
    }
    void postCloseMessage(std::int64_t windowHandle) override {
        closedWindows.push_back(windowHandle);
    }
    [[noreturn]] void endProgram() override {
        ++programEndings;
        throw ProgramEnded{};
    }
    [[noreturn]] void endProgramWithError() override {
        ++errorEndings;
        ++programEndings;
        throw ProgramEnded{};
    }

private:
    // A box holds the socket events and timer ticks that arrive while it is open.
    void record(DialogRecord::Kind kind, const QString& text, bool answer) {
        const Platform::ModalBox modal(*this);
        if (echo) std::fprintf(stderr, "dialog: %s\n", qPrintable(text));
        dialogs.push_back({kind, text, answer});
        if (onDialog) onDialog(dialogs.back());
    }
};

} // namespace torv::test
