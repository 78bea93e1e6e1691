#pragma once

// The comma fields and print convention shared by every text file of the panel, and the
// writers that replace or extend a file without ever leaving half of it behind.

#include <QByteArray>
#include <QString>

namespace torv {

// Reads a file's content field by field. Blanks before a value are skipped; a field ends at
// a comma or at a line end (CR LF, LF or CR), and its terminator is consumed. Reading past
// the end raises run-time error 62 "Input past end of file". Bytes that are valid UTF-8 are
// read as UTF-8, anything else as Latin-1, so no content can make the reader fail.
class FieldReader {
public:
    explicit FieldReader(const QByteArray& content);
    QString readField();
    // The rest of the current line, without its line end.
    QString readLine();
    bool atEnd() const;

private:
    QString text_;
    qsizetype pos_ = 0;
};

// Text of bytes read from a file: UTF-8 when it is valid UTF-8, Latin-1 otherwise.
QString decodeFileText(const QByteArray& bytes);

// A whole number in a print list: " 5 " when not negative, "-3 " otherwise.
QString printNumber(qint64 v);

// Lines of the panel's files end with CR LF.
inline constexpr char kLineEnd[] = "\r\n";

// Up to `maxBytes` of the regular file at `path`; false when it is missing, not a regular
// file or cannot be read (`errorNumber` then says why: 53 missing, 75 access).
bool readFileCapped(const QString& path, qint64 maxBytes, QByteArray& content,
                    int* errorNumber = nullptr);

// Writes `text` to `path` through a temporary file in the same folder that is renamed over
// the target, so a crash or a full disk leaves the old file as it was. appendTextFile adds
// to the end (creating the file) and cuts the file back to its old length when the write
// fails. Failures raise RuntimeError: 76 path not found, 75 path/file access, 61 disk full.
// A symbolic link is written through: its target is replaced, the link stays. When no
// temporary file can be made beside the target (a read-only folder) an existing writable
// file is written in place. Paths are used as given: a relative path never passes through
// the name of the current folder, so a folder whose name is not UTF-8 works.
void writeTextFile(const QString& path, const QByteArray& text);
void appendTextFile(const QString& path, const QByteArray& text);

// Writes `text` to a new file in the user's data folder (or the system's temporary folder)
// named after `path` with the date and time; returns its full path, or nothing when
// neither folder takes it.
QString writeRecoveryFile(const QString& path, const QByteArray& text);

} // namespace torv
