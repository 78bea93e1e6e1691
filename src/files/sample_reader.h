#pragma once

// Reading the sample data file back: the first line, the block lines with their readings,
// "-1, -1" and the trailer. A file that was extended by appending carries more blocks and a
// second trailer after the first; the last trailer is the one that counts.
//
// The reader scans bytes and never builds a text object per reading, so a file of a million
// readings reads in a fraction of a second. Whatever the bytes, it ends with either the
// content or one error naming the line and what was expected there.

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <array>
#include <vector>

namespace torv {

struct SampleBlockLine {
    std::array<qint32, 5> value{}; // as written; value[4] is the block's last reading index
    qsizetype line = 0;            // line number in the file, from 1
    qsizetype firstReading = 0;    // position of its first reading in SampleFileContent::index
};

struct SampleTrailerFacts {
    QString startDateTime; // "StartDateTime:" ...
    QString cardName;      // "TORV-NET"
    QString integration;   // between "Sampling Rate: " and " (ms.)"
    QString bufferSize;    // "InegrationBufferSize: " ...
    QString unitsCaption;  // the units column of the template row
    QString samples;       // "Samples: " ..., the last reading index the panel wrote
    int xMode = 1;         // "Reading1_ms2:," 1 (readings) or 2 (milliseconds)
};

struct SampleFileContent {
    QString timerInterval; // the number on the first line
    std::vector<SampleBlockLine> blocks;
    std::vector<qint64> index; // reading index of each reading line, in file order
    std::vector<double> value; // its reading
    int decimals = 0;          // most decimals written among the first thousand readings
    SampleTrailerFacts trailer;
    int trailers = 0;    // how many "-1, -1" sections the file holds (more than 1 when appended)
    QStringList remarks; // what was passed over without making the file unreadable
};

struct SampleFileError {
    qsizetype line = 0; // 0 when the error is about the file as a whole
    QString message;
    QString text() const;
};

// Files beyond this size are refused rather than read into memory.
inline constexpr qint64 kSampleFileMaxBytes = qint64(256) << 20;

// Reads the content of a sample data file. False, with `error` set, when it is damaged or is
// not a sample data file. A reading that is not a number (the panel may write one at index 0)
// is left out with a remark.
bool parseSampleFile(QByteArrayView bytes, SampleFileContent& out, SampleFileError& error);

// Reads the file at `path`; also fails when it is missing, unreadable or too large.
bool readSampleFile(const QString& path, SampleFileContent& out, SampleFileError& error);

// The trailer's integration as a number of milliseconds, or 0 when it is not a positive number.
double integrationValue(const QString& text);

} // namespace torv
