#include "viewer_argument.h"

namespace torv {

QString historyViewerArgument(const QString& folder, const QString& fileName, int xMode,
                              const QString& integration) {
    const QString mode = xMode == 1 ? QStringLiteral("1") : QStringLiteral("2");
    return folder + QLatin1Char('/') + fileName + QLatin1Char('/') + mode + QLatin1Char('/') +
           integration;
}

std::optional<ViewerArgument> parseHistoryViewerArgument(const QString& text) {
    // The integration is the text after the last "/", the mode the one before it.
    const qsizetype lastSlash = text.lastIndexOf(QLatin1Char('/'));
    if (lastSlash < 2) return std::nullopt;
    const qsizetype modeSlash = text.lastIndexOf(QLatin1Char('/'), lastSlash - 1);
    if (modeSlash < 1 || lastSlash - modeSlash != 2) return std::nullopt;
    const QChar mode = text[modeSlash + 1];
    if (mode != QLatin1Char('1') && mode != QLatin1Char('2')) return std::nullopt;
    ViewerArgument argument;
    argument.path = text.left(modeSlash);
    argument.xMode = mode == QLatin1Char('1') ? 1 : 2;
    argument.integration = text.mid(lastSlash + 1).trimmed();
    return argument;
}

QStringList ViewerArgument::candidates() const {
    QStringList out{path};
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash > 0) out << path.left(slash);
    return out;
}

} // namespace torv
