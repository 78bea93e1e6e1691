#include "runtime_error.h"

namespace torv {

RuntimeError::RuntimeError(int number)
    : RuntimeError(number, standardDescription(number)) {}

RuntimeError::RuntimeError(int number, QString description)
    : number_(number)
    , description_(std::move(description))
    , what_(message().toStdString()) {}

QString RuntimeError::message() const {
    return QStringLiteral("Run-time error '%1': %2").arg(number_).arg(description_);
}

QString RuntimeError::standardDescription(int number) {
    switch (number) {
    case InvalidCall:
        return QStringLiteral("Invalid procedure call or argument");
    case Overflow:
        return QStringLiteral("Overflow");
    case SubscriptOutOfRange:
        return QStringLiteral("Subscript out of range");
    case DivisionByZero:
        return QStringLiteral("Division by zero");
    case TypeMismatch:
        return QStringLiteral("Type mismatch");
    case 53:
        return QStringLiteral("File not found");
    case 55:
        return QStringLiteral("File already open");
    case 61:
        return QStringLiteral("Disk full");
    case 62:
        return QStringLiteral("Input past end of file");
    case 75:
        return QStringLiteral("Path/File access error");
    default:
        return QStringLiteral("Application-defined or object-defined error");
    }
}

void raiseOverflow() {
    throw RuntimeError(RuntimeError::Overflow);
}
void raiseSubscript() {
    throw RuntimeError(RuntimeError::SubscriptOutOfRange);
}
void raiseTypeMismatch() {
    throw RuntimeError(RuntimeError::TypeMismatch);
}
void raiseDivisionByZero() {
    throw RuntimeError(RuntimeError::DivisionByZero);
}

} // namespace torv
