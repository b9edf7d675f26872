#pragma once

#include <QString>

/// An arithmetic expression as people type it into a box for a number.
///
/// Numbers with a decimal point whatever the locale, 0x1F, + - * / ^ and parentheses, the names pi,
/// tau, e, inf, nan, and the functions that expressionHelp() lists. A leading "+=", "-=", "*=",
/// "/=" or "^=" goes on from the present number. Whole numbers are computed exactly while they fit
/// 64 bits. Infinities and not-a-number come from their names only: what divides by zero, overflows
/// or has no value is an error, as typing passes through it.
struct Expression {
    bool isValid = false;
    double number = 0;
    /// Of an invalid one: where, from 1 on, and what is wrong there.
    int column = 0;
    QString problem;

    /// Parentheses, functions, signs and powers within each other.
    static constexpr int kMaxDepth = 64;

    /// `present` is what a relative expression starts from.
    static Expression evaluate(const QString& text, double present = 0);
};

/// Explains the syntax to the user, in two lines.
QString expressionHelp();
