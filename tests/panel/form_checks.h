#pragma once

// Compact checks of the form model: several controls' states or captions as one text.

#include "form/control.h"

#include <QString>
#include <QStringList>
#include <initializer_list>
#include <ostream>

// Texts in failure messages.
inline std::ostream& operator<<(std::ostream& os, const QString& s) {
    return os << '"' << s.toStdString() << '"';
}
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << s;
}

namespace torv::test {

// '1' for each control that is enabled (or visible), '0' for each that is not, in order.
inline QString enabledOf(std::initializer_list<const Control*> controls) {
    QString out;
    for (const Control* c : controls)
        out += c->enabled ? QLatin1Char('1') : QLatin1Char('0');
    return out;
}
inline QString visibleOf(std::initializer_list<const Control*> controls) {
    QString out;
    for (const Control* c : controls)
        out += c->visible ? QLatin1Char('1') : QLatin1Char('0');
    return out;
}

// The captions of the controls, joined by '|'.
inline QString captionsOf(std::initializer_list<const Control*> controls) {
    QStringList out;
    for (const Control* c : controls)
        out << c->caption;
    return out.join(QLatin1Char('|'));
}

} // namespace torv::test
