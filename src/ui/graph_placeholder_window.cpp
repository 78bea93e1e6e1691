#include "graph_placeholder_window.h"

#include "graph/graph_store.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace torv {

namespace {
constexpr int kTwipsPerPixel = 15;
} // namespace

GraphPlaceholderWindow::GraphPlaceholderWindow(GraphStore& store, int channel)
    : QWidget(nullptr, Qt::Window)
    , store_(store)
    , channel_(channel)
    , refresher_([this] { refresh(); }) {
    setObjectName(QStringLiteral("frmGraph_%1").arg(channel));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QStringLiteral("Real-Time Graph "));
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(16, 14, 16, 14);
    auto* title = new QLabel(QStringLiteral("Channel"));
    title->setStyleSheet(QStringLiteral("color: #5B6878;"));
    lblChanNumber_ = new QLabel(QString::number(channel));
    lblChanNumber_->setObjectName(QStringLiteral("lblChanNumber"));
    lblChanNumber_->setStyleSheet(QStringLiteral("font-size: 20pt; font-weight: 700;"));
    info_ = new QLabel;
    info_->setObjectName(QStringLiteral("info"));
    v->addWidget(title);
    v->addWidget(lblChanNumber_);
    v->addWidget(info_);
    v->addStretch(1);
    resize(360, 200);
    refresh();
}

GraphPlaceholderWindow::~GraphPlaceholderWindow() {
    if (store_.graphWindows[channel_] == this) store_.graphWindows[channel_] = nullptr;
}

void GraphPlaceholderWindow::DrawGraph_TORV() {
    ++draws_;
    refresher_.request();
}

QString GraphPlaceholderWindow::text() const {
    return info_->text();
}

void GraphPlaceholderWindow::refresh() {
    const int ch = channel_;
    QString text = QStringLiteral("Readings: %1").arg(store_.readingCount[ch]);
    const Int32 last = store_.pointCount[ch] - 1;
    if (last >= 0 && static_cast<std::size_t>(last) < store_.points[ch].size())
        text += QStringLiteral("\nLast point: %1 at %2 ms")
                    .arg(store_.points[ch][static_cast<std::size_t>(last)])
                    .arg(store_.pointTimes[ch][static_cast<std::size_t>(last)]);
    text += QStringLiteral("\n\nThe plot of this channel comes with the graph window.");
    info_->setText(text);
}

void GraphPlaceholderWindow::Form_MyUnload() {
    if (store_.channelActive[channel_]) store_.GraphClose(channel_);
    if (store_.setUpForm) store_.setUpForm->enableCommands(store_.openWindowCount == 0);
    unloading_ = true;
    close();
}

void GraphPlaceholderWindow::SetTopMost(bool onTop) {
    const bool shown = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    if (shown) show();
}

void GraphPlaceholderWindow::closeEvent(QCloseEvent* event) {
    if (!unloading_) {
        // Closed by the operator: the graph stops, the set-up form goes with it and the
        // panel's polling button comes back.
        if (store_.channelActive[channel_]) store_.GraphClose(channel_);
        store_.channelActive[0] = false;
        if (store_.setUpForm) store_.setUpForm->unload();
        store_.restorePollingButton();
    }
    event->accept();
}

GraphPlaceholderWindows::~GraphPlaceholderWindows() {
    for (const auto& w : windows_)
        delete w.data();
}

GraphView* GraphPlaceholderWindows::open(int channel) {
    auto* w = new GraphPlaceholderWindow(store_, channel);
    windows_.emplace_back(w);
    w->SetTopMost(true);
    w->show();
    return w;
}

void GraphPlaceholderWindows::place(GraphView* const (&windows)[4]) {
    // The graphs stand in a column along the right edge of the screen, channel 0 on top.
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) return;
    const QRect area = screen->availableGeometry();
    int top = area.top() + 20;
    for (GraphView* view : windows) {
        auto* w = dynamic_cast<GraphPlaceholderWindow*>(view);
        if (!w) continue;
        w->move(area.right() - w->frameGeometry().width() - 20, top);
        top += w->frameGeometry().height() + 10;
    }
}

int GraphPlaceholderWindows::screenWidth() {
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().width() * kTwipsPerPixel : 0;
}

int GraphPlaceholderWindows::screenHeight() {
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().height() * kTwipsPerPixel : 0;
}

} // namespace torv
