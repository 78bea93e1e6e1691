#include "control.h"

namespace torv {

Control::Control(FormModel* form, const char* controlName, const QString& text)
    : name(QString::fromLatin1(controlName))
    , caption(text) {
    form->add(*this);
}

void FormModel::setFocus(const Control& c) {
    focusRequest = c.name;
}

Control* FormModel::find(const QString& name) const {
    for (Control* c : controls_)
        if (c->name == name) return c;
    return nullptr;
}

} // namespace torv
