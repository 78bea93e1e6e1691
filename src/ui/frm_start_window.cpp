#include "frm_start_window.h"

#include "graph/frm_start.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

namespace torv {

namespace {

// How a text box looks on this form: white while its entry is valid, tinted when rejected.
QString editStyle(const Control& c) {
    if (c.backColor == FrmStart::InvalidColor)
        return QStringLiteral("#%1 { background: #FCE8E6; border: 1px solid #D93025; }")
            .arg(c.name);
    if (!c.enabled) return QStringLiteral("#%1 { background: #F1F3F6; }").arg(c.name);
    return QStringLiteral("#%1 { background: white; }").arg(c.name);
}

QLabel* captionLabel(QLabel* l) {
    l->setProperty("role", QStringLiteral("caption"));
    return l;
}

} // namespace

FrmStartWindow::FrmStartWindow(FrmStart& form, QWidget* parent)
    : QDialog(parent)
    , form_(form)
    , refresher_([this] { refresh(); }) {
    setObjectName(QStringLiteral("FrmStart"));
    setWindowTitle(form_.f.caption);
    setModal(false);
    setAttribute(Qt::WA_QuitOnClose, false); // the program ends with the main panel
    form_.onModelChanged = [this] { refresher_.request(); };
    form_.onShow = [this] {
        refresh();
        show();
        raise();
        activateWindow();
    };
    form_.onUnload = [this] { hide(); };

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(14, 12, 14, 12);
    root->setSpacing(10);
    root->addWidget(buildCard());
    auto* choices = new QHBoxLayout;
    choices->setSpacing(10);
    choices->addWidget(buildChannels(), 3);
    choices->addWidget(buildNumberType(), 2);
    root->addLayout(choices);
    root->addWidget(buildParameters());

    problem_ = new QLabel;
    problem_->setObjectName(QStringLiteral("problem"));
    problem_->setWordWrap(true);
    root->addWidget(problem_);

    auto* commands = new QHBoxLayout;
    commands->addStretch(1);
    FrmStartForm& f = form_.f;
    auto* save = new QPushButton;
    bind(f.cmdSaveCnfg, save, WidgetKind::Button);
    connect(save, &QPushButton::clicked, this,
            [this] { form_.event([this] { form_.cmdSaveCnfg_Click(); }); });
    auto* show = new QPushButton;
    show->setProperty("role", QStringLiteral("primary"));
    bind(f.CmdShowGraph, show, WidgetKind::Button);
    connect(show, &QPushButton::clicked, this,
            [this] { form_.event([this] { form_.CmdShowGraph_Click(); }); });
    for (QPushButton* b : {save, show})
        b->setAutoDefault(false);
    commands->addWidget(save);
    commands->addWidget(show);
    root->addLayout(commands);

    setStyleSheet(QStringLiteral(
        "QDialog#FrmStart { background: #F3F5F8; }"
        "QGroupBox { background: white; border: 1px solid #D5DBE3; border-radius: 8px;"
        "  margin-top: 14px; padding: 10px 10px 8px 10px; font-weight: 600; color: #3A4656; }"
        "QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 4px; }"
        "QGroupBox QLabel, QGroupBox QCheckBox, QGroupBox QRadioButton { font-weight: normal; }"
        "QLabel[role=\"caption\"] { color: #5B6878; }"
        "QLabel[role=\"module\"] { color: #2D5B8C; font-weight: 700; }"
        "QLineEdit { border: 1px solid #B9C2CE; border-radius: 4px; padding: 2px 5px; }"
        "QLineEdit:disabled { color: #5B6878; }"
        "QCheckBox:disabled { color: #9AA3AE; }"
        "QPushButton { border: 1px solid #B9C2CE; border-radius: 5px; padding: 4px 14px;"
        "  background: #E9ECF0; min-height: 22px; }"
        "QPushButton:hover { border-color: #6F8FB7; }"
        "QPushButton:disabled { color: #9AA3AE; border-color: #D5DBE3; }"
        "QPushButton[role=\"primary\"] { font-weight: 700; }"
        "QLabel#problem { color: #B3261E; min-height: 18px; }"));

    refresh();
    setMinimumWidth(520);
}

FrmStartWindow::~FrmStartWindow() {
    form_.onModelChanged = nullptr;
    form_.onShow = nullptr;
    form_.onUnload = nullptr;
}

void FrmStartWindow::open() {
    if (form_.loaded()) {
        show();
        raise();
        activateWindow();
        return;
    }
    form_.event([this] { form_.Form_Load(); });
    refresh();
}

void FrmStartWindow::refresh() {
    setWindowTitle(form_.f.caption);
    for (auto& b : bindings_) {
        b->push();
        if (b->kind() == WidgetKind::LineEdit) {
            const QString css = editStyle(b->control());
            if (b->widget()->styleSheet() != css) b->widget()->setStyleSheet(css);
        }
    }
    showProblems();
}

QWidget* FrmStartWindow::widgetFor(const QString& controlName) const {
    for (const auto& b : bindings_)
        if (b->control().name == controlName) return b->widget();
    return nullptr;
}

QString FrmStartWindow::problemText() const {
    return problem_->text();
}

void FrmStartWindow::showProblems() {
    for (const auto& b : bindings_) {
        const Control& c = b->control();
        if (b->kind() != WidgetKind::LineEdit || c.backColor != FrmStart::InvalidColor) continue;
        const QString name = b->widget()->accessibleDescription();
        problem_->setText(name + QStringLiteral(": ") + c.toolTip);
        return;
    }
    problem_->setText(QString());
}

void FrmStartWindow::closeEvent(QCloseEvent* event) {
    form_.event([this] { form_.unload(); });
    event->accept();
}

QWidget* FrmStartWindow::bind(Control& c, QWidget* w, WidgetKind kind, const Control* label) {
    bindings_.push_back(std::make_unique<ControlBinding>(c, w, kind, label));
    return w;
}

QWidget* FrmStartWindow::lineEdit(Control& c, const Control* label) {
    auto* e = new QLineEdit;
    bind(c, e, WidgetKind::LineEdit, label);
    Control* model = &c;
    connect(e, &QLineEdit::textEdited, this, [this, model](const QString& text) {
        form_.event([&] {
            model->caption = text;
            form_.txt_Change();
        });
    });
    return e;
}

QWidget* FrmStartWindow::buildCard() {
    FrmStartForm& f = form_.f;
    auto* box = new QGroupBox(QStringLiteral("Card"));
    auto* g = new QGridLayout(box);
    g->setHorizontalSpacing(8);
    g->addWidget(
        captionLabel(static_cast<QLabel*>(bind(f.lblMaster, new QLabel, WidgetKind::Label))), 0, 0);
    g->addWidget(lineEdit(f.txtMaster, &f.lblMaster), 0, 1, 1, 3);
    g->addWidget(
        captionLabel(static_cast<QLabel*>(bind(f.lblModule, new QLabel, WidgetKind::Label))), 1, 0);
    g->addWidget(lineEdit(f.txtModule, &f.lblModule), 1, 1, 1, 2);
    auto* module = static_cast<QLabel*>(bind(f.lblModuleName, new QLabel, WidgetKind::Label));
    module->setProperty("role", QStringLiteral("module"));
    g->addWidget(module, 1, 3);
    g->addWidget(
        captionLabel(static_cast<QLabel*>(bind(f.lblCardName, new QLabel, WidgetKind::Label))), 2,
        0);
    auto* left = lineEdit(f.txtLeftCardName, &f.lblCardName);
    left->setMaximumWidth(60);
    auto* number = lineEdit(f.txtCardName, &f.lblCardName);
    auto* right = lineEdit(f.txtRightCardName, &f.lblCardName);
    right->setMaximumWidth(90);
    g->addWidget(left, 2, 1);
    g->addWidget(number, 2, 2);
    g->addWidget(right, 2, 3);
    g->setColumnStretch(2, 1);
    return box;
}

QWidget* FrmStartWindow::buildChannels() {
    FrmStartForm& f = form_.f;
    auto* box = new QGroupBox;
    bind(f.FraChannels, box, WidgetKind::Frame);
    auto* g = new QGridLayout(box);
    for (int ch = 0; ch <= 3; ++ch) {
        auto* c = new QCheckBox;
        bind(f.cckChan[ch], c, WidgetKind::CheckBox);
        Control* model = &f.cckChan[ch];
        connectToggle(c, false, [this, model](bool checked) {
            form_.event([&] { setValue(*model, checked ? 1 : 0); });
            refresher_.request();
        });
        g->addWidget(c, ch / 2, ch % 2);
    }
    return box;
}

QWidget* FrmStartWindow::buildParameters() {
    FrmStartForm& f = form_.f;
    auto* box = new QGroupBox(QStringLiteral("Graph parameters"));
    auto* g = new QGridLayout(box);
    g->setHorizontalSpacing(10);
    const std::pair<Control*, Control*> rows[] = {
        {&f.lblNumberOfPoints, &f.txtNumberOfPoints},
        {&f.lblSampling, &f.txtSampling},
        {&f.lblProcentMinMax, &f.txtProcentMinMax},
        {&f.lblMinMaxMiss, &f.txtMinMaxMiss},
        {&f.lblMnMxTime, &f.txtMnMxTime},
        {&f.lblBandRadius, &f.txtBandRadius},
        {&f.lblRound, &f.txtRound},
        {&f.lblTimeDivision, &f.txtTimeDivision},
    };
    int i = 0;
    for (const auto& [label, text] : rows) {
        const int row = i % 4, column = (i / 4) * 3;
        auto* l = captionLabel(static_cast<QLabel*>(bind(*label, new QLabel, WidgetKind::Label)));
        auto* e = lineEdit(*text, label);
        e->setMaximumWidth(90);
        g->addWidget(l, row, column);
        g->addWidget(e, row, column + 1);
        ++i;
    }
    g->setColumnMinimumWidth(2, 18);
    g->setColumnStretch(2, 1);
    return box;
}

QWidget* FrmStartWindow::buildNumberType() {
    FrmStartForm& f = form_.f;
    auto* box = new QGroupBox;
    bind(f.FraNumberType, box, WidgetKind::Frame);
    auto* h = new QVBoxLayout(box);
    for (int i = 1; i <= 2; ++i) {
        auto* b = new QRadioButton;
        b->setAutoExclusive(false); // the model decides which option is selected
        bind(f.OptValueType[i], b, WidgetKind::Option);
        Control* model = &f.OptValueType[i];
        connectToggle(b, true, [this, model](bool) {
            form_.event([&] { setValue(*model, 1); });
            refresher_.request();
        });
        h->addWidget(b);
    }
    h->addStretch(1);
    return box;
}

} // namespace torv
