#pragma once

// What the fuzz targets share: reading an input as a series of choices, reporting a fault so
// that libFuzzer (and the replay test) see it, a scripted platform that treats a message box
// opened inside another as a fault, and a private working folder for targets that read files.

#include "link/catalogue.h"
#include "support/fake_platform.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace torv::fuzz {

// The card's eleven functions, for a target to choose one from its input.
inline const QString* const kFunctions[] = {
    &fn::GetRTStatus,  &fn::GetFastSampling, &fn::StartSample,   &fn::StopSample,
    &fn::ch1_switch,   &fn::ch2_switch,      &fn::SetOutput,     &fn::GetSetpoints,
    &fn::SetSetpoints, &fn::SetD2A,          &fn::SetIntegration};

// A fault: the message goes to standard error and the process aborts, which libFuzzer
// reports as a crash and keeps the input.
[[noreturn]] inline void fault(const char* what, const QString& detail = QString()) {
    std::fprintf(stderr, "FUZZ FAULT: %s %s\n", what, qPrintable(detail.left(400)));
    std::abort();
}

inline void check(bool ok, const char* what, const QString& detail = QString()) {
    if (!ok) fault(what, detail);
}

// The input read front to back: small choices first, then pieces, then the rest. Reading
// past the end gives zeros and empty pieces, so every input is a valid script.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : data_(data)
        , size_(size) {}

    std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    // A number in [0, n).
    int choose(int n) { return n <= 1 ? 0 : byte() % n; }
    bool flag() { return byte() & 1; }
    std::uint16_t u16() { return static_cast<std::uint16_t>(byte() | byte() << 8); }
    QByteArray take(std::size_t n) {
        if (n > size_ - at_) n = size_ - at_;
        QByteArray out(reinterpret_cast<const char*>(data_ + at_), static_cast<qsizetype>(n));
        at_ += n;
        return out;
    }
    // A piece whose length is the next byte.
    QByteArray piece() { return take(byte()); }
    QByteArray rest() { return take(size_ - at_); }
    bool empty() const { return at_ >= size_; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

// The tests' scripted platform. A box is modal: one opened while another is still open
// means an event reached a handler it should have been held from.
class Platform : public test::FakePlatform {
public:
    void messageBox(const QString& text) override {
        if (inModalBox()) fault("a box opened inside another:", text);
        test::FakePlatform::messageBox(text);
    }
    bool askYesNo(const QString& text) override {
        if (inModalBox()) fault("a question opened inside a box:", text);
        return test::FakePlatform::askYesNo(text);
    }
};

// A folder of its own for the whole run, made the current folder: the panel and the file
// readers open their files by bare name. In memory where the system offers it: the writers
// sync every file to disk, which would otherwise cost more than everything else of a run.
inline const QString& workFolder() {
    static const QString base = QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                                    ? QStringLiteral("/dev/shm")
                                    : QDir::tempPath();
    static QTemporaryDir dir(base + QStringLiteral("/torv-fuzz-XXXXXX"));
    static const bool entered = QDir::setCurrent(dir.path());
    (void)entered;
    static const QString path = dir.path();
    return path;
}

} // namespace torv::fuzz
