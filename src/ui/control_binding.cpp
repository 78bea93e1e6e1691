#include "control_binding.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

namespace torv {

QColor screenColor(color::Color c) {
    if (color::isSystem(c)) {
        switch (color::systemIndex(c)) {
        case 5:
            return QColor(0xFF, 0xFF, 0xFF); // window background
        case 8:
            return QColor(0x20, 0x24, 0x2B); // window text
        case 11:
            return QColor(0xC9, 0xCE, 0xD6); // inactive border: an output or input that is off
        case 15:
            return QColor(0xE9, 0xEC, 0xF0); // button face
        case 18:
            return QColor(0x20, 0x24, 0x2B); // button text
        case 19:
            return QColor(0xDD, 0xE6, 0xF0); // a saved value, an invalid entry
        case 20:
            return QColor(0xFF, 0xFF, 0xFF); // a valid entry
        default:
            return QColor(0xE9, 0xEC, 0xF0);
        }
    }
    // Every other colour, pure red and pure green included, is shown as the model holds it.
    return QColor(color::red(c), color::green(c), color::blue(c));
}

namespace {
// Relative luminance of a screen colour (sRGB).
double luminance(const QColor& c) {
    const auto channel = [](int v) {
        const double x = v / 255.0;
        return x <= 0.03928 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(c.red()) + 0.7152 * channel(c.green()) + 0.0722 * channel(c.blue());
}
} // namespace

double contrastRatio(const QColor& a, const QColor& b) {
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor readableTextOn(const QColor& back) {
    const QColor dark(0, 0, 0), light(0xFF, 0xFF, 0xFF);
    return contrastRatio(dark, back) >= contrastRatio(light, back) ? dark : light;
}

ControlBinding::ControlBinding(Control& control, QWidget* widget, WidgetKind kind,
                               const Control* label)
    : control_(&control)
    , widget_(widget)
    , kind_(kind)
    , label_(label) {
    // Assistive technology finds a control by its name and reads its caption (a text box
    // reads the caption of its label) as the description.
    widget_->setObjectName(control.name);
    widget_->setAccessibleName(control.name);
}

void connectToggle(QAbstractButton* button, bool isOption, std::function<void(bool)> toggled) {
    // `toggled` rather than `clicked`: the mouse, the keyboard and an assistive technology's
    // toggle action all come this way. A selected option is not cleared by a click: the model
    // decides which option is selected.
    QObject::connect(button, &QAbstractButton::toggled, button,
                     [button, isOption, toggled = std::move(toggled)](bool checked) {
                         if (isOption && !checked) {
                             const QSignalBlocker block(button);
                             button->setChecked(true);
                             return;
                         }
                         toggled(checked);
                     });
}

void ControlBinding::applyStyle() {
    const Control& c = *control_;
    QString css;
    const bool colouredBack = kind_ == WidgetKind::Button || kind_ == WidgetKind::Lamp ||
                              kind_ == WidgetKind::LineEdit || kind_ == WidgetKind::Shape ||
                              (kind_ == WidgetKind::Label && c.backColor != color::ButtonFace);
    if (colouredBack)
        css += QStringLiteral("background-color: %1;").arg(screenColor(c.backColor).name());
    if (c.foreColor != color::Black)
        css += QStringLiteral("color: %1;").arg(screenColor(c.foreColor).name());
    // Text on a coloured button or lamp takes whichever of dark and white reads better on it.
    QString disabled;
    if ((kind_ == WidgetKind::Button || kind_ == WidgetKind::Lamp) && c.foreColor == color::Black) {
        const QColor text = readableTextOn(screenColor(c.backColor));
        css += QStringLiteral("color: %1;").arg(text.name());
        // A disabled button still says so: the same text, faded into its colour.
        disabled = QStringLiteral(" #%1:disabled { color: rgba(%2, %3, %4, 110); }")
                       .arg(c.name)
                       .arg(text.red())
                       .arg(text.green())
                       .arg(text.blue());
    }
    widget_->setStyleSheet(
        css.isEmpty() ? QString() : QStringLiteral("#%1 { %2 }").arg(c.name, css) + disabled);
    QFont font = widget_->font();
    font.setBold(c.bold || kind_ == WidgetKind::Lamp);
    if (c.fontSize > 9) font.setPointSizeF(c.fontSize * fontScale_);
    widget_->setFont(font);
}

void ControlBinding::push(bool force) {
    const Control& c = *control_;
    force = force || !pushed_;
    pushed_ = true;

    if (force || c.caption != caption_) {
        caption_ = c.caption;
        switch (kind_) {
        case WidgetKind::Label:
        case WidgetKind::Lamp:
            static_cast<QLabel*>(widget_)->setText(c.caption);
            break;
        case WidgetKind::Button:
        case WidgetKind::CheckBox:
        case WidgetKind::Option:
            static_cast<QAbstractButton*>(widget_)->setText(c.caption);
            break;
        case WidgetKind::LineEdit: {
            auto* e = static_cast<QLineEdit*>(widget_);
            if (e->text() != c.caption) {
                const QSignalBlocker block(e);
                e->setText(c.caption);
            }
            break;
        }
        case WidgetKind::Frame:
            static_cast<QGroupBox*>(widget_)->setTitle(c.caption.trimmed());
            break;
        case WidgetKind::TextArea: {
            // New text keeps the place the operator scrolled to.
            auto* t = static_cast<QPlainTextEdit*>(widget_);
            const QSignalBlocker block(t);
            const int v = t->verticalScrollBar()->value();
            const int h = t->horizontalScrollBar()->value();
            t->setPlainText(c.caption);
            t->verticalScrollBar()->setValue(std::min(v, t->verticalScrollBar()->maximum()));
            t->horizontalScrollBar()->setValue(std::min(h, t->horizontalScrollBar()->maximum()));
            break;
        }
        case WidgetKind::Combo:
        case WidgetKind::Shape:
            break;
        }
    }
    const QString labelCaption = label_ ? label_->caption : c.caption;
    if (force || labelCaption != labelCaption_) {
        labelCaption_ = labelCaption;
        QString text = labelCaption.trimmed();
        if (text.endsWith(QLatin1Char(':'))) text.chop(1);
        widget_->setAccessibleDescription(text.trimmed());
    }
    if (force || c.toolTip != toolTip_) {
        toolTip_ = c.toolTip;
        widget_->setToolTip(c.toolTip);
    }
    if (force || c.enabled != enabled_) {
        enabled_ = c.enabled;
        // The raw-answer box is read-only anyway; it stays scrollable while the model
        // disables it (it does so while the box has the focus).
        if (kind_ != WidgetKind::TextArea) widget_->setEnabled(c.enabled);
    }
    if (force || c.visible != visible_) {
        visible_ = c.visible;
        widget_->setVisible(c.visible);
    }
    if (kind_ == WidgetKind::CheckBox || kind_ == WidgetKind::Option) {
        // Against the widget, not the last push: a handler may have put the value back.
        auto* b = static_cast<QAbstractButton*>(widget_);
        if (b->isChecked() != (c.value != 0)) {
            const QSignalBlocker block(b);
            b->setChecked(c.value != 0);
        }
    }
    if (kind_ == WidgetKind::Combo && (force || c.items != items_ || c.listIndex != listIndex_)) {
        auto* box = static_cast<QComboBox*>(widget_);
        const QSignalBlocker block(box);
        if (force || c.items != items_) {
            items_ = c.items;
            box->clear();
            box->addItems(c.items);
        }
        listIndex_ = c.listIndex;
        box->setCurrentIndex(c.listIndex);
    }
    if (force || c.backColor != back_ || c.foreColor != fore_ || c.bold != bold_ ||
        c.fontSize != fontSize_) {
        back_ = c.backColor;
        fore_ = c.foreColor;
        bold_ = c.bold;
        fontSize_ = c.fontSize;
        applyStyle();
    }
}

} // namespace torv
