#include "kept_file.h"

#include "base/runtime_error.h"
#include "fields.h"
#include "sample_reader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <vector>

namespace torv {

namespace {

const QLatin1String kKept("-kept-");

// A file worth keeping: one that is not a data file of ours without readings (any other
// content, damaged or foreign, is kept rather than lost).
bool holdsReadings(const QByteArray& bytes) {
    if (bytes.trimmed().isEmpty()) return false;
    SampleFileContent content;
    SampleFileError error;
    if (!parseSampleFile(bytes, content, error)) return true;
    return !content.index.empty();
}

} // namespace

QString keptFileName(const QString& path, const QDateTime& when) {
    const QFileInfo info(path);
    QString name =
        info.completeBaseName() + kKept + when.toString(QStringLiteral("yyyyMMdd-HHmmss"));
    if (!info.suffix().isEmpty()) name += QLatin1Char('.') + info.suffix();
    return name;
}

KeptFile keepPreviousDataFile(const QString& path, const QByteArray& next, const QDateTime& when,
                              int keep) {
    KeptFile result;
    const QFileInfo info(path);
    if (!info.isFile()) return result;
    QByteArray old;
    if (!readFileCapped(path, kSampleFileMaxBytes, old)) {
        if (info.size() > 0) result.error = QStringLiteral("it could not be read");
        return result;
    }
    if (old == next || !holdsReadings(old)) return result;

    const QDir folder = info.dir();
    const QString ext = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    const QString stem = QFileInfo(keptFileName(path, when)).completeBaseName();
    QString name = stem + ext;
    for (int n = 2; folder.exists(name); ++n) // two saves within one second
        name = stem + QLatin1Char('~') + QString::number(n) + ext;
    try {
        writeTextFile(folder.filePath(name), old);
    } catch (const RuntimeError& e) {
        result.error = e.message();
        return result;
    }
    result.path = folder.filePath(name);

    // The newest copies stay: ordered by their date and time, then their number.
    const QRegularExpression own(QLatin1Char('^') +
                                 QRegularExpression::escape(info.completeBaseName() + kKept) +
                                 QStringLiteral("(\\d{8}-\\d{6})(?:~(\\d+))?") +
                                 QRegularExpression::escape(ext) + QLatin1Char('$'));
    std::vector<std::pair<std::pair<QString, int>, QString>> copies;
    for (const QString& entry : folder.entryList(QDir::Files)) {
        const QRegularExpressionMatch m = own.match(entry);
        if (m.hasMatch())
            copies.push_back(
                {{m.captured(1), m.captured(2).isEmpty() ? 1 : m.captured(2).toInt()}, entry});
    }
    std::sort(copies.begin(), copies.end());
    for (std::size_t i = 0; i + std::size_t(std::max(keep, 1)) < copies.size(); ++i)
        QFile::remove(folder.filePath(copies[i].second));
    return result;
}

} // namespace torv
