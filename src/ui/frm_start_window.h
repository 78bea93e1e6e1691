#pragma once

// The graph set-up window: renders the FrmStart form model and turns the operator's clicks and
// typing into the form's handlers. Every edit checks the entries at once; a rejected entry is
// tinted and its reason is shown in its tool tip and under the parameters.

#include "coalescer.h"
#include "control_binding.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

class QLabel;

namespace torv {

class FrmStart;

class FrmStartWindow : public QDialog {
    Q_OBJECT
public:
    explicit FrmStartWindow(FrmStart& form, QWidget* parent = nullptr);
    ~FrmStartWindow() override;

    // Shows the form: loads it when it is not loaded, else brings it to the front.
    void open();
    // Pushes every changed property of the model to the widgets now.
    void refresh();
    QWidget* widgetFor(const QString& controlName) const;
    // The text under the parameters: the first rejected entry and why, or a hint.
    QString problemText() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* bind(Control& c, QWidget* w, WidgetKind kind, const Control* label = nullptr);
    QWidget* lineEdit(Control& c, const Control* label = nullptr);
    QWidget* buildCard();
    QWidget* buildChannels();
    QWidget* buildParameters();
    QWidget* buildNumberType();
    void showProblems();

    FrmStart& form_;
    std::vector<std::unique_ptr<ControlBinding>> bindings_;
    QLabel* problem_ = nullptr;
    Coalescer refresher_;
};

} // namespace torv
