#pragma once

#include "link/qt_net_platform.h"

class QWidget;

namespace torv {

// The platform of the real panel: Qt sockets and timers plus modal dialogs, text measuring,
// the file dialog and starting other programs.
class QtPlatform : public QtNetPlatform {
public:
    QtPlatform();

    // Dialogs are centred on this window.
    void setDialogParent(QWidget* parent) { parent_ = parent; }

    void messageBox(const QString& text) override;
    bool askYesNo(const QString& text) override;
    int textWidth(const QString& text) override;
    int messageReferenceWidth() override;
    std::optional<QString> openFileDialog(const FileDialogRequest& request) override;
    std::int64_t startProgram(const QString& program, const QStringList& arguments) override;
    void postCloseMessage(std::int64_t windowHandle) override;
    [[noreturn]] void endProgram() override;
    [[noreturn]] void endProgramWithError() override;

    // Converts "Text (*.txt)|*.txt|..." into the dialog's filter list.
    static QStringList dialogFilters(const QString& filter);

private:
    QWidget* parent_ = nullptr;
};

} // namespace torv
