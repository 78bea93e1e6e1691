// The panel on the real Qt platform against small misbehaving cards on loopback, with real
// modal boxes: every box runs its own event loop until a timer closes it, as an operator
// would after a moment. Nothing of the request loop may run underneath a box.

#include "panel/frm_client.h"
#include "ui/qt_platform.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QMessageBox>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

using namespace torv;

namespace {

bool boxOpen() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr;
}

// A card that answers every request with the same bytes and closes the connection; with no
// bytes it closes every connection as soon as it is accepted.
class BadCard {
public:
    explicit BadCard(QByteArray answer)
        : answer_(std::move(answer)) {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            while (QTcpSocket* s = server_.nextPendingConnection()) {
                ++connections;
                if (boxOpen()) ++underABox;
                QObject::connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
                if (answer_.isEmpty()) {
                    s->close();
                    continue;
                }
                QObject::connect(s, &QTcpSocket::readyRead, s, [this, s] {
                    QByteArray& in = pending_[s];
                    in += s->readAll();
                    const qsizetype head = in.indexOf("\r\n\r\n");
                    if (head < 0 || in.indexOf("\r\n", head + 4) < 0) return;
                    pending_.remove(s);
                    if (boxOpen()) ++underABox;
                    s->write(answer_);
                    s->disconnectFromHost();
                });
            }
        });
    }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(server_.serverPort()); }

    int connections = 0;
    int underABox = 0; // connections and requests that reached the card while a box was open

private:
    QByteArray answer_;
    QTcpServer server_;
    QHash<QTcpSocket*, QByteArray> pending_;
};

// Closes each message box a while after it opened and records what was shown.
class BoxCloser {
public:
    BoxCloser() {
        timer_.setInterval(20);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
        timer_.start();
    }
    QStringList texts; // every box, in the order they opened
    int deepest = 0;   // the most boxes open at once

private:
    void look() {
        int open = 0;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(w);
            if (!box || !box->isVisible()) continue;
            ++open;
            if (!opened_.contains(box)) {
                opened_.insert(box, 0);
                texts << box->text();
            }
            if (++opened_[box] >= 10) box->done(QMessageBox::Ok); // about 200 ms
        }
        deepest = std::max(deepest, open);
    }
    QTimer timer_;
    QHash<QMessageBox*, int> opened_;
};

void runFor(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
}

QByteArray statusAnswer(const QByteArray& weight, const QByteArray& outStatus = "16383") {
    return "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<GetRTStatus><WEIGHT>" + weight +
           "</WEIGHT><A2D>49380</A2D><OUT_STATUS>" + outStatus +
           "</OUT_STATUS><IN_STATUS>255</IN_STATUS><INTEGRATION>8</INTEGRATION>"
           "<MAXIMUM_LOAD>3000</MAXIMUM_LOAD><UNIT>KG</UNIT><SP_STATUS>0</SP_STATUS>"
           "<ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></GetRTStatus>";
}

class ModalTest : public ::testing::Test {
protected:
    ModalTest() {
        old_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        panel.f.TxtIP.caption = QStringLiteral("127.0.0.1:1");
        panel.layOutFrames();
    }
    ~ModalTest() override { QDir::setCurrent(old_); }
    void poll(const BadCard& card, const QString& timeout = QStringLiteral("5000")) {
        panel.f.TxtIP.caption = card.address();
        panel.f.txtTimeout2.caption = timeout;
        panel.event([this] { panel.cmdWeight_Click(); });
    }

    QTemporaryDir dir_;
    QString old_;
    QtPlatform platform;
    FrmClient panel{platform};
};

} // namespace

TEST_F(ModalTest, RunTimeErrorOfAnAnswerIsShownOnceAndNothingRunsUnderTheBox) {
    QByteArray nested;
    for (int i = 0; i < 10000; ++i)
        nested += "<A>";
    struct Row {
        const char* what;
        QByteArray answer;
        QString blockSize; // "N for current frequency"
        bool fails;        // the answer's handler ends with a run-time error
    };
    const Row rows[] = {
        {"OUT_STATUS 40000", statusAnswer("1.5", "40000"), "10", true},
        {"a 40,000-character value", statusAnswer(QByteArray(40000, '7')), "10", true},
        {"N for current frequency 33", statusAnswer("1.5"), "33", true},
        {"NUL bytes in a value", statusAnswer(QByteArray("1\0.5", 4)), "10", false},
        {"tags nested 10,000 deep", statusAnswer(nested), "10", false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.what);
        BadCard card(r.answer);
        BoxCloser closer;
        panel.f.txtLastReadingNumberD.caption = r.blockSize;
        poll(card);
        runFor(1200);
        EXPECT_LE(closer.deepest, 1);
        EXPECT_EQ(card.underABox, 0);
        EXPECT_EQ(closer.texts.size(), r.fails ? 1 : 0) << closer.texts.join(" / ").toStdString();
        if (!r.fails) {
            EXPECT_GT(card.connections, 10); // polling goes on
        }
        panel.event([this] { panel.cmdStopSample_Click(); });
        runFor(300);
    }
}
