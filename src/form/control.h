#pragma once

// One control of a form as the logic sees it: what it shows and how. The window layer renders
// it; the logic only reads and writes these fields.

#include "base/colors.h"
#include "base/integers.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace torv {

class FormModel;

struct Control {
    Control() = default;
    // A control declared on a form registers itself there under its name.
    Control(FormModel* form, const char* controlName, const QString& text = QString());

    QString name;    // the control name, also the widget's object name
    QString caption; // caption of a button, label, check box or frame; text of a text box
    color::Color backColor = color::ButtonFace;
    color::Color foreColor = color::Black;
    bool enabled = true;
    bool visible = true;
    QString toolTip;
    int value = 0; // check box (0 unchecked, 1 checked), option button (1 selected)
    bool bold = false;
    double fontSize = 8.25;
    QString fontName;                             // empty: the window's own font
    int left = 0, top = 0, width = 0, height = 0; // twips, where the logic places things
    QStringList items;                            // combo box list
    int listIndex = -1;                           // combo box selection
    // Fired when the value of a check box or option changes (the toolkit's Click).
    std::function<void()> onClick;
};

// Setting a check box's value fires its Click handler when the value changes, as the toolkit does.
inline void setValue(Control& c, int v) {
    if (c.value == v) return;
    c.value = v;
    if (c.onClick) c.onClick();
}

// An indexed array of like controls, named "name_index" ("cmdSetOutOn_3"). Indices outside
// Lo..Hi raise run-time error 9.
template <int Lo, int Hi> class ControlArray : public BoundedArray<Control, Lo, Hi> {
public:
    ControlArray() = default;
    ControlArray(FormModel* form, const char* arrayName);
};

} // namespace torv

#include "form/form_model.h"

namespace torv {

template <int Lo, int Hi>
ControlArray<Lo, Hi>::ControlArray(FormModel* form, const char* arrayName) {
    for (int i = Lo; i <= Hi; ++i) {
        Control& c = (*this)[i];
        c.name = QStringLiteral("%1_%2").arg(QString::fromLatin1(arrayName)).arg(i);
        form->add(c);
    }
}

} // namespace torv
