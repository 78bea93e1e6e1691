#include "qt_platform.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QMessageBox>
#include <QProcess>

#include <csignal>
#include <cstdlib>
#include <sys/types.h>

namespace torv {

QtPlatform::QtPlatform() = default;

void QtPlatform::messageBox(const QString& text) {
    const ModalBox modal(*this);
    QMessageBox box(QMessageBox::NoIcon, QApplication::applicationDisplayName(), text,
                    QMessageBox::Ok, parent_);
    box.exec();
}

bool QtPlatform::askYesNo(const QString& text) {
    const ModalBox modal(*this);
    QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(), text,
                    QMessageBox::Yes | QMessageBox::No, parent_);
    return box.exec() == QMessageBox::Yes;
}

int QtPlatform::textWidth(const QString& text) {
    return QFontMetrics(QApplication::font()).horizontalAdvance(text);
}

int QtPlatform::messageReferenceWidth() {
    // The reference label of the main window is about forty average characters wide.
    return QFontMetrics(QApplication::font()).averageCharWidth() * 40;
}

QStringList QtPlatform::dialogFilters(const QString& filter) {
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        out << QStringLiteral("%1 (%2)").arg(parts[i], patterns);
    }
    return out;
}

std::optional<QString> QtPlatform::openFileDialog(const FileDialogRequest& request) {
    const ModalBox modal(*this);
    QFileDialog dialog(parent_);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setDirectory(request.initialFolder);
    dialog.selectFile(request.fileName);
    const QStringList filters = dialogFilters(request.filter);
    dialog.setNameFilters(filters);
    if (request.filterIndex >= 1 && request.filterIndex <= filters.size())
        dialog.selectNameFilter(filters[request.filterIndex - 1]);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().first();
}

std::int64_t QtPlatform::startProgram(const QString& program, const QStringList& arguments) {
    if (!QFileInfo(program).isExecutable()) return 0;
    qint64 pid = 0;
    if (!QProcess::startDetached(program, arguments, QString(), &pid)) return 0;
    return pid > 0 ? pid : 0;
}

void QtPlatform::postCloseMessage(std::int64_t windowHandle) {
    // On this system a viewer lists its process id. Only a process that really is a history
    // viewer is asked to close, so a stale number never touches another program.
    if (windowHandle <= 0) return;
    QFile comm(QStringLiteral("/proc/%1/comm").arg(windowHandle));
    if (!comm.open(QIODevice::ReadOnly)) return;
    const QString name = QString::fromLocal8Bit(comm.readAll()).trimmed().toLower();
    if (name.startsWith(QStringLiteral("trendlog")))
        ::kill(static_cast<pid_t>(windowHandle), SIGTERM);
}

void QtPlatform::endProgram() {
    std::exit(0);
}

void QtPlatform::endProgramWithError() {
    std::exit(1);
}

} // namespace torv
