#include "trendlog_tuning.h"

#include "trendlog_plot.h"
#include "viewer/time_axis.h"

#include <QDoubleValidator>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTextDocument>
#include <QVBoxLayout>

namespace torv {

namespace {

const char* const kHeads[5] = {"Integration", "Readings averaged", "Noise SD", "Noise peak to peak",
                               "Settling"};

QLineEdit* numberEdit(const QString& placeholder, const QString& tip) {
    auto* edit = new QLineEdit;
    auto* validator = new QDoubleValidator(edit);
    validator->setBottom(0);
    validator->setNotation(QDoubleValidator::StandardNotation);
    edit->setValidator(validator);
    edit->setPlaceholderText(placeholder);
    edit->setToolTip(tip);
    edit->setClearButtonEnabled(true);
    return edit;
}

std::optional<double> numberIn(const QLineEdit* edit) {
    const QString text = edit->text().trimmed();
    bool ok = false;
    double v = QLocale().toDouble(text, &ok);
    if (!ok) v = text.toDouble(&ok);
    return ok && v > 0 ? std::optional<double>(v) : std::nullopt;
}

} // namespace

TuningPanel::TuningPanel(TrendlogPlot* plot, QWidget* parent)
    : QWidget(parent)
    , plot_(plot) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 6);

    auto* left = new QVBoxLayout;
    summary_ = new QLabel;
    summary_->setTextFormat(Qt::RichText);
    summary_->setWordWrap(true);
    summary_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    left->addWidget(summary_, 1);
    auto* form = new QFormLayout;
    divisionEdit_ = numberEdit(QStringLiteral("none"),
                               QStringLiteral("Scale division: the noise is given in divisions"));
    toleranceEdit_ = numberEdit(
        QStringLiteral("two raw SDs"),
        QStringLiteral("Settling band: +- this many units around the level after the step"));
    form->addRow(QStringLiteral("Division:"), divisionEdit_);
    form->addRow(QStringLiteral("Tolerance:"), toleranceEdit_);
    left->addLayout(form);
    auto* leftBox = new QWidget;
    leftBox->setLayout(left);
    leftBox->setFixedWidth(360);
    layout->addWidget(leftBox);
    for (QLineEdit* edit : {divisionEdit_, toleranceEdit_})
        connect(edit, &QLineEdit::editingFinished, this, [this] {
            const auto d = numberIn(divisionEdit_);
            const auto t = numberIn(toleranceEdit_);
            if (d == division_ && t == tolerance_) return;
            division_ = d;
            tolerance_ = t;
            emit settingsChanged();
        });

    grid_ = new QTableWidget(0, 5);
    grid_->verticalHeader()->hide();
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::SingleSelection);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    grid_->horizontalHeader()->setStretchLastSection(true);
    grid_->horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView::section { padding: 2px 10px; }"));
    const int rowHeight = grid_->fontMetrics().height() + 5;
    grid_->verticalHeader()->setDefaultSectionSize(rowHeight);
    // Room for every integration of the card without scrolling.
    grid_->setMinimumHeight(rowHeight * (int(viewer::kCardIntegrations.size()) + 1) + 12);
    grid_->setToolTip(QStringLiteral("Choose a row to draw that integration over the readings"));
    layout->addWidget(grid_, 1);
    connect(grid_, &QTableWidget::itemSelectionChanged, this, [this] {
        const auto rows = grid_->selectionModel()->selectedRows();
        if (rows.isEmpty() || std::size_t(rows.first().row()) >= table_.rows.size()) return;
        chosenMs_ = table_.rows[std::size_t(rows.first().row())].integrationMs;
        drawTrace();
    });
}

void TuningPanel::setSeries(const viewer::Series* series) {
    series_ = series;
    drawnMs_ = -1;
}

void TuningPanel::setDivision(std::optional<double> d) {
    division_ = d;
    divisionEdit_->setText(d ? QString::number(*d) : QString());
}

void TuningPanel::setTolerance(std::optional<double> t) {
    tolerance_ = t;
    toleranceEdit_->setText(t ? QString::number(*t) : QString());
}

void TuningPanel::update(std::size_t first, std::size_t last, bool fromCursors,
                         double integrationMs) {
    fromCursors_ = fromCursors;
    if (!series_ || series_->empty()) {
        table_ = {};
        table_.error = QStringLiteral("no readings");
    } else {
        viewer::TuningSettings settings;
        settings.integrationMs = integrationMs;
        settings.first = first;
        settings.last = last;
        settings.tolerance = tolerance_;
        table_ = viewer::tuningTable(series_->content().value, settings);
    }
    fillTable();
    if (table_.error.isEmpty()) {
        plot_->setStepMark(table_.step ? std::optional<std::size_t>(table_.step->position)
                                       : std::nullopt);
        plot_->setStretchMark(std::make_pair(table_.stretchFirst, table_.stretchLast));
    } else {
        plot_->setStepMark(std::nullopt);
        plot_->setStretchMark(std::nullopt);
    }
    drawTrace();
}

void TuningPanel::clearPlot() {
    plot_->setPreview({}, {});
    plot_->setStepMark(std::nullopt);
    plot_->setStretchMark(std::nullopt);
    drawnMs_ = -1;
}

void TuningPanel::chooseIntegration(int ms) {
    chosenMs_ = ms;
    for (std::size_t r = 0; r < table_.rows.size(); ++r)
        if (table_.rows[r].integrationMs == ms) grid_->selectRow(int(r));
    drawTrace();
}

QString TuningPanel::valueUnits() const {
    return series_ ? series_->content().trailer.unitsCaption : QString();
}

void TuningPanel::fillTable() {
    const QSignalBlocker blocker(grid_);
    const bool divisions = division_.has_value();
    const QString units = divisions ? QStringLiteral("d") : valueUnits();
    QStringList heads;
    for (int c = 0; c < 5; ++c)
        heads << QString::fromLatin1(kHeads[c]) +
                     (c == 2 || c == 3 ? (units.isEmpty() ? QString() : " (" + units + ")")
                                       : QString());
    grid_->setHorizontalHeaderLabels(heads);
    grid_->setRowCount(int(table_.rows.size()));
    const int decimals = divisions ? 2 : (series_ ? series_->decimals() + 1 : 4);
    const double scale = divisions ? 1.0 / *division_ : 1.0;
    auto noise = [&](const std::optional<double>& v) {
        return v ? QString::number(*v * scale, 'f', decimals) : QStringLiteral("-");
    };
    if (chosenMs_ == 0 && table_.rows.size() > 1) chosenMs_ = table_.rows[1].integrationMs;
    for (std::size_t r = 0; r < table_.rows.size(); ++r) {
        const viewer::TuningRow& row = table_.rows[r];
        QString settling = QStringLiteral("no step");
        if (table_.step)
            settling = row.settlingMs ? QStringLiteral("%1 ms").arg(*row.settlingMs)
                                      : QStringLiteral("> %1 ms").arg(double(table_.window) *
                                                                      double(row.integrationMs) /
                                                                      double(row.readingsAveraged));
        const QString cells[5] = {QStringLiteral("%1 ms").arg(row.integrationMs),
                                  QString::number(row.readingsAveraged), noise(row.noiseSd),
                                  noise(row.noisePeakToPeak), settling};
        for (int c = 0; c < 5; ++c) {
            auto* item = new QTableWidgetItem(cells[c]);
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid_->setItem(int(r), c, item);
        }
        if (row.integrationMs == chosenMs_) grid_->selectRow(int(r));
    }

    // The summary: the model, the step, the stretch and the band.
    QString html;
    if (!table_.error.isEmpty()) {
        html = QStringLiteral("<b>No tuning table:</b> %1").arg(table_.error.toHtmlEscaped());
    } else {
        const QString unit = valueUnits().isEmpty() ? QString() : " " + valueUnits();
        const int d = series_->decimals();
        auto value = [&](double v) { return QString::number(v, 'f', d) + unit; };
        auto at = [&](std::size_t position) {
            return viewer::timeText(series_->timeMsOf(std::min(position, series_->size() - 1)));
        };
        const double n = series_->integration();
        html = QStringLiteral("Each row shows what the card would read at that integration: the "
                              "moving average of <i>M</i>/%1 readings of this %1 ms session.<br>")
                   .arg(n);
        if (table_.step)
            html += QStringLiteral("<b>Step</b> at %1: %2 to %3.<br>")
                        .arg(at(table_.step->position), value(table_.step->before),
                             value(table_.step->after));
        else
            html += QStringLiteral("<b>No step</b> larger than ten times the raw noise.<br>");
        html += QStringLiteral("<b>Steady stretch</b> %1 to %2 (%3).<br>")
                    .arg(at(table_.stretchFirst), at(table_.stretchLast - 1),
                         fromCursors_ ? QStringLiteral("between the cursors")
                                      : QStringLiteral("the view"));
        html += QStringLiteral("<b>Raw noise</b> SD %1%2; <b>band</b> &plusmn;%3%2 (%4).")
                    .arg(QString::number(table_.rawSd, 'f', d + 1), unit,
                         QString::number(table_.band, 'f', d + 1),
                         tolerance_ ? QStringLiteral("tolerance") : QStringLiteral("two raw SDs"));
        if (table_.step)
            html += QStringLiteral(" Settling is watched for %1 after the step.")
                        .arg(viewer::timeText(double(table_.window) * n));
    }
    summary_->setText(html);
}

void TuningPanel::drawTrace() {
    const viewer::TuningRow* chosen = nullptr;
    for (const viewer::TuningRow& row : table_.rows)
        if (row.integrationMs == chosenMs_) chosen = &row;
    if (!series_ || !chosen || chosen->readingsAveraged < 2) {
        if (drawnMs_ != 0) plot_->setPreview({}, {});
        drawnMs_ = 0;
        return;
    }
    if (drawnMs_ == chosenMs_) return;
    viewer::previewIntegration(series_->content().value, chosen->readingsAveraged, trace_);
    plot_->setPreview(trace_, QStringLiteral("As at integration %1 ms (mean of %2)")
                                  .arg(chosen->integrationMs)
                                  .arg(chosen->readingsAveraged));
    drawnMs_ = chosenMs_;
}

QString TuningPanel::text() const {
    QTextDocument doc;
    doc.setHtml(summary_->text());
    QString out = doc.toPlainText() + QLatin1Char('\n');
    for (int r = 0; r < grid_->rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < grid_->columnCount(); ++c)
            cells << grid_->item(r, c)->text();
        out += cells.join(QStringLiteral(" | ")) + QLatin1Char('\n');
    }
    return out;
}

} // namespace torv
