#include "config_file.h"

#include "base/numeric.h"
#include "base/platform.h"
#include "base/runtime_error.h"
#include "fields.h"

#include <QDir>
#include <QStringDecoder>

#include <algorithm>

#include <filesystem>

namespace torv {

namespace {

// The file exists when a regular file of the current folder carries the name `path`,
// compared without regard to case. A path with a folder part never matches a bare name,
// so it never counts as existing. Returns the name to open (the exact spelling wins).
QString existingConfigFile(const QString& path) {
    if (path.isEmpty() || path.contains(QLatin1Char('/')) || path.contains(QLatin1Char('\\')) ||
        path == QStringLiteral(".") || path == QStringLiteral(".."))
        return {};
    std::error_code ec;
    if (std::filesystem::is_regular_file(std::filesystem::path(path.toStdU16String()), ec))
        return path;
    const QStringList names =
        QDir::current().entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    for (const QString& name : names) {
        if (name.compare(path, Qt::CaseInsensitive) == 0 &&
            std::filesystem::is_regular_file(std::filesystem::path(name.toStdU16String()), ec))
            return name;
    }
    return {};
}

// "1" or "2": the X-mode value read, compared as a number; anything else selects "1".
QString normalisedXMode(const QString& text) {
    double v = 0;
    try {
        v = Val(text);
    } catch (const RuntimeError&) {
        return QStringLiteral("1");
    }
    return v == 2 ? QStringLiteral("2") : QStringLiteral("1");
}

} // namespace

void Load_Config_File(Platform& platform, const QString& path, ClientConfig& cfg,
                      const QString& defaultAddress) {
    auto useDefaults = [&] {
        cfg.address = defaultAddress;
        cfg.startOutStatus = QStringLiteral("0");
        cfg.setPointCheckBoxStart = QStringLiteral("0");
    };
    const QString name = existingConfigFile(path);
    if (name.isEmpty()) {
        useDefaults();
        return;
    }
    QByteArray content;
    int error = 0;
    if (!readFileCapped(name, kConfigFileMaxBytes, content, &error)) {
        // It was there a moment ago but cannot be read: say so and start from the defaults.
        useDefaults();
        platform.messageBox(QStringLiteral("Uneccepted Error %1 %2 (%3)")
                                .arg(error)
                                .arg(RuntimeError::standardDescription(error), path));
        return;
    }

    FieldReader in(content);
    {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = utf8(content);
        cfg.latin1 = utf8.hasError();
    }
    auto readValue = [&in] {
        in.readField(); // the label: values are taken by position alone
        return in.readField();
    };
    try {
        cfg.address = readValue();
        cfg.startOutStatus = readValue();
        cfg.setPointCheckBoxStart = readValue();
        cfg.startSampleTime = readValue();
        cfg.timeout = readValue();
        cfg.xMode = normalisedXMode(readValue());
        const QString marker = in.readLine();
        if (marker.toUpper() != QStringLiteral("OKA"))
            platform.messageBox(QStringLiteral("Ivalid structure of the file ") + path);
    } catch (const RuntimeError& e) {
        // The file ended early: what was read stays in force.
        if (e.number() != 62) throw;
        platform.messageBox(QStringLiteral("Ivalid structure of the file ") + path);
    }
}

QByteArray configFileText(const ClientConfig& cfg) {
    const QString text =
        QStringLiteral("IPaddress,") + cfg.address + QLatin1String(kLineEnd) +
        QStringLiteral("StartOutStatus, ") + cfg.startOutStatus + QLatin1String(kLineEnd) +
        QStringLiteral("SetPointCheckBoxStart, ") + cfg.setPointCheckBoxStart +
        QLatin1String(kLineEnd) + QStringLiteral("Start_Sample_Time, ") + cfg.startSampleTime +
        QLatin1String(kLineEnd) + QStringLiteral("Start_Sample_TimeOut, ") + cfg.timeout +
        QLatin1String(kLineEnd) + QStringLiteral("X-mode:Samplings_or_Milisec:, ") + cfg.xMode +
        QLatin1String(kLineEnd) + QStringLiteral("OKA") + QLatin1String(kLineEnd);
    const bool fitsLatin1 =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
    return cfg.latin1 && fitsLatin1 ? text.toLatin1() : text.toUtf8();
}

void Save_Config_File(Platform& platform, const QString& path, const ClientConfig& cfg) {
    try {
        writeTextFile(path, configFileText(cfg));
    } catch (const RuntimeError& e) {
        platform.messageBox(e.message());
        platform.endProgramWithError();
    }
}

} // namespace torv
