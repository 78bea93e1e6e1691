#pragma once

#include <QString>
#include <exception>

namespace torv {

// A run-time error of the panel's language: overflow, bad subscript, type mismatch.
// Thrown by the checked helpers and caught once, at the event boundary.
class RuntimeError : public std::exception {
public:
    enum Number {
        InvalidCall = 5,
        Overflow = 6,
        SubscriptOutOfRange = 9,
        DivisionByZero = 11,
        TypeMismatch = 13,
    };

    explicit RuntimeError(int number);
    RuntimeError(int number, QString description);

    int number() const noexcept { return number_; }
    const QString& description() const noexcept { return description_; }
    // "Run-time error '6': Overflow"
    QString message() const;
    const char* what() const noexcept override { return what_.c_str(); }

    static QString standardDescription(int number);

private:
    int number_;
    QString description_;
    std::string what_;
};

[[noreturn]] void raiseOverflow();
[[noreturn]] void raiseSubscript();
[[noreturn]] void raiseTypeMismatch();
[[noreturn]] void raiseDivisionByZero();

} // namespace torv
