// The lower and right areas of the main window: analog output, integration, channels, fast
// sampling, the data file, and the messages with the raw answers.

#include "frm_client_window.h"
#include "panel/frm_client.h"
#include "window_parts.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace torv {

using namespace window_parts;

QWidget* FrmClientWindow::buildSettings() {
    FrmClientForm& f = panel_.f;
    auto* column = new QWidget;
    auto* v = new QVBoxLayout(column);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(8);

    auto* d2a = frameBox(column);
    bind(f.FraSetD2A, d2a, WidgetKind::Frame);
    auto* dg = new QGridLayout(d2a);
    auto* dEdit = lineEdit(
        f.txtSetD2A, &f.FraSetD2A, [this] { panel_.txtSetD2A_Change(); },
        [this](int k) { panel_.txtSetD2A_KeyPress(k); }, [this] { panel_.txtSetD2A_GotFocus(); });
    dEdit->setMinimumWidth(dEdit->fontMetrics().horizontalAdvance(QStringLiteral("0x000")) + 18);
    dg->addWidget(dEdit, 0, 0);
    dg->addWidget(button(f.cmdSetD2A, [this] { panel_.cmdSetD2A_Click(); }), 0, 1);
    auto* got = new QHBoxLayout;
    got->addWidget(label(f.LbLGotD2A, QStringLiteral("caption")));
    got->addWidget(number(f.LbLGotD2Adata, QStringLiteral("000")));
    got->addStretch(1);
    dg->addLayout(got, 1, 0, 1, 2);
    v->addWidget(d2a);

    auto* integ = frameBox(column);
    bind(f.FraIntegration, integ, WidgetKind::Frame);
    auto* ig = new QGridLayout(integ);
    ig->addWidget(label(f.LbLSetIntegration, QStringLiteral("caption")), 0, 0);
    auto* combo = new QComboBox;
    combo->setPlaceholderText(QStringLiteral("choose"));
    bind(f.cmbSetIntegr, combo, WidgetKind::Combo, &f.LbLSetIntegration);
    connect(combo, &QComboBox::activated, this, [this](int index) {
        panel_.event([&] {
            Control& c = panel_.f.cmbSetIntegr;
            c.listIndex = index;
            c.caption = index >= 0 && index < c.items.size() ? c.items[index] : QString();
            panel_.cmbSetIntegr_Click();
        });
    });
    ig->addWidget(combo, 0, 1);
    ig->addWidget(label(f.lblIntegration, QStringLiteral("caption")), 1, 0);
    auto* current = lineEdit(f.txtIntegration, &f.lblIntegration);
    static_cast<QLineEdit*>(current)->setReadOnly(true);
    ig->addWidget(current, 1, 1);
    v->addWidget(integ);

    auto* chans = frameBox(column);
    bind(f.FraChannels, chans, WidgetKind::Frame);
    auto* cg = new QVBoxLayout(chans);
    auto* pair = new QHBoxLayout; // the two channel buttons share the row equally
    for (int i = 1; i <= 2; ++i) {
        auto* b = button(f.cmdChan[i], [this, i] { panel_.cmdChan_Click(i); });
        b->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        b->setMinimumWidth(b->fontMetrics().horizontalAdvance(QStringLiteral("Channel 2")) + 24);
        pair->addWidget(b, 1);
    }
    cg->addLayout(pair);
    auto* chanRow = new QHBoxLayout;
    chanRow->addWidget(label(f.lblChanCaption, QStringLiteral("caption")));
    chanRow->addWidget(number(f.lblChanNum, QStringLiteral("0")));
    chanRow->addStretch(1);
    chanRow->addWidget(button(f.cmdChanSwitch, [this] { panel_.cmdChanSwitch_Click(); }));
    cg->addLayout(chanRow);
    auto* sw = label(f.LblSwitch, QStringLiteral("hint"));
    static_cast<QLabel*>(sw)->setWordWrap(true);
    cg->addWidget(sw);
    v->addWidget(chans);
    v->addStretch(1);
    return column;
}

QWidget* FrmClientWindow::buildSampling() {
    FrmClientForm& f = panel_.f;
    auto* row = new QWidget;
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    h->setSpacing(8);

    auto* fast = frameBox(row);
    bind(f.FraFastSample, fast, WidgetKind::Frame);
    auto* g = new QGridLayout(fast);
    g->setHorizontalSpacing(10);
    auto pair = [&](Control& caption, Control& value, int r, int c, const char* widest) {
        g->addWidget(label(caption, QStringLiteral("caption")), r, c);
        g->addWidget(number(value, QLatin1String(widest)), r, c + 1);
    };
    pair(f.lblTotalReadings, f.lblTotalReadingsD, 0, 0, "00000000");
    pair(f.LbLFrequency, f.LbLFrequencyData, 1, 0, "000000.000");
    pair(f.LbLCurFrequency, f.LbLCurrentFreqD, 2, 0, "000000.000");
    pair(f.lblParsedReadings, f.lblParsedReadingsD, 0, 2, "00000000");
    pair(f.lblErrorReadings, f.lblErrorReadingsD, 1, 2, "00000000");
    g->addWidget(label(f.lblLastReadingNumber, QStringLiteral("caption")), 2, 2);
    auto* n = lineEdit(f.txtLastReadingNumberD, &f.lblLastReadingNumber);
    fitEdit(n, QStringLiteral("000000"), 1);
    g->addWidget(n, 2, 3, Qt::AlignRight);
    g->addWidget(number(f.lblCurrentBlockWeight, QStringLiteral("-0000.000")), 0, 4);
    g->addWidget(number(f.txtFrequency, QStringLiteral("000000.000")), 1, 4);
    auto* note = label(f.LbLFastSample, QStringLiteral("caption"));
    static_cast<QLabel*>(note)->setWordWrap(true);
    g->addWidget(note, 2, 4);
    g->setColumnStretch(4, 1);
    h->addWidget(fast, 3);

    auto* hist = frameBox(row);
    bind(f.FraHistory, hist, WidgetKind::Frame);
    auto* hg = new QGridLayout(hist);
    hg->addWidget(label(f.lblHistFileName, QStringLiteral("caption")), 0, 0);
    hg->addWidget(lineEdit(f.txtHistFileName, &f.lblHistFileName), 0, 1);
    hg->addWidget(button(f.cmdBrowse, [this] { panel_.cmdBrowse_Click(); }), 0, 2);
    auto* modes = frameBox(hist);
    bind(f.FraXMode, modes, WidgetKind::Frame);
    auto* mh = new QHBoxLayout(modes);
    mh->addWidget(option(f.OptX_mode[1]));
    mh->addWidget(option(f.OptX_mode[2]));
    hg->addWidget(modes, 1, 0, 1, 2);
    hg->addWidget(button(f.CmdShowGraph, [this] { panel_.CmdShowGraph_Click(); }), 1, 2);
    keptFile_ = new QLabel;
    keptFile_->setObjectName(QStringLiteral("keptDataFile"));
    keptFile_->setProperty("role", QStringLiteral("caption"));
    keptFile_->setWordWrap(true);
    keptFile_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    keptFile_->hide();
    hg->addWidget(keptFile_, 2, 0, 1, 3);
    hg->setColumnStretch(1, 1);
    h->addWidget(hist, 2);
    return row;
}

QWidget* FrmClientWindow::buildMessages() {
    FrmClientForm& f = panel_.f;
    auto* box = card(QStringLiteral("messages"));
    auto* h = new QHBoxLayout(box);
    h->setContentsMargins(12, 4, 12, 4);
    h->setSpacing(10);

    auto* logo = label(f.ImaOKA_Logo, QStringLiteral("logo"));
    h->addWidget(logo);
    h->addWidget(button(f.cmdShowXMLData, [this] { panel_.cmdShowXMLData_Click(); }));

    auto* err = frameBox(box);
    bind(f.FraErrorStatus, err, WidgetKind::Frame);
    auto* eg = new QGridLayout(err);
    eg->addWidget(label(f.lblLastErrCode, QStringLiteral("caption")), 0, 0);
    auto* code = number(f.lblErrNumer, QStringLiteral("-00000"));
    static_cast<QLabel*>(code)->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    eg->addWidget(code, 0, 1);
    eg->addWidget(label(f.lblLastErrDescr, QStringLiteral("caption")), 1, 0);
    auto* descr = label(f.lblErrDescr, QStringLiteral("value"));
    static_cast<QLabel*>(descr)->setWordWrap(true);
    eg->addWidget(descr, 1, 1);
    eg->setColumnStretch(1, 1);
    err->setMinimumWidth(260);
    h->addWidget(err);

    auto* xml = new QVBoxLayout;
    xml->addWidget(label(f.lblXML_Data, QStringLiteral("caption")));
    auto* text = new QPlainTextEdit;
    text->setReadOnly(true);
    // Tall enough for a whole answer, headers and all, wrapped at the box's width.
    text->setMinimumHeight(text->fontMetrics().lineSpacing() * 9 + 12);
    bind(f.txtRealTimeInfo, text, WidgetKind::TextArea);
    text->installEventFilter(this);
    hooks_.push_back({text,
                      {&f.txtRealTimeInfo,
                       {},
                       {},
                       [this] { panel_.txtRealTimeInfo_GotFocus(); },
                       [this] { panel_.txtRealTimeInfo_LostFocus(); }}});
    xml->addWidget(text);
    h->addLayout(xml, 1);
    h->addWidget(button(f.cmdQuitXML, [this] { panel_.cmdQuitXML_Click(); }), 0, Qt::AlignTop);
    // The two hidden labels that size the wide messages.
    h->addWidget(label(f.LbLAutoSize));
    h->addWidget(label(f.LbLAutoSize2));
    h->addStretch(0);
    return box;
}
} // namespace torv
