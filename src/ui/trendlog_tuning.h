#pragma once

// The history viewer's Tuning panel: for one fast-sampling session, the card's integrations
// side by side (readings averaged, noise over the steady stretch, settling after the step),
// with the chosen row's filtered trace drawn over the readings, the step and the stretch
// marked on the plot.

#include "viewer/series.h"
#include "viewer/tuning.h"

#include <QWidget>
#include <optional>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace torv {

class TrendlogPlot;

class TuningPanel : public QWidget {
    Q_OBJECT
public:
    explicit TuningPanel(TrendlogPlot* plot, QWidget* parent = nullptr);

    // A new series (or a new X mode): the trace is drawn again for the chosen row.
    void setSeries(const viewer::Series* series);
    // Computes the table over the stretch of positions [first, last) for a session at
    // `integrationMs` (0: unknown); `fromCursors` says how the stretch was chosen. Draws the
    // marks and the chosen row's trace.
    void update(std::size_t first, std::size_t last, bool fromCursors, double integrationMs);
    // Takes the trace and the marks off the plot (the panel is hidden).
    void clearPlot();

    void setDivision(std::optional<double> d);
    void setTolerance(std::optional<double> t);
    // Chooses the row of integration `ms` (when the table has it) and draws its trace.
    void chooseIntegration(int ms);
    int chosenIntegration() const { return chosenMs_; }
    const viewer::TuningTable& table() const { return table_; }
    // The summary and the table as text, for tests and scripts.
    QString text() const;

signals:
    // Division or tolerance edited: the table needs computing again.
    void settingsChanged();

private:
    void fillTable();
    void drawTrace();
    QString valueUnits() const;

    TrendlogPlot* plot_;
    const viewer::Series* series_ = nullptr;
    viewer::TuningTable table_;
    std::optional<double> division_;
    std::optional<double> tolerance_;
    bool fromCursors_ = false;
    int chosenMs_ = 0;
    int drawnMs_ = -1; // the trace on the plot; -1: none
    std::vector<double> trace_;

    QLabel* summary_ = nullptr;
    QTableWidget* grid_ = nullptr;
    QLineEdit* divisionEdit_ = nullptr;
    QLineEdit* toleranceEdit_ = nullptr;
};

} // namespace torv
