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

// The states of several controls compared as one compact text ("1101", "a|b"); a failure
// prints each control by name ("cmdWeight.enabled=0").
struct ControlStates {
    QString text;
    QStringList named;
    operator QString() const { return text; }
    friend bool operator==(const ControlStates& a, const QString& b) { return a.text == b; }
    friend bool operator==(const ControlStates& a, const char* b) {
        return a.text == QString::fromUtf8(b);
    }
};
inline void PrintTo(const ControlStates& s, std::ostream* os) {
    *os << '"' << s.text.toStdString() << "\" (" << s.named.join(QLatin1Char(' ')).toStdString()
        << ')';
}

template <typename Get>
ControlStates statesOf(std::initializer_list<const Control*> controls, const char* property,
                       QLatin1Char separator, Get get) {
    ControlStates out;
    QStringList parts;
    for (const Control* c : controls) {
        parts << get(*c);
        out.named << c->name + QLatin1Char('.') + QLatin1String(property) + QLatin1Char('=') +
                         parts.back();
    }
    out.text = parts.join(separator == QLatin1Char(' ') ? QString() : QString(separator));
    return out;
}

// '1' for each control that is enabled (or visible), '0' for each that is not, in order.
inline ControlStates enabledOf(std::initializer_list<const Control*> controls) {
    return statesOf(controls, "enabled", QLatin1Char(' '),
                    [](const Control& c) { return QString(c.enabled ? "1" : "0"); });
}
inline ControlStates visibleOf(std::initializer_list<const Control*> controls) {
    return statesOf(controls, "visible", QLatin1Char(' '),
                    [](const Control& c) { return QString(c.visible ? "1" : "0"); });
}
// The captions of the controls, joined by '|'.
inline ControlStates captionsOf(std::initializer_list<const Control*> controls) {
    return statesOf(controls, "caption", QLatin1Char('|'),
                    [](const Control& c) { return c.caption; });
}

} // namespace torv::test
