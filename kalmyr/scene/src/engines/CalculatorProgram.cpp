#include "CalculatorProgram.h"

#include <cmath>
#include <random>

namespace kalmyr::detail {

namespace {

/// The same sequence in every run of the process: pictures of tests must not change.
double randomBelow(double limit)
{
    static std::minstd_rand engine(1);
    return limit * static_cast<double>(engine() - std::minstd_rand::min())
           / static_cast<double>(std::minstd_rand::max() - std::minstd_rand::min());
}

double dot(const CalculatorValue& a, const CalculatorValue& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

CalculatorValue cross(const CalculatorValue& a, const CalculatorValue& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

CalculatorValue scaled(const CalculatorValue& a, double by)
{
    return {a[0] * by, a[1] * by, a[2] * by};
}

CalculatorValue sum(const CalculatorValue& a, const CalculatorValue& b, double sign)
{
    return {a[0] + sign * b[0], a[1] + sign * b[1], a[2] + sign * b[2]};
}

} // namespace

bool CalculatorProgram::equal(const Node& n, const CalculatorVariables& v) const
{
    return m_nodes[static_cast<std::size_t>(n.a)].isVector ? vector(n.a, v) == vector(n.b, v)
                                                           : number(n.a, v) == number(n.b, v);
}

double CalculatorProgram::logical(const Node& n, const CalculatorVariables& v) const
{
    switch (n.op) {
    case Op::NOT:
        return number(n.a, v) == 0;
    case Op::LESS:
        return number(n.a, v) < number(n.b, v);
    case Op::LESS_EQUAL:
        return number(n.a, v) <= number(n.b, v);
    case Op::GREATER:
        return number(n.a, v) > number(n.b, v);
    case Op::GREATER_EQUAL:
        return number(n.a, v) >= number(n.b, v);
    case Op::EQUAL:
        return equal(n, v);
    case Op::NOT_EQUAL:
        return !equal(n, v);
    case Op::AND:
        return number(n.a, v) != 0 && number(n.b, v) != 0;
    default:
        return number(n.a, v) != 0 || number(n.b, v) != 0;
    }
}

double CalculatorProgram::number(int node, const CalculatorVariables& v) const
{
    const Node& n = m_nodes[static_cast<std::size_t>(node)];
    switch (n.op) {
    case Op::CONSTANT:
        return n.number;
    case Op::VARIABLE:
        return v.numbers[static_cast<std::size_t>(n.index)];
    case Op::COMPONENT:
        return vector(n.a, v)[static_cast<std::size_t>(n.index)];
    case Op::NEGATE:
        return -number(n.a, v);
    case Op::ADD:
        return number(n.a, v) + number(n.b, v);
    case Op::SUBTRACT:
        return number(n.a, v) - number(n.b, v);
    case Op::MULTIPLY:
        return number(n.a, v) * number(n.b, v);
    case Op::DIVIDE:
        return number(n.a, v) / number(n.b, v);
    case Op::MODULO:
        return std::fmod(number(n.a, v), number(n.b, v));
    case Op::CHOOSE:
        return number(n.a, v) != 0 ? number(n.b, v) : number(n.c, v);
    case Op::CALL1:
        return n.call1(number(n.a, v));
    case Op::CALL2:
        return n.call2(number(n.a, v), number(n.b, v));
    case Op::RANDOM:
        return randomBelow(number(n.a, v));
    case Op::DOT:
        return dot(vector(n.a, v), vector(n.b, v));
    case Op::LENGTH:
        return std::sqrt(dot(vector(n.a, v), vector(n.a, v)));
    default:
        return logical(n, v);
    }
}

CalculatorValue CalculatorProgram::vector(int node, const CalculatorVariables& v) const
{
    const Node& n = m_nodes[static_cast<std::size_t>(node)];
    switch (n.op) {
    case Op::VARIABLE:
        return v.vectors[static_cast<std::size_t>(n.index)];
    case Op::NEGATE:
        return scaled(vector(n.a, v), -1);
    case Op::ADD:
        return sum(vector(n.a, v), vector(n.b, v), 1);
    case Op::SUBTRACT:
        return sum(vector(n.a, v), vector(n.b, v), -1);
    case Op::MULTIPLY: // the parser puts the vector first
        return scaled(vector(n.a, v), number(n.b, v));
    case Op::DIVIDE:
        return scaled(vector(n.a, v), 1 / number(n.b, v));
    case Op::CHOOSE:
        return number(n.a, v) != 0 ? vector(n.b, v) : vector(n.c, v);
    case Op::CROSS:
        return cross(vector(n.a, v), vector(n.b, v));
    case Op::NORMALIZE: {
        const CalculatorValue value = vector(n.a, v);
        const double length = std::sqrt(dot(value, value));
        return length > 0 ? scaled(value, 1 / length) : value;
    }
    default: // MAKE_VECTOR
        return {number(n.a, v), number(n.b, v), number(n.c, v)};
    }
}

void CalculatorProgram::run(CalculatorVariables& variables) const
{
    for (const Assignment& a : m_assignments) {
        const auto at = static_cast<std::size_t>(a.variable);
        if (!a.isVector)
            variables.numbers[at] = number(a.value, variables);
        else if (a.component < 0)
            variables.vectors[at] = vector(a.value, variables);
        else
            variables.vectors[at][static_cast<std::size_t>(a.component)] =
                number(a.value, variables);
    }
}

} // namespace kalmyr::detail
