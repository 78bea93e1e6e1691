#pragma once

// The main window: renders the frmClient form model and turns widget signals into calls of
// the panel's handlers. Repaints are coalesced: a model change schedules one refresh per frame.

#include "coalescer.h"
#include "control_binding.h"

#include <QMainWindow>
#include <functional>
#include <memory>
#include <vector>

class QLabel;
class QScrollArea;
class QLineEdit;
class QGridLayout;
class QBoxLayout;

namespace torv {

class FrmClient;

class FrmClientWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit FrmClientWindow(FrmClient& panel, QWidget* parent = nullptr);
    ~FrmClientWindow() override;

    // Pushes every changed property of the model to the widgets now.
    void refresh();
    int refreshCount() const { return refreshes_; }
    QWidget* widgetFor(const QString& controlName) const;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ControlBinding& bind(Control& c, QWidget* w, WidgetKind kind, const Control* label = nullptr);
    QWidget* label(Control& c, const QString& role = QString());
    // A numeric value label as wide as `widest`, aligned right.
    QWidget* number(Control& c, const QString& widest);
    QWidget* button(Control& c, std::function<void()> click, const QString& role = QString());
    QWidget* checkBox(Control& c);
    QWidget* option(Control& c);
    QWidget* lineEdit(Control& c, const Control* label, std::function<void()> change = {},
                      std::function<void(int)> key = {}, std::function<void()> focus = {});
    QWidget* lamp(Control& c);
    QWidget* buildHeader();
    QWidget* buildWeightCard();
    QWidget* buildOutputs();
    QWidget* buildSettings();
    QWidget* buildSampling();
    QWidget* buildMessages();
    void orderTabs();

    FrmClient& panel_;
    std::vector<std::unique_ptr<ControlBinding>> bindings_;
    struct EditHooks {
        Control* control;
        std::function<void()> change;
        std::function<void(int)> key;
        std::function<void()> focusIn;
        std::function<void()> focusOut;
    };
    std::vector<std::pair<QObject*, EditHooks>> hooks_;
    QLabel* keptFile_ = nullptr; // which copy of the data file the last save kept
    QScrollArea* scroll_ = nullptr;
    bool rawShown_ = false;
    Coalescer refresher_; // one refresh a frame however often the model changes
    int refreshes_ = 0;
};

} // namespace torv
