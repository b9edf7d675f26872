#include "Expression.h"

#include <kalmyr/base/SbNumber.h>

#include <QByteArray>
#include <QStringList>

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <optional>
#include <utility>

namespace {

/// A number, exact where it is whole and fits.
struct Number {
    double real = 0;
    std::optional<std::int64_t> whole;

    Number(double number) : real(number) {}
    Number(std::int64_t number) : real(static_cast<double>(number)), whole(number) {}
};

struct Constant {
    const char* name;
    double number;
};
constexpr Constant kConstants[] = {{"pi", std::numbers::pi}, {"tau", 2 * std::numbers::pi},
                                   {"e", std::numbers::e},   {"inf", HUGE_VAL},
                                   {"infinity", HUGE_VAL},   {"nan", NAN}};

struct Function {
    const char* name;
    int arguments;
    double (*call)(double a, double b);
};
constexpr double kDegree = std::numbers::pi / 180;
constexpr Function kFunctions[] = {
    {"sqrt", 1, [](double a, double) { return std::sqrt(a); }},
    {"exp", 1, [](double a, double) { return std::exp(a); }},
    {"log", 1, [](double a, double) { return std::log(a); }},
    {"sin", 1, [](double a, double) { return std::sin(a); }},
    {"cos", 1, [](double a, double) { return std::cos(a); }},
    {"tan", 1, [](double a, double) { return std::tan(a); }},
    {"asin", 1, [](double a, double) { return std::asin(a); }},
    {"acos", 1, [](double a, double) { return std::acos(a); }},
    {"atan", 1, [](double a, double) { return std::atan(a); }},
    {"atan2", 2, [](double a, double b) { return std::atan2(a, b); }},
    {"abs", 1, [](double a, double) { return std::fabs(a); }},
    {"floor", 1, [](double a, double) { return std::floor(a); }},
    {"ceil", 1, [](double a, double) { return std::ceil(a); }},
    {"round", 1, [](double a, double) { return std::round(a); }},
    {"min", 2, [](double a, double b) { return b < a ? b : a; }},
    {"max", 2, [](double a, double b) { return b > a ? b : a; }},
    {"deg", 1, [](double a, double) { return a / kDegree; }},
    {"rad", 1, [](double a, double) { return a * kDegree; }},
};

/// Whole again, where the result is and all that went into it was.
Number exactly(double real, bool wereWhole)
{
    constexpr double kExact = 9007199254740992.0; // doubles hold all whole numbers up to it
    if (wereWhole && std::fabs(real) <= kExact && real == std::trunc(real))
        return static_cast<std::int64_t>(real);
    return real;
}

/// Reads one expression; recursive descent.
class Parser {
public:
    Parser(QByteArray text, double present)
        : m_text(std::move(text)),
          m_at(m_text.constData()),
          m_end(m_at + m_text.size()),
          m_present(present)
    {
    }

    Expression read()
    {
        const char relative = readRelative();
        const char* start = m_at;
        Number number = readSum();
        skipSpace();
        if (m_ok && m_at != m_end)
            fail(m_at, *m_at == ',' ? "expected an operator or the end; decimals have a point"
                                    : "expected an operator or the end");
        if (m_ok && relative)
            number = apply(relative, exactly(m_present, true), number, start);
        Expression result;
        result.isValid = m_ok;
        result.number = number.real;
        result.column = m_column;
        result.problem = m_problem;
        return result;
    }

private:
    /// The operator of a leading "*=" or the like; 0 for none.
    char readRelative()
    {
        skipSpace();
        if (m_end - m_at < 2 || m_at[1] != '=' || !std::strchr("+-*/^", m_at[0]))
            return 0;
        m_at += 2;
        return m_at[-2];
    }

    Number readSum()
    {
        Number sum = readProduct();
        while (const char sign = acceptOneOf("+-")) {
            const char* at = m_at - 1;
            sum = apply(sign, sum, readProduct(), at);
        }
        return sum;
    }
    Number readProduct()
    {
        Number product = readSigned();
        while (const char sign = acceptOneOf("*/")) {
            const char* at = m_at - 1;
            product = apply(sign, product, readSigned(), at);
        }
        return product;
    }
    Number readSigned()
    {
        if (++m_depth > Expression::kMaxDepth)
            return fail(m_at, "too many parts within each other");
        const char sign = acceptOneOf("+-");
        const char* at = m_at;
        const Number number = sign == '-' ? apply('-', std::int64_t{0}, readSigned(), at)
                              : sign      ? readSigned()
                                          : readPower();
        --m_depth;
        // Zero minus zero has lost the sign.
        return sign == '-' && number.real == 0 ? Number(-0.0) : number;
    }
    Number readPower()
    {
        const Number base = readPrimary();
        if (!acceptOneOf("^"))
            return base;
        const char* at = m_at - 1;
        return apply('^', base, readSigned(), at);
    }
    Number readPrimary()
    {
        skipSpace();
        if (m_at == m_end)
            return fail(m_at, "expected a number");
        if (acceptOneOf("("))
            return readClosed(&Parser::readSum);
        if (std::isalpha(static_cast<unsigned char>(*m_at)))
            return readNamed();
        if (std::isdigit(static_cast<unsigned char>(*m_at)) || *m_at == '.')
            return readNumber();
        return fail(m_at, "expected a number, a name or '('");
    }
    Number readClosed(Number (Parser::*inside)())
    {
        const Number number = (this->*inside)();
        if (m_ok && !acceptOneOf(")"))
            return fail(m_at, m_at == m_end ? "expected ')'" : "expected an operator or ')'");
        return number;
    }
    Number readNumber()
    {
        const char* start = m_at;
        const auto done = [this](const SbNumber::Result& result) {
            m_at = result.end;
            return result.status == SbNumber::Status::Ok;
        };
        std::uint64_t whole = 0;
        if (SbNumber::parseUInt(m_at, m_end, whole).status == SbNumber::Status::Ok) {
            const SbNumber::Result result = SbNumber::parseUInt(m_at, m_end, whole);
            const bool goesOn = result.end != m_end && std::strchr(".eE", *result.end);
            if (!goesOn && whole <= INT64_MAX && done(result))
                return static_cast<std::int64_t>(whole);
        }
        double real = 0;
        if (!done(SbNumber::parseDouble(m_at, m_end, real)))
            return fail(start, m_at == start ? "expected a number" : "beyond the range of numbers");
        return real;
    }
    Number readNamed()
    {
        const char* start = m_at;
        while (m_at != m_end && std::isalnum(static_cast<unsigned char>(*m_at)))
            ++m_at;
        const QByteArray name = QByteArray(start, static_cast<int>(m_at - start)).toLower();
        for (const Constant& constant : kConstants)
            if (name == constant.name)
                return constant.number;
        for (const Function& function : kFunctions)
            if (name == function.name)
                return readCall(function, start);
        return fail(start, QString("there is no \"%1\"").arg(QString::fromLatin1(name)));
    }
    Number readCall(const Function& function, const char* start)
    {
        if (!acceptOneOf("("))
            return fail(m_at, QString("expected '(' after %1").arg(function.name));
        const Number a = readSum();
        Number b = std::int64_t{0};
        if (function.arguments == 2) {
            if (m_ok && !acceptOneOf(","))
                return fail(m_at, QString("expected ',': %1 takes two numbers").arg(function.name));
            b = readSum();
        }
        if (m_ok && !acceptOneOf(")"))
            return fail(m_at, "expected ')'");
        const Number result = exactly(function.call(a.real, b.real), a.whole && b.whole);
        return checked(result, a, b, start, QString("%1 has no value here").arg(function.name));
    }

    Number apply(char sign, const Number& a, const Number& b, const char* at)
    {
        if (a.whole && b.whole)
            if (const std::optional<std::int64_t> exact = applyExactly(sign, *a.whole, *b.whole))
                return *exact;
        switch (sign) {
        case '+':
            return checked(a.real + b.real, a, b, at, "the sum is too large");
        case '-':
            return checked(a.real - b.real, a, b, at, "the difference is too large");
        case '*':
            return checked(a.real * b.real, a, b, at, "the product is too large");
        case '/':
            return checked(a.real / b.real, a, b, at,
                           b.real == 0 ? "division by zero" : "the quotient is too large");
        default:
            return checked(exactly(std::pow(a.real, b.real), a.whole && b.whole), a, b, at,
                           "the power has no value, or one that is too large");
        }
    }
    static std::optional<std::int64_t> applyExactly(char sign, std::int64_t a, std::int64_t b)
    {
        std::int64_t result = 0;
        switch (sign) {
        case '+':
            return __builtin_add_overflow(a, b, &result) ? std::nullopt : std::optional(result);
        case '-':
            return __builtin_sub_overflow(a, b, &result) ? std::nullopt : std::optional(result);
        case '*':
            return __builtin_mul_overflow(a, b, &result) ? std::nullopt : std::optional(result);
        case '/':
            return b != 0 && b != -1 && a % b == 0 ? std::optional(a / b) : std::nullopt;
        default:
            return std::nullopt;
        }
    }
    /// A result, unless finite numbers made one that is not.
    Number checked(const Number& result, const Number& a, const Number& b, const char* at,
                   const QString& problem)
    {
        const bool isBorn =
            !std::isfinite(result.real) && std::isfinite(a.real) && std::isfinite(b.real);
        return isBorn ? fail(at, problem) : result;
    }

    void skipSpace()
    {
        while (m_at != m_end && std::isspace(static_cast<unsigned char>(*m_at)))
            ++m_at;
    }
    /// The character, if it is one of these; 0 otherwise.
    char acceptOneOf(const char* characters)
    {
        skipSpace();
        if (!m_ok || m_at == m_end || !std::strchr(characters, *m_at))
            return 0;
        return *m_at++;
    }
    /// The first failure counts.
    Number fail(const char* at, const QString& problem)
    {
        if (m_ok) {
            m_ok = false;
            m_column = static_cast<int>(at - m_text.constData()) + 1;
            m_problem = problem;
        }
        return std::int64_t{0};
    }

    QByteArray m_text;
    const char* m_at;
    const char* m_end;
    double m_present;
    int m_depth = 0;
    bool m_ok = true;
    int m_column = 0;
    QString m_problem;
};

} // namespace

Expression Expression::evaluate(const QString& text, double present)
{
    // One byte a character: columns stay those of the text.
    QByteArray bytes = text.toLatin1();
    bytes.replace('\0', '?');
    return Parser(bytes, present).read();
}

QString expressionHelp()
{
    QStringList names;
    for (const Function& function : kFunctions)
        names << function.name;
    return QString("Expressions: + - * / ^ ( ) pi tau e inf nan, from the present number with *= 2"
                   "\n%1 (rad: from degrees)")
        .arg(names.join(' '));
}
