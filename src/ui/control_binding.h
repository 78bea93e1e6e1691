#pragma once

// Renders form-model controls into widgets. Each binding remembers what it last pushed, so a
// refresh only touches properties that changed.

#include "form/control.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

class QWidget;
class QAbstractButton;

namespace torv {

enum class WidgetKind {
    Label,
    Button,
    CheckBox,
    LineEdit,
    Frame,
    Combo,
    Option,
    TextArea,
    Lamp,
    Shape
};

// The screen colour of a program colour: 24-bit BGR values as they are, system colours
// through the panel's palette.
QColor screenColor(color::Color c);
// The contrast of two screen colours (1 to 21), and the text colour, dark or white, that
// reads better on a background.
double contrastRatio(const QColor& a, const QColor& b);
QColor readableTextOn(const QColor& back);

// Calls `toggled` whenever the operator (mouse, keyboard or assistive technology) changes a
// check box or option; an option cannot be cleared by the operator.
void connectToggle(QAbstractButton* button, bool isOption, std::function<void(bool)> toggled);

class ControlBinding {
public:
    ControlBinding(Control& control, QWidget* widget, WidgetKind kind,
                   const Control* label = nullptr);

    // Pushes what changed since the last push; `force` pushes everything.
    void push(bool force = false);
    Control& control() const { return *control_; }
    QWidget* widget() const { return widget_; }
    WidgetKind kind() const { return kind_; }
    // The window may draw a control larger or smaller than its designed point size.
    void setFontScale(double scale) { fontScale_ = scale; }

private:
    void applyStyle();
    Control* control_;
    QWidget* widget_;
    WidgetKind kind_;
    const Control* label_;
    double fontScale_ = 1.0;
    bool pushed_ = false;
    QString caption_, toolTip_, labelCaption_;
    color::Color back_ = 0, fore_ = 0;
    bool enabled_ = true, visible_ = true, bold_ = false;
    double fontSize_ = 0;
    int listIndex_ = -1;
    QStringList items_;
};

} // namespace torv
