#include "mirabo/plugins/defaults/Expression.h"

#include <QLocale>

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace {

double valueOf(const char* text, double present = 0)
{
    const Expression read = Expression::evaluate(text, present);
    EXPECT_TRUE(read.isValid) << text << ": " << read.problem.toStdString();
    return read.number;
}

} // namespace

TEST(ExpressionTest, ComputesWhatPeopleType)
{
    const QLocale locale = QLocale();
    QLocale::setDefault(QLocale(QLocale::German));
    const struct {
        const char* text;
        double number;
    } cases[] = {
        {"1", 1},
        {" .5 ", 0.5},
        {"1.", 1},
        {"1e3", 1000},
        {"2*pi", 2 * std::numbers::pi},
        {"tau/2", std::numbers::pi},
        {"1+2*3", 7},
        {"(1+2)*3", 9},
        {"8-3-2", 3},
        {"12/4/3", 1},
        {"2^3^2", 512},
        {"-2^2", -4},
        {"2^-1", 0.5},
        {"--3", 3},
        {"0x1F", 31},
        {"0xff+1", 256},
        {"sqrt(16)", 4},
        {"min(2, -3)", -3},
        {"max(2,(3))", 3},
        {"rad(180)", std::numbers::pi},
        {"deg(pi)", 180},
        {"SIN(pi/2)", 1},
        {"atan2(1,1)*4", std::numbers::pi},
        {"round(2.5)", 3},
    };
    for (const auto& [text, number] : cases)
        EXPECT_DOUBLE_EQ(valueOf(text), number) << text;
    QLocale::setDefault(locale);
}

TEST(ExpressionTest, ComputesWholeNumbersExactly)
{
    // Beyond what doubles hold on the way, and back.
    EXPECT_EQ(valueOf("4294967295 * 2147483647 - 4294967295 * 2147483646"), 4294967295.0);
    EXPECT_EQ(valueOf("9007199254740993 - 9007199254740992"), 1);
    EXPECT_EQ(valueOf("(7/2)*2"), 7);
    EXPECT_EQ(valueOf("-9223372036854775807 - 1"), -9223372036854775808.0);
}

TEST(ExpressionTest, GoesOnFromThePresentNumber)
{
    EXPECT_EQ(valueOf("*= 2", 1.5), 3);
    EXPECT_EQ(valueOf("+=1", -1), 0);
    EXPECT_EQ(valueOf(" -= 2*3", 10), 4);
    EXPECT_EQ(valueOf("/=4", 1), 0.25);
    EXPECT_EQ(valueOf("^=2", 3), 9);
    EXPECT_EQ(valueOf("-3", 10), -3) << "a sign alone is no operator";
}

TEST(ExpressionTest, KeepsSpecialNumbers)
{
    EXPECT_EQ(valueOf("inf"), HUGE_VAL);
    EXPECT_EQ(valueOf("-infinity"), -HUGE_VAL);
    EXPECT_TRUE(std::isnan(valueOf("NaN")));
    EXPECT_TRUE(std::signbit(valueOf("-0")));
    EXPECT_EQ(valueOf("1e-320"), 1e-320);
}

TEST(ExpressionTest, TellsWhereAndWhatIsWrong)
{
    const struct {
        const char* text;
        int column;
        const char* part;
    } cases[] = {
        {"", 1, "expected a number"},
        {"1+", 3, "expected a number"},
        {"1 2", 3, "operator or the end"},
        {"1,5", 2, "decimals have a point"},
        {"(1", 3, "expected ')'"},
        {"(1 2)", 4, "operator or ')'"},
        {"2*foo", 3, "there is no \"foo\""},
        {"sin 1", 5, "expected '(' after sin"},
        {"min(1)", 6, "two numbers"},
        {"1/0", 2, "division by zero"},
        {"0/0", 2, "division by zero"},
        {"sqrt(-1)", 1, "no value"},
        {"1e999", 1, "beyond the range"},
        {"1e300*1e300", 6, "too large"},
        {"*=", 3, "expected a number"},
        {"3 = 4", 3, "operator or the end"},
        {"1\u00e4", 2, "operator or the end"},
        {"\u4e00", 1, "expected a number"},
    };
    for (const auto& [text, column, part] : cases) {
        const Expression read = Expression::evaluate(QString::fromUtf8(text));
        EXPECT_FALSE(read.isValid) << text;
        EXPECT_EQ(read.column, column) << text;
        EXPECT_NE(read.problem.indexOf(QString::fromUtf8(part)), -1)
            << text << ": " << read.problem.toStdString();
    }
}

TEST(ExpressionTest, LimitsTheDepth)
{
    constexpr int kMany = 100'000;
    for (const char* part : {"(", "-", "2^", "sin(", "1+("}) {
        const Expression read = Expression::evaluate(QString(part).repeated(kMany));
        EXPECT_FALSE(read.isValid) << part;
        EXPECT_NE(read.problem.indexOf("within each other"), -1) << part;
    }
    // Long, but flat.
    EXPECT_EQ(valueOf(qPrintable(QString("1") + QString("+1").repeated(kMany - 1))), kMany);
}
