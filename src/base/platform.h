#pragma once

// Everything the panel's logic needs from the outside world. The Qt implementation lives
// above this layer; tests use a scripted fake. Nothing below the window layer talks to the
// toolkit, the clock or the network except through this interface.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace torv {

// One TCP connection. Create a new client for every connection. The callbacks run on the
// window thread. Destroying the client, or close(), ends the connection without a Close
// callback; implementations tolerate being destroyed from inside their own callbacks.
class TcpClient {
public:
    virtual ~TcpClient() = default;
    virtual void connectToHost(const QString& host, std::uint16_t port) = 0;
    virtual void send(const QByteArray& data) = 0;
    virtual void close() = 0;

    std::function<void()> onConnect;
    std::function<void(const QByteArray& data)> onDataArrival; // bytesTotal = data.size()
    std::function<void()> onClose;                             // the peer closed
    std::function<void(int number, const QString& description)> onError;
};

// A periodic timer. Enabling a stopped timer starts a full interval; enabling a running one
// changes nothing. Changing the interval of a running timer restarts it.
class PeriodicTimer {
public:
    virtual ~PeriodicTimer() = default;
    virtual void setInterval(int ms) = 0;
    virtual int interval() const = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual bool isEnabled() const = 0;

    std::function<void()> onTick;
};

struct FileDialogRequest {
    QString initialFolder;
    QString fileName;
    QString filter; // "Text (*.txt)|*.txt|..." pairs of description and pattern
    int filterIndex = 1;
};

class Platform {
public:
    virtual ~Platform() = default;

    // Milliseconds since start-up, 32 bits, wraps.
    virtual std::uint32_t GetTickCount() = 0;
    // Current date and time in the system's general format, e.g. "2/19/2004 10:30:53 AM".
    virtual QString NowString() = 0;
    // The text the user's locale gives the number 1.5 ("1.5" or "1,5").
    virtual QString localeTextOfOnePointFive() = 0;

    virtual std::unique_ptr<TcpClient> createTcpClient() = 0;
    virtual std::unique_ptr<PeriodicTimer> createTimer() = 0;
    // Runs the window events that are pending (socket events, timer ticks, clicks). May wait
    // up to `maxWaitMs` for the first one to arrive; never longer.
    virtual void processEvents(int maxWaitMs = 0) = 0;

    // Modal message boxes with the application's title. Each runs inside a ModalBox.
    virtual void messageBox(const QString& text) = 0;
    virtual bool askYesNo(const QString& text) = 0;

    // A modal box runs a nested event loop. The panel's socket events and timer ticks are
    // not served underneath it: while a box is open they are held, and delivered in their
    // order once the last box has closed and the handler that opened it has returned.
    bool inModalBox() const { return modalDepth_ > 0; }
    // Runs `event` now, or holds it while a modal box is open.
    void deliverOrHold(std::function<void()> event);
    // Runs the events held so far, unless a box is open (again).
    void deliverHeldEvents();
    // Marks a box open for as long as it lives.
    class ModalBox {
    public:
        explicit ModalBox(Platform& platform)
            : p_(platform) {
            ++p_.modalDepth_;
        }
        ~ModalBox();
        ModalBox(const ModalBox&) = delete;
        ModalBox& operator=(const ModalBox&) = delete;

    private:
        Platform& p_;
    };
    // Width in pixels of `text` in the message font, and the width a message should at
    // least have (the reference label of the main window).
    virtual int textWidth(const QString& text) = 0;
    virtual int messageReferenceWidth() = 0;

    // The file-open dialog; nothing when the operator cancels.
    virtual std::optional<QString> openFileDialog(const FileDialogRequest& request) = 0;
    // Starts another program in a normal window. Its window handle (on this system its
    // process id), 0 when it could not be started.
    virtual std::int64_t startProgram(const QString& program, const QStringList& arguments) = 0;
    // Asks the window with this handle to close (the close message, 16).
    virtual void postCloseMessage(std::int64_t windowHandle) = 0;
    // The folder the program itself lies in.
    virtual QString programFolder() = 0;

    // Ends the program at once, without further prompts.
    [[noreturn]] virtual void endProgram() = 0;
    // Ends the program at once with a failure status (after a file error). By default the
    // same as endProgram().
    [[noreturn]] virtual void endProgramWithError();

protected:
    // The last box has closed and events are held: arrange for deliverHeldEvents() to run
    // from the event loop after the running handler. The default runs them at once.
    virtual void scheduleHeldEvents() { deliverHeldEvents(); }

private:
    int modalDepth_ = 0;
    bool delivering_ = false;
    std::deque<std::function<void()>> held_;
};

} // namespace torv
