#pragma once

// The real Qt clock, sockets and timers with scripted dialogs: for tests that run the panel or
// the link against the simulator on loopback. Needs a QCoreApplication.

#include "link/qt_net_platform.h"
#include "support/fake_platform.h"

#include <QElapsedTimer>
#include <deque>

namespace torv::test {

class LoopbackPlatform : public QtNetPlatform {
public:
    std::vector<DialogRecord> dialogs;
    std::deque<bool> yesNoAnswers;
    bool defaultAnswer = true;
    int programEndings = 0;
    int errorEndings = 0;
    std::vector<std::pair<QString, QStringList>> startedPrograms;
    std::optional<QString> fileDialogAnswer;

    QStringList messages() const {
        QStringList out;
        for (const auto& d : dialogs)
            out << d.text;
        return out;
    }

    void messageBox(const QString& text) override {
        dialogs.push_back({DialogRecord::Ok, text, true});
    }
    bool askYesNo(const QString& text) override {
        bool a = defaultAnswer;
        if (!yesNoAnswers.empty()) {
            a = yesNoAnswers.front();
            yesNoAnswers.pop_front();
        }
        dialogs.push_back({DialogRecord::YesNo, text, a});
        return a;
    }
    int textWidth(const QString& text) override { return static_cast<int>(text.size()) * 6; }
    int messageReferenceWidth() override { return 0; }
    std::optional<QString> openFileDialog(const FileDialogRequest&) override {
        return fileDialogAnswer;
    }
    bool startProgram(const QString& program, const QStringList& arguments) override {
        startedPrograms.emplace_back(program, arguments);
        return true;
    }
    void postCloseMessage(std::int64_t) override {}
    [[noreturn]] void endProgram() override {
        ++programEndings;
        throw ProgramEnded{};
    }
    [[noreturn]] void endProgramWithError() override {
        ++errorEndings;
        ++programEndings;
        throw ProgramEnded{};
    }

    // Processes events until `done` holds or `ms` of real time have passed.
    template <typename F> bool runUntil(F done, int ms = 10000) {
        QElapsedTimer t;
        t.start();
        while (!done()) {
            if (t.elapsed() > ms) return false;
            processEvents(5);
        }
        return true;
    }
};

} // namespace torv::test
