#include "frm_graph_window.h"

#include "base/platform.h"
#include "graph/graph_store.h"
#include "picture_widget.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

namespace torv {

namespace {

int px(double twips) {
    return static_cast<int>(std::lround(twips / TwipsPerPixel));
}

// A pop-up picture: the picture with a thin border.
class PopupPicture : public PictureWidget {
public:
    using PictureWidget::PictureWidget;

protected:
    void paintEvent(QPaintEvent* e) override {
        PictureWidget::paintEvent(e);
        QPainter p(this);
        p.setPen(QColor(0x80, 0x80, 0x80));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

// The auxiliary window that shows the plot position reported by the scroll buttons.
QPointer<QWidget>& auxiliaryWindow() {
    static QPointer<QWidget> window;
    return window;
}

void refreshAuxiliaryWindow() {
    GraphAuxiliaryForm& form = graphAuxiliaryForm();
    if (!form.shown) return;
    QPointer<QWidget>& window = auxiliaryWindow();
    if (!window) {
        window = new QWidget(nullptr, Qt::Tool);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->setAttribute(Qt::WA_QuitOnClose, false);
        window->setAttribute(Qt::WA_ShowWithoutActivating);
        window->setWindowTitle(form.caption);
        auto* h = new QHBoxLayout(window);
        auto* text = new QLineEdit;
        text->setObjectName(form.Text1.name);
        text->setReadOnly(true);
        text->setMinimumWidth(120);
        h->addWidget(text);
        window->show();
    }
    if (auto* text = window->findChild<QLineEdit*>(form.Text1.name))
        if (text->text() != form.Text1.caption) text->setText(form.Text1.caption);
}

int vbKeyCode(int qtKey) {
    switch (qtKey) {
    case Qt::Key_Left:
        return 37;
    case Qt::Key_Up:
        return 38;
    case Qt::Key_Right:
        return 39;
    case Qt::Key_Down:
        return 40;
    default:
        return 0;
    }
}

} // namespace

FrmGraphWindow::FrmGraphWindow(GraphStore& store, int channel, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , graph_(store, channel)
    , coalescer_([this] { refresh(); }) {
    setObjectName(QStringLiteral("frmGraph"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false); // the program ends with the main panel
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(graph_.f.caption);
    graph_.onModelChanged = [this] { scheduleRefresh(); };
    // The graph asks to be unloaded from inside a sampling tick: close once that has returned.
    graph_.onUnloadWindow = [this] { QTimer::singleShot(0, this, [this] { close(); }); };

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(10, 10, 10, 10);
    root->setSpacing(8);
    root->addWidget(buildPlotArea(), 0, Qt::AlignLeft);
    root->addWidget(buildReadings());
    root->addWidget(buildCommands());
    root->addWidget(buildStatistics());
    root->addStretch(1);

    setStyleSheet(QStringLiteral(
        "QWidget#frmGraph { background: #F3F5F8; }"
        "QWidget#plotArea { background: white; border: 1px solid #C8CFD8; }"
        "QPushButton, QToolButton { border: 1px solid #B9C2CE; border-radius: 4px;"
        "  padding: 3px 9px; background: #E9ECF0; }"
        "QPushButton:hover, QToolButton:hover { border-color: #6F8FB7; }"
        "QLineEdit { border: 1px solid #B9C2CE; border-radius: 3px; padding: 1px 4px; }"
        "QLabel[role=\"caption\"] { color: #5B6878; }"));

    for (auto& b : bindings_)
        b->push(true);
    placePictures();
    resize(px(FrmGraph::WindowWidth), px(graph_.f.windowHeight));
}

FrmGraphWindow::~FrmGraphWindow() {
    graph_.onModelChanged = nullptr;
    graph_.onUnloadWindow = nullptr;
}

ControlBinding& FrmGraphWindow::bind(Control& c, QWidget* w, WidgetKind kind,
                                     const Control* label) {
    bindings_.push_back(std::make_unique<ControlBinding>(c, w, kind, label));
    return *bindings_.back();
}

QWidget* FrmGraphWindow::label(Control& c) {
    auto* l = new QLabel;
    l->setProperty("role", QStringLiteral("caption"));
    bind(c, l, WidgetKind::Label);
    return l;
}

QWidget* FrmGraphWindow::box(Control& c, int width, const Control* labelControl) {
    auto* e = new QLineEdit;
    e->setReadOnly(true);
    e->setFocusPolicy(Qt::ClickFocus);
    e->setFixedWidth(width);
    bind(c, e, WidgetKind::LineEdit, labelControl);
    return e;
}

QWidget* FrmGraphWindow::button(Control& c, std::function<void()> click, const QString& text) {
    QAbstractButton* b = nullptr;
    if (text.isEmpty()) {
        auto* pb = new QPushButton;
        pb->setAutoDefault(false);
        b = pb;
    } else {
        // A button without a caption of its own: an arrow.
        auto* tb = new QToolButton;
        tb->setArrowType(text == QStringLiteral("<") ? Qt::LeftArrow : Qt::RightArrow);
        b = tb;
    }
    bind(c, b, WidgetKind::Button);
    if (click) connect(b, &QAbstractButton::clicked, this, [this, click] { graph_.event(click); });
    return b;
}

PictureWidget* FrmGraphWindow::picture(Picture& p, QWidget* parent, bool framed) {
    PictureWidget* w = framed ? new PopupPicture(p, parent) : new PictureWidget(p, parent);
    pictures_.emplace_back(w, &p);
    return w;
}

QWidget* FrmGraphWindow::buildPlotArea() {
    FrmGraphForm& f = graph_.f;
    plotArea_ = new QWidget;
    plotArea_->setObjectName(QStringLiteral("plotArea"));
    plotArea_->setAttribute(Qt::WA_StyledBackground);
    plotArea_->setFixedSize(px(f.pctYscale.width + f.Frame1.width) + 2,
                            px(f.Frame1.height + f.pctXscale.height) + 2);

    picture(f.pctYscale, plotArea_)->move(1, 1);
    frame_ = new QWidget(plotArea_);
    frame_->setObjectName(f.Frame1.name);
    frame_->setGeometry(px(f.Frame1.left) + 1, px(f.Frame1.top) + 1, px(f.Frame1.width),
                        px(f.Frame1.height));
    plot_ = picture(f.pctGraph, frame_);
    plot_->setMouseTracking(true);
    plot_->setFocusPolicy(Qt::ClickFocus);
    plot_->setToolTip(f.pctGraph.toolTip);
    plot_->setContextMenuPolicy(Qt::PreventContextMenu);
    plot_->installEventFilter(this);

    marker_ = new QWidget(plot_);
    marker_->setObjectName(f.ShpPoint.name);
    marker_->setAttribute(Qt::WA_StyledBackground);
    marker_->setAttribute(Qt::WA_TransparentForMouseEvents);
    marker_->setStyleSheet(
        QStringLiteral("#ShpPoint { border: 2px solid #E53935; border-radius: 5px; }"));
    marker_->hide();

    picture(f.pctA2D, frame_, true);
    picture(f.pctTime, frame_, true);

    xFrame_ = new QWidget(plotArea_);
    xFrame_->setGeometry(px(f.Frame1.left) + 1, px(f.Frame1.top + f.Frame1.height) + 1,
                         px(f.Frame1.width), px(f.pctXscale.height));
    picture(f.pctXscale, xFrame_);
    return plotArea_;
}

namespace {
QLabel* windowCaption(const QString& text) {
    auto* l = new QLabel(text);
    l->setProperty("role", QStringLiteral("caption"));
    return l;
}
} // namespace

QWidget* FrmGraphWindow::buildReadings() {
    FrmGraphForm& f = graph_.f;
    auto* w = new QWidget;
    auto* g = new QGridLayout(w);
    g->setContentsMargins(0, 0, 0, 0);
    g->setHorizontalSpacing(6);
    g->setVerticalSpacing(6);

    g->addWidget(label(f.lblCur), 0, 0);
    g->addWidget(box(f.txtCur, 100, &f.lblCur), 0, 1);
    g->addWidget(windowCaption(QStringLiteral("Min")), 0, 2, Qt::AlignRight);
    g->addWidget(box(f.TxtMin, 70), 0, 3);
    g->addWidget(windowCaption(QStringLiteral("Max")), 0, 4, Qt::AlignRight);
    g->addWidget(box(f.txtMax, 70), 0, 5);
    g->addWidget(windowCaption(QStringLiteral("Scale")), 0, 6, Qt::AlignRight);
    auto* range = new QHBoxLayout;
    range->setSpacing(4);
    range->addWidget(box(f.txtMinRange, 66));
    range->addWidget(box(f.txtMaxRange, 66));
    g->addLayout(range, 0, 7);
    g->addWidget(label(f.lblTime), 0, 8, Qt::AlignRight);
    g->addWidget(box(f.txtTime, 70, &f.lblTime), 0, 9);

    g->addWidget(label(f.lblCurIndex), 1, 0);
    g->addWidget(box(f.txtCurIndex, 100, &f.lblCurIndex), 1, 1);
    g->addWidget(label(f.LblLeftIndex), 1, 2, Qt::AlignRight);
    g->addWidget(box(f.txtLeftIndex, 70, &f.LblLeftIndex), 1, 3);
    g->addWidget(label(f.lblRightIndex), 1, 4, Qt::AlignRight);
    g->addWidget(box(f.txtRightIndex, 70, &f.lblRightIndex), 1, 5);
    g->addWidget(label(f.lblLeftpct), 1, 6, Qt::AlignRight);
    g->addWidget(box(f.txtLeftpct, 66, &f.lblLeftpct), 1, 7, Qt::AlignLeft);
    g->addWidget(label(f.lblMinmaxCouner), 1, 8, Qt::AlignRight);
    g->addWidget(box(f.txtMinMaxCouner, 70, &f.lblMinmaxCouner), 1, 9);
    g->setColumnStretch(10, 1);
    return w;
}

QWidget* FrmGraphWindow::buildCommands() {
    FrmGraphForm& f = graph_.f;
    auto* w = new QWidget;
    auto* v = new QVBoxLayout(w);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(6);

    auto* scales = new QHBoxLayout;
    scales->setSpacing(6);
    scales->addWidget(label(f.lblBandRadius));
    auto* radius = new QLabel(QString::number(graph_.store().bandRadius));
    radius->setObjectName(QStringLiteral("bandRadiusValue"));
    scales->addWidget(radius);
    scales->addSpacing(8);
    scales->addWidget(windowCaption(QStringLiteral("MinDif")));
    scales->addWidget(box(f.txtMinDif, 50));
    // The up-down control: two small arrows beside the box.
    for (int step : {1, -1}) {
        auto* arrow = new QToolButton;
        arrow->setObjectName(f.UpDnMinDif.name +
                             (step > 0 ? QStringLiteral("_up") : QStringLiteral("_down")));
        arrow->setArrowType(step > 0 ? Qt::UpArrow : Qt::DownArrow);
        arrow->setFixedSize(20, 20);
        arrow->setStyleSheet(QStringLiteral("padding: 0px;"));
        connect(arrow, &QToolButton::clicked, this, [this, step] {
            graph_.event(
                [&] { graph_.UpDnMinDif_Change(std::max(0, graph_.f.UpDnMinDif.value + step)); });
        });
        scales->addWidget(arrow);
    }
    scales->addSpacing(12);
    scales->addWidget(windowCaption(QStringLiteral("Number Type")));
    for (int i = 1; i <= 2; ++i) {
        auto* o = new QRadioButton;
        o->setAutoExclusive(false);
        bind(f.OptValueType[i], o, WidgetKind::Option);
        connect(o, &QRadioButton::clicked, this,
                [this, i] { graph_.event([&] { graph_.OptValueType_Click(i); }); });
        scales->addWidget(o);
    }
    scales->addSpacing(12);
    auto* ySteps = static_cast<QLineEdit*>(box(f.txtYsteps, 36));
    ySteps->setReadOnly(false);
    ySteps->setToolTip(QStringLiteral("Divisions of the value scale"));
    connect(ySteps, &QLineEdit::textEdited, this, [this](const QString& t) {
        graph_.event([&] {
            graph_.f.txtYsteps.caption = t;
            graph_.txtYsteps_Change();
        });
    });
    scales->addWidget(ySteps);
    scales->addWidget(button(f.cbDrawYscale, [this] { graph_.cbDrawYscale_Click(); }));
    auto* xSteps = static_cast<QLineEdit*>(box(f.TxtXsteps, 36));
    xSteps->setReadOnly(false);
    xSteps->setToolTip(QStringLiteral("Divisions of the time scale"));
    connect(xSteps, &QLineEdit::textEdited, this,
            [this](const QString& t) { graph_.f.TxtXsteps.caption = t; });
    scales->addWidget(xSteps);
    scales->addWidget(button(f.cbDrawXscale, [this] { graph_.cbDrawXscale_Click(); }));
    scales->addWidget(box(f.txtTimerIntrvl, 44));
    scales->addStretch(1);
    v->addLayout(scales);

    auto* h = new QHBoxLayout;
    h->setSpacing(6);
    h->addWidget(button(
        f.cmndLt, [this] { graph_.cmndLt_Click(); }, QStringLiteral("<")));
    h->addWidget(button(
        f.cmndRt, [this] { graph_.cmndRt_Click(); }, QStringLiteral(">")));
    h->addWidget(button(f.cmndCpyG2toG, [this] { graph_.cmndCpyG2toG_Click(); }));
    h->addWidget(button(f.cmndDoGraph, {}));
    auto* slider = new QSlider(Qt::Horizontal); // SldrValue: placed, with no handler of its own
    slider->setObjectName(f.SldrValue.name);
    slider->setFixedWidth(120);
    h->addWidget(slider);
    h->addStretch(1);
    h->addWidget(button(f.cmdLoad, {}));
    h->addWidget(button(f.cmdSave, {}));
    h->addWidget(button(f.cmdStop, {}));
    h->addWidget(button(f.cmdReset, {}));
    h->addSpacing(12);
    h->addWidget(button(f.cmdNewStart, [this] { graph_.cmdNewStart_Click(); }));
    h->addWidget(button(f.cmdMore, [this] { graph_.cmdMore_Click(); }));
    v->addLayout(h);
    return w;
}

QWidget* FrmGraphWindow::buildStatistics() {
    FrmGraphForm& f = graph_.f;
    auto* w = new QWidget;
    w->setObjectName(QStringLiteral("statistics"));
    auto* g = new QGridLayout(w);
    g->setContentsMargins(0, 0, 0, 0);
    g->setHorizontalSpacing(6);
    g->addWidget(label(f.lblMin), 0, 0);
    g->addWidget(box(f.TxtMinReading, 80, &f.lblMin), 0, 1);
    g->addWidget(label(f.lblMinIndex), 0, 2);
    g->addWidget(box(f.TxtMinTime, 80, &f.lblMinIndex), 0, 3);
    g->addWidget(box(f.txtMinIndex, 70), 0, 4);
    g->addWidget(label(f.lblMax), 1, 0);
    g->addWidget(box(f.TxtMaxReading, 80, &f.lblMax), 1, 1);
    g->addWidget(label(f.lblMaxIndex), 1, 2);
    g->addWidget(box(f.TxtMaxTime, 80, &f.lblMaxIndex), 1, 3);
    g->addWidget(box(f.txtMaxIndex, 70), 1, 4);
    QFont mono(f.txtGainBiasResolCaptionGraph.fontName);
    mono.setStyleHint(QFont::TypeWriter);
    mono.setFamilies({f.txtGainBiasResolCaptionGraph.fontName, QStringLiteral("monospace")});
    for (Control* c : {&f.txtGainBiasResolCaptionGraph, &f.txtGainBiasResolDataGraph}) {
        auto* e = box(*c, 330);
        e->setFont(mono);
        g->addWidget(e, c == &f.txtGainBiasResolCaptionGraph ? 0 : 1, 5);
    }
    g->setColumnStretch(6, 1);
    w->setVisible(false);
    return w;
}

void FrmGraphWindow::placePictures() {
    for (auto& [w, pic] : pictures_) {
        const QRect r(px(pic->left), px(pic->top), px(pic->width), px(pic->height));
        if (w->geometry() != r) w->setGeometry(r);
        w->refresh();
        if (w->isVisibleTo(w->parentWidget()) != pic->visible) w->setVisible(pic->visible);
    }
    for (auto& [w, pic] : pictures_)
        if (pic == &graph_.f.pctA2D || pic == &graph_.f.pctTime) w->raise();
    const Control& shp = graph_.f.ShpPoint;
    const QRect m(px(shp.left), px(shp.top), std::max(6, px(shp.width)),
                  std::max(6, px(shp.height)));
    if (marker_->geometry() != m) marker_->setGeometry(m);
    if (marker_->isVisibleTo(plot_) != shp.visible) marker_->setVisible(shp.visible);
}

void FrmGraphWindow::applyWindowState() {
    const FrmGraphForm& f = graph_.f;
    if (windowTitle() != f.caption) setWindowTitle(f.caption);
    if (topMost_ != f.topMost) {
        topMost_ = f.topMost;
        const bool shown = isVisible();
        setWindowFlag(Qt::WindowStaysOnTopHint, topMost_);
        if (shown) show(); // changing the flag hides the window
    }
    if (shownHeight_ != f.windowHeight) {
        shownHeight_ = f.windowHeight;
        resize(width(), px(f.windowHeight));
    }
    if (shownLeft_ != f.windowLeft || shownTop_ != f.windowTop) {
        shownLeft_ = f.windowLeft;
        shownTop_ = f.windowTop;
        move(px(f.windowLeft), px(f.windowTop));
    }
    if (auto* stats = findChild<QWidget*>(QStringLiteral("statistics")))
        if (stats->isVisibleTo(this) != f.TxtMinReading.visible)
            stats->setVisible(f.TxtMinReading.visible);
}

void FrmGraphWindow::refresh() {
    ++refreshes_;
    for (auto& b : bindings_)
        b->push();
    placePictures();
    applyWindowState();
    refreshAuxiliaryWindow();
}

QWidget* FrmGraphWindow::widgetFor(const QString& controlName) const {
    for (const auto& b : bindings_)
        if (b->control().name == controlName) return b->widget();
    for (const auto& [w, pic] : pictures_)
        if (pic->name == controlName) return w;
    if (controlName == graph_.f.ShpPoint.name) return marker_;
    return nullptr;
}

QImage FrmGraphWindow::plotImage() {
    coalescer_.flush();
    refresh();
    return plotArea_->grab().toImage();
}

bool FrmGraphWindow::saveImage(const QString& path) {
    return plotImage().save(path, "PNG");
}

void FrmGraphWindow::showContextMenu(const QPoint& globalPos) {
    // Taken at the click, before anything is refreshed: exactly what the operator sees.
    const QImage image = plotArea_->grab().toImage();
    QMenu menu(this);
    QAction* save = menu.addAction(QStringLiteral("Save image..."));
    if (menu.exec(globalPos) != save) return;
    QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save image"),
                                                QStringLiteral("graph.png"),
                                                QStringLiteral("PNG image (*.png)"));
    if (path.isEmpty()) return;
    if (!path.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive)) path += QStringLiteral(".png");
    if (!image.save(path, "PNG"))
        graph_.store().platform().messageBox(QStringLiteral("The image could not be saved to ") +
                                             path);
}

bool FrmGraphWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == plot_) {
        switch (event->type()) {
        case QEvent::MouseMove: {
            const QPointF p = static_cast<QMouseEvent*>(event)->position();
            graph_.pctGraph_MouseMove(p.x() * TwipsPerPixel, p.y() * TwipsPerPixel);
            break;
        }
        case QEvent::MouseButtonPress: {
            auto* me = static_cast<QMouseEvent*>(event);
            const QPointF p = me->position();
            if (me->button() == Qt::RightButton) {
                showContextMenu(me->globalPosition().toPoint());
                return true;
            }
            if (me->button() == Qt::LeftButton) {
                plot_->setFocus();
                graph_.event([&] {
                    graph_.pctGraph_MouseMove(p.x() * TwipsPerPixel, p.y() * TwipsPerPixel);
                    graph_.pctGraph_MouseDown();
                });
                return true;
            }
            break;
        }
        case QEvent::KeyPress: {
            const int code = vbKeyCode(static_cast<QKeyEvent*>(event)->key());
            if (code) {
                graph_.event([&] { graph_.pctGraph_KeyDown(code); });
                return true;
            }
            break;
        }
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FrmGraphWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    graph_.event([&] { graph_.Form_DblClick(); });
    event->accept();
}

void FrmGraphWindow::closeEvent(QCloseEvent* event) {
    graph_.event([&] { graph_.Form_Unload(); });
    event->accept();
}

// ---- The factory -------------------------------------------------------------------------------

FrmGraphWindows::FrmGraphWindows(GraphStore& store)
    : store_(store) {}

FrmGraphWindows::~FrmGraphWindows() {
    for (auto& w : windows_)
        delete w.data();
}

GraphView* FrmGraphWindows::open(int channel) {
    if (channel < 0 || channel >= kGraphChannels) return nullptr;
    if (windows_[static_cast<std::size_t>(channel)])
        windows_[static_cast<std::size_t>(channel)]->close();
    auto* w = new FrmGraphWindow(store_, channel);
    windows_[static_cast<std::size_t>(channel)] = w;
    w->graph().Form_Load();
    w->refresh();
    w->show();
    return &w->graph();
}

void FrmGraphWindows::place(GraphView* const (&windows)[4]) {
    // From the top right of the screen, each further window a little lower and to the left.
    int shift = 0;
    for (int ch = 0; ch < kGraphChannels; ++ch) {
        FrmGraphWindow* w = window(ch);
        if (!w || !windows[ch]) continue;
        FrmGraphForm& f = w->graph().f;
        f.windowLeft = std::max(0, screenWidth() - f.windowWidth - 300 - shift);
        f.windowTop = 600 + shift;
        shift += 600;
        w->refresh();
    }
}

int FrmGraphWindows::screenWidth() {
    const QScreen* s = QGuiApplication::primaryScreen();
    return s ? static_cast<int>(s->availableGeometry().width() * TwipsPerPixel) : 0;
}

int FrmGraphWindows::screenHeight() {
    const QScreen* s = QGuiApplication::primaryScreen();
    return s ? static_cast<int>(s->availableGeometry().height() * TwipsPerPixel) : 0;
}

FrmGraphWindow* FrmGraphWindows::window(int channel) const {
    if (channel < 0 || channel >= kGraphChannels) return nullptr;
    return windows_[static_cast<std::size_t>(channel)].data();
}

} // namespace torv
