#include "frm_client_window.h"

#include "panel/frm_client.h"
#include "window_parts.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace torv {

using namespace window_parts;

FrmClientWindow::FrmClientWindow(FrmClient& panel, QWidget* parent)
    : QMainWindow(parent)
    , panel_(panel)
    , refresher_([this] { refresh(); }) {
    setObjectName(QStringLiteral("frmClient"));
    setWindowTitle(panel.f.caption);
    panel_.onModelChanged = [this] { refresher_.request(); };

    auto* central = new QWidget;
    central->setObjectName(QStringLiteral("central"));
    auto* root = new QVBoxLayout(central);
    root->setContentsMargins(12, 8, 12, 8);
    root->setSpacing(8);
    root->addWidget(buildHeader());

    auto* middle = new QHBoxLayout;
    middle->setSpacing(8);
    middle->addWidget(buildWeightCard(), 5);
    middle->addWidget(buildOutputs(), 6);
    middle->addWidget(buildSettings(), 4);
    root->addLayout(middle, 1);
    root->addWidget(buildSampling());
    root->addWidget(buildMessages());
    // Below the size its controls need the panel scrolls; nothing is squeezed or overlaps.
    auto* scroll = scroll_ = new QScrollArea;
    scroll->setObjectName(QStringLiteral("panelScroll"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(central);
    setCentralWidget(scroll);

    setStyleSheet(QStringLiteral(
        "QWidget#central { background: #F3F5F8; }"
        "QFrame[card=\"true\"] { background: white; border: 1px solid #D5DBE3; border-radius: 8px; "
        "}"
        "QGroupBox { background: white; border: 1px solid #D5DBE3; border-radius: 8px;"
        "  margin-top: 14px; padding: 6px 8px 4px 8px; font-weight: 600; color: #3A4656; }"
        "QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 4px; }"
        "QPushButton { border: 1px solid #B9C2CE; border-radius: 5px; padding: 4px 10px;"
        "  background: #E9ECF0; min-height: 20px; }"
        "QPushButton:hover { border-color: #6F8FB7; }"
        "QPushButton:disabled { color: #9AA3AE; border-color: #D5DBE3; }"
        "QPushButton[role=\"output\"] { font-weight: 600; padding: 0px; min-width: 50px;"
        "  max-width: 50px; min-height: 28px; max-height: 28px; }"
        "QPushButton[role=\"primary\"] { font-weight: 700; min-height: 26px; padding: 4px 16px; }"
        "QLineEdit { border: 1px solid #B9C2CE; border-radius: 4px; padding: 2px 5px; }"
        "QLineEdit:disabled { color: #7A8491; }"
        "QLabel[role=\"caption\"] { color: #5B6878; }"
        "QLabel[role=\"value\"] { font-weight: 600; color: #1E2630; }"
        "QLabel[role=\"hint\"] { color: #8A5A00; }"
        "QLabel[role=\"weight\"] { color: #111820; }"
        "QLabel[role=\"logo\"] { color: #2D5B8C; font-size: 16pt; font-weight: 800; "
        "letter-spacing: 2px; }"
        "QLabel[role=\"lamp\"] { border: 1px solid #9AA5B3; border-radius: 13px; min-width: 26px;"
        "  max-width: 26px; min-height: 26px; max-height: 26px; qproperty-alignment: AlignCenter; }"
        "QLabel[role=\"status\"] { font-weight: 600; color: #2D5B8C; }"
        "QPlainTextEdit { font-family: monospace; border: 1px solid #D5DBE3; border-radius: 4px; "
        "}"));

    for (auto& b : bindings_)
        b->push(true);
    orderTabs();

    // The default size fits a 1366x768 screen with a task bar; a smaller screen (or a larger
    // scale) gets what it has room for, and the panel scrolls.
    QSize size(1240, 680);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QSize room = screen->availableSize() - QSize(16, 40); // frame and title bar
        size = size.boundedTo(room);
    }
    resize(size);
    setMinimumSize(QSize(640, 420).boundedTo(size));
}

void FrmClientWindow::orderTabs() {
    // The tab order follows the layout: the controls were made left to right, top to bottom.
    QWidget* previous = nullptr;
    for (const auto& b : bindings_) {
        QWidget* w = b->widget();
        if (!(w->focusPolicy() & Qt::TabFocus)) continue;
        if (previous) setTabOrder(previous, w);
        previous = w;
    }
}

FrmClientWindow::~FrmClientWindow() {
    panel_.onModelChanged = nullptr;
}

void FrmClientWindow::refresh() {
    ++refreshes_;
    setWindowTitle(panel_.f.caption);
    for (auto& b : bindings_)
        b->push();
    const KeptFile& kept = panel_.keptDataFile;
    const QString keptText =
        !kept.path.isEmpty()
            ? QStringLiteral("Previous file kept as %1").arg(QFileInfo(kept.path).fileName())
        : !kept.error.isEmpty()
            ? QStringLiteral("The previous file could not be kept: %1").arg(kept.error)
            : QString();
    // The raw answers, when they open, come into view: the window grows if the screen has
    // room, else the panel scrolls to them.
    const bool rawShown = panel_.f.txtRealTimeInfo.visible;
    if (rawShown && !rawShown_ && isVisible()) {
        QTimer::singleShot(0, this, [this] {
            const int missing =
                scroll_->widget()->sizeHint().height() - scroll_->viewport()->height();
            if (const QScreen* s = screen(); s && missing > 0) {
                const int room = s->availableGeometry().bottom() - frameGeometry().bottom();
                if (room > 0) resize(width(), height() + std::min(room, missing));
            }
            scroll_->ensureWidgetVisible(widgetFor(QStringLiteral("txtRealTimeInfo")), 0, 8);
        });
    }
    rawShown_ = rawShown;
    if (keptFile_->text() != keptText) {
        keptFile_->setText(keptText);
        keptFile_->setToolTip(kept.path);
        keptFile_->setVisible(!keptText.isEmpty());
    }
    if (!panel_.f.focusRequest.isEmpty()) {
        if (QWidget* w = widgetFor(panel_.f.focusRequest); w && w->isEnabled()) w->setFocus();
        panel_.f.focusRequest.clear();
    }
}

QWidget* FrmClientWindow::widgetFor(const QString& controlName) const {
    for (const auto& b : bindings_)
        if (b->control().name == controlName) return b->widget();
    return nullptr;
}

void FrmClientWindow::closeEvent(QCloseEvent* event) {
    panel_.event([this] {
        panel_.layoutLeft = x();
        panel_.layoutTop = y();
        panel_.Form_Unload();
    });
    event->accept();
}

ControlBinding& FrmClientWindow::bind(Control& c, QWidget* w, WidgetKind kind,
                                      const Control* label) {
    bindings_.push_back(std::make_unique<ControlBinding>(c, w, kind, label));
    return *bindings_.back();
}

QWidget* FrmClientWindow::label(Control& c, const QString& role) {
    auto* l = new QLabel;
    if (!role.isEmpty()) l->setProperty("role", role);
    bind(c, l, WidgetKind::Label);
    return l;
}

QWidget* FrmClientWindow::number(Control& c, const QString& widest) {
    auto* l = new NumberLabel(widest);
    l->setProperty("role", QStringLiteral("value"));
    bind(c, l, WidgetKind::Label);
    return l;
}

QWidget* FrmClientWindow::button(Control& c, std::function<void()> click, const QString& role) {
    auto* b = new QPushButton;
    if (!role.isEmpty()) b->setProperty("role", role);
    b->setAutoDefault(false);
    bind(c, b, WidgetKind::Button);
    connect(b, &QPushButton::clicked, this, [this, click] { panel_.event(click); });
    return b;
}

QWidget* FrmClientWindow::checkBox(Control& c) {
    auto* b = new QCheckBox;
    bind(c, b, WidgetKind::CheckBox);
    Control* model = &c;
    connectToggle(b, false, [this, model](bool checked) {
        panel_.event([&] { setValue(*model, checked ? 1 : 0); });
        refresher_.request();
    });
    return b;
}

QWidget* FrmClientWindow::option(Control& c) {
    auto* b = new QRadioButton;
    b->setAutoExclusive(false); // the model decides which option is selected
    bind(c, b, WidgetKind::Option);
    Control* model = &c;
    connectToggle(b, true, [this, model](bool) {
        panel_.event([&] { setValue(*model, 1); });
        refresher_.request();
    });
    return b;
}

QWidget* FrmClientWindow::lineEdit(Control& c, const Control* labelControl,
                                   std::function<void()> change, std::function<void(int)> key,
                                   std::function<void()> focus) {
    auto* e = new QLineEdit;
    bind(c, e, WidgetKind::LineEdit, labelControl);
    Control* model = &c;
    connect(e, &QLineEdit::textEdited, this, [this, model, change](const QString& text) {
        panel_.event([&] {
            model->caption = text;
            if (change) change();
        });
    });
    e->installEventFilter(this);
    hooks_.push_back({e, {model, {}, key, focus, {}}});
    return e;
}

QWidget* FrmClientWindow::lamp(Control& c) {
    auto* l = new QLabel;
    l->setProperty("role", QStringLiteral("lamp"));
    l->setAlignment(Qt::AlignCenter);
    bind(c, l, WidgetKind::Lamp);
    return l;
}

bool FrmClientWindow::eventFilter(QObject* watched, QEvent* event) {
    for (auto& [object, hooks] : hooks_) {
        if (object != watched) continue;
        if (event->type() == QEvent::KeyPress && hooks.key) {
            const int k = static_cast<QKeyEvent*>(event)->key();
            const int ascii = (k == Qt::Key_Return || k == Qt::Key_Enter) ? 13
                              : k == Qt::Key_Escape                       ? 27
                                                                          : 0;
            if (ascii) {
                auto key = hooks.key;
                panel_.event([&] { key(ascii); });
                return true;
            }
        } else if (event->type() == QEvent::FocusIn && hooks.focusIn) {
            auto focus = hooks.focusIn;
            panel_.event([&] { focus(); });
            if (auto* e = qobject_cast<QLineEdit*>(watched))
                QTimer::singleShot(0, e, &QLineEdit::selectAll);
        } else if (event->type() == QEvent::FocusOut && hooks.focusOut) {
            auto focus = hooks.focusOut;
            panel_.event([&] { focus(); });
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

QWidget* FrmClientWindow::buildHeader() {
    FrmClientForm& f = panel_.f;
    auto* bar = card(QStringLiteral("header"));
    auto* h = new QHBoxLayout(bar);
    h->setContentsMargins(12, 6, 12, 6);
    h->setSpacing(8);
    h->addWidget(label(f.lblTxtIP, QStringLiteral("caption")));
    auto* ip = lineEdit(f.TxtIP, &f.lblTxtIP);
    fitEdit(ip, QStringLiteral("000.000.000.000:00000"), 1);
    h->addWidget(ip);
    h->addSpacing(8);
    h->addWidget(label(f.lblTimeOut, QStringLiteral("caption")));
    auto* timeout = lineEdit(f.txtTimeout2, &f.lblTimeOut);
    fitEdit(timeout, QStringLiteral("0000000"), 1);
    h->addWidget(timeout);
    h->addSpacing(8);
    h->addWidget(label(f.lblCommStatus, QStringLiteral("caption")));
    auto* status = number(f.lblCommStatusData, QStringLiteral("Not Connected"));
    status->setProperty("role", QStringLiteral("status"));
    static_cast<QLabel*>(status)->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    h->addWidget(status);
    h->addStretch(1);
    h->addWidget(button(
        f.cmdWeight, [this] { panel_.cmdWeight_Click(); }, QStringLiteral("primary")));
    h->addWidget(button(
        f.cmdStart_Sample, [this] { panel_.cmdStart_Sample_Click(); }, QStringLiteral("primary")));
    h->addWidget(button(
        f.cmdStopSample, [this] { panel_.cmdStopSample_Click(); }, QStringLiteral("primary")));
    h->addSpacing(8);
    h->addWidget(button(f.cmdSaveConfig, [this] {
        panel_.layoutLeft = x();
        panel_.layoutTop = y();
        panel_.layoutWidth = width();
        panel_.layoutHeight = height();
        panel_.cmdSaveConfig_Click();
    }));
    return bar;
}

QWidget* FrmClientWindow::buildWeightCard() {
    FrmClientForm& f = panel_.f;
    auto* box = card(QStringLiteral("weightCard"));
    auto* v = new QVBoxLayout(box);
    v->setContentsMargins(14, 8, 14, 8);
    v->setSpacing(6);

    v->addWidget(label(f.lblWeight, QStringLiteral("caption")));
    auto* weightRow = new QHBoxLayout;
    auto* weight = number(f.lblWT_BRUTTO, QStringLiteral("-0000.000"));
    weight->setProperty("role", QStringLiteral("weight"));
    bindings_.back()->setFontScale(1.75);
    weight->setMinimumHeight(70);
    weightRow->addWidget(weight, 1);
    auto* unit = label(f.lblUnitNameWGT, QStringLiteral("value"));
    QFont uf = unit->font();
    uf.setPointSize(16);
    unit->setFont(uf);
    unit->setMinimumWidth(40);
    weightRow->addWidget(unit);
    v->addLayout(weightRow);

    auto* tareRow = new QHBoxLayout;
    tareRow->addWidget(label(f.lblTare, QStringLiteral("caption")));
    auto* tare = number(f.lblTareData, QStringLiteral("-0000.000"));
    bindings_.back()->setFontScale(0.6);
    tareRow->addWidget(tare, 1);
    tareRow->addWidget(label(f.lblUnitNameTare, QStringLiteral("value")));
    tareRow->addSpacing(10);
    tareRow->addWidget(checkBox(f.chkTare));
    v->addLayout(tareRow);

    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setStyleSheet(QStringLiteral("color: #E1E6EC;"));
    v->addWidget(line);

    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    grid->addWidget(label(f.lblA2D, QStringLiteral("caption")), 0, 0);
    grid->addWidget(number(f.lblA2D_Data, QStringLiteral("-0000000")), 0, 1);
    grid->addWidget(label(f.LbLMaxWGT, QStringLiteral("caption")), 1, 0);
    grid->addWidget(number(f.LbLMaxWGTdata, QStringLiteral("0000000")), 1, 1);
    grid->setColumnStretch(2, 1);
    v->addLayout(grid);

    auto* single = new QHBoxLayout;
    single->addWidget(checkBox(f.ChkSetPoint));
    auto* shape = new QFrame;
    shape->setFixedSize(12, 12);
    bind(f.ShaSetPoint, shape, WidgetKind::Shape);
    f.ShaSetPoint.backColor = color::Red;
    single->addWidget(shape);
    auto* sp = lineEdit(
        f.txtSetPoint, &f.ChkSetPoint, [this] { panel_.txtSetPoint_Change(); },
        [this](int k) { panel_.txtSetPoint_KeyPress(k); },
        [this] { panel_.txtSetPoint_GotFocus(); });
    fitEdit(sp, QStringLiteral("00000.000"), 1);
    single->addWidget(sp);
    single->addStretch(1);
    v->addLayout(single);
    auto* spNote = label(f.LbLSetPoint, QStringLiteral("caption"));
    static_cast<QLabel*>(spNote)->setWordWrap(true);
    v->addWidget(spNote);
    v->addStretch(1);
    v->addWidget(button(f.cmdShowRTGraph, [this] { panel_.cmdShowRTGraph_Click(); }));
    return box;
}

QWidget* FrmClientWindow::buildOutputs() {
    FrmClientForm& f = panel_.f;
    auto* column = new QWidget;
    auto* v = new QVBoxLayout(column);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(8);

    auto* out = frameBox(column);
    bind(f.FraOut, out, WidgetKind::Frame);
    auto* og = new QGridLayout(out);
    og->setHorizontalSpacing(6);
    og->setVerticalSpacing(6);
    for (int k = 1; k <= 10; ++k) {
        auto* b = button(
            f.cmdSetOutOn[k], [this, k] { panel_.cmdSetOutOn_Click(k); }, QStringLiteral("output"));
        og->addWidget(b, (k - 1) / 5, (k - 1) % 5);
    }
    auto* spGrid = new QGridLayout;
    spGrid->setHorizontalSpacing(10);
    spGrid->setVerticalSpacing(6);
    for (int k = 11; k <= 14; ++k) {
        const int row = k - 11;
        spGrid->setRowMinimumHeight(row, 30);
        spGrid->addWidget(button(
                              f.cmdSetOutOn[k], [this, k] { panel_.cmdSetOutOn_Click(k); },
                              QStringLiteral("output")),
                          row, 0);
        // The hint label lies over the check box while the box cannot be used.
        auto* cell = new QWidget;
        auto* stack = new QStackedLayout(cell);
        stack->setStackingMode(QStackedLayout::StackAll);
        auto* lbl = label(f.LBL_SP[k], QStringLiteral("hint"));
        stack->addWidget(lbl);
        stack->addWidget(checkBox(f.ChkSetPointNew[k]));
        lbl->raise();
        cell->setMinimumWidth(cell->fontMetrics().horizontalAdvance(QStringLiteral("SP4")) + 40);
        spGrid->addWidget(cell, row, 1);
        auto* edit = lineEdit(
            f.txtSetPointNew[k], &f.ChkSetPointNew[k],
            [this, k] { panel_.txtSetPointNew_Change(k); },
            [this, k](int key) { panel_.txtSetPointNew_KeyPress(k, key); },
            [this, k] { panel_.txtSetPointNew_GotFocus(k); });
        fitEdit(edit, QStringLiteral("00000.000"));
        spGrid->addWidget(edit, row, 2);
    }
    spGrid->setColumnStretch(3, 1);
    og->addLayout(spGrid, 2, 0, 1, 5);
    og->addWidget(checkBox(f.ChkStartOutStatus), 3, 0, 1, 5);
    v->addWidget(out);

    auto* inp = frameBox(column);
    bind(f.FraInp, inp, WidgetKind::Frame);
    // The lamps, and under them the hint that stands for them while they are hidden: a line
    // or two across the frame.
    auto* iv = new QVBoxLayout(inp);
    iv->setSpacing(4);
    auto* ih = new QHBoxLayout;
    ih->setSpacing(6);
    ih->addWidget(label(f.lblInputs, QStringLiteral("caption")));
    for (int i = 1; i <= 8; ++i)
        ih->addWidget(lamp(f.lblInpNum[i]));
    ih->addStretch(1);
    iv->addLayout(ih);
    auto* hint = label(f.lblShowInpStatus, QStringLiteral("hint"));
    static_cast<QLabel*>(hint)->setWordWrap(true);
    iv->addWidget(hint);
    v->addWidget(inp);
    v->addStretch(1);
    return column;
}

} // namespace torv
