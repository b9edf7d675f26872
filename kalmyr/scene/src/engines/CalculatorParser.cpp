#include "CalculatorProgram.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

namespace kalmyr::detail {

namespace {

using Op = CalculatorProgram::Op;

struct Constant {
    const char* name;
    double value;
};
constexpr Constant kConstants[] = {
    {"M_E", std::numbers::e},
    {"M_LOG2E", std::numbers::log2e},
    {"M_LOG10E", std::numbers::log10e},
    {"M_LN2", std::numbers::ln2},
    {"M_LN10", std::numbers::ln10},
    {"M_PI", std::numbers::pi},
    {"M_PI_2", std::numbers::pi / 2},
    {"M_PI_4", std::numbers::pi / 4},
    {"M_SQRT2", std::numbers::sqrt2},
    {"M_SQRT1_2", std::numbers::sqrt2 / 2},
    {"MAXFLOAT", static_cast<double>(std::numeric_limits<float>::max())},
    {"MINFLOAT", static_cast<double>(std::numeric_limits<float>::min())},
};

struct Function1 {
    const char* name;
    double (*call)(double);
};
constexpr Function1 kFunctions1[] = {
    {"sin", [](double x) { return std::sin(x); }},
    {"cos", [](double x) { return std::cos(x); }},
    {"tan", [](double x) { return std::tan(x); }},
    {"asin", [](double x) { return std::asin(x); }},
    {"acos", [](double x) { return std::acos(x); }},
    {"atan", [](double x) { return std::atan(x); }},
    {"sinh", [](double x) { return std::sinh(x); }},
    {"cosh", [](double x) { return std::cosh(x); }},
    {"tanh", [](double x) { return std::tanh(x); }},
    {"sqrt", [](double x) { return std::sqrt(x); }},
    {"exp", [](double x) { return std::exp(x); }},
    {"log", [](double x) { return std::log(x); }},
    {"log10", [](double x) { return std::log10(x); }},
    {"ceil", [](double x) { return std::ceil(x); }},
    {"floor", [](double x) { return std::floor(x); }},
    {"fabs", [](double x) { return std::fabs(x); }},
};

struct Function2 {
    const char* name;
    double (*call)(double, double);
};
constexpr Function2 kFunctions2[] = {
    {"atan2", [](double y, double x) { return std::atan2(y, x); }},
    {"pow", [](double x, double y) { return std::pow(x, y); }},
    {"fmod", [](double x, double y) { return std::fmod(x, y); }},
};

/// Functions that know about vectors.
struct Special {
    const char* name;
    Op op;
    bool givesVector;
    bool takesVectors;
    int count;
};
constexpr Special kSpecials[] = {
    {"rand", Op::RANDOM, false, false, 1},
    {"cross", Op::CROSS, true, true, 2},
    {"dot", Op::DOT, false, true, 2},
    {"length", Op::LENGTH, false, true, 1},
    {"normalize", Op::NORMALIZE, true, true, 1},
    {"vec3f", Op::MAKE_VECTOR, true, false, 3},
};

struct Operator {
    const char* text;
    Op op;
    int precedence;
};
/// Longer texts before those that they begin with.
constexpr Operator kOperators[] = {
    {"||", Op::OR, 1},        {"&&", Op::AND, 2},        {"==", Op::EQUAL, 3},
    {"!=", Op::NOT_EQUAL, 3}, {"<=", Op::LESS_EQUAL, 4}, {">=", Op::GREATER_EQUAL, 4},
    {"<", Op::LESS, 4},       {">", Op::GREATER, 4},     {"+", Op::ADD, 5},
    {"-", Op::SUBTRACT, 5},   {"*", Op::MULTIPLY, 6},    {"/", Op::DIVIDE, 6},
    {"%", Op::MODULO, 6},
};

template <class T>
const T* find(std::span<const T> all, std::string_view name)
{
    for (const T& one : all)
        if (name == one.name)
            return &one;
    return nullptr;
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

/// Recursive descent; every method returns the index of a node, or -1 after a fault.
class CalculatorParser {
public:
    CalculatorParser(std::string_view text, CalculatorProgram& program)
        : m_text(text), m_program(program)
    {
    }

    bool parse();
    const std::string& getFault() const { return m_fault; }
    std::size_t getOffset() const { return m_faultAt; }

private:
    using Node = CalculatorProgram::Node;

    void skip();
    bool accept(std::string_view token);
    bool expect(const char* token);
    std::string_view word();
    int fail(const std::string& what);
    int failAt(std::size_t at, const std::string& what);
    int add(const Node& node);
    bool isVector(int node) const
    {
        return m_program.m_nodes[static_cast<std::size_t>(node)].isVector;
    }

    static bool findVariable(std::string_view name, bool& vector, int& index);
    bool statement();
    bool component(int& index);
    int conditional();
    int binary(int precedence);
    int combine(Op op, int a, int b, std::size_t at);
    int unary();
    int primary();
    int literal();
    int named(std::string_view name, std::size_t at);
    int call(std::string_view name, std::size_t at);
    bool arguments(Node& node, int count, bool vectors);

    std::string_view m_text;
    CalculatorProgram& m_program;
    std::size_t m_at = 0;
    int m_depth = 0;
    std::string m_fault;
    std::size_t m_faultAt = 0;
};

void CalculatorParser::skip()
{
    while (m_at < m_text.size() && std::string_view(" \t\r\n").find(m_text[m_at]) != m_text.npos)
        ++m_at;
}

bool CalculatorParser::accept(std::string_view token)
{
    skip();
    if (m_text.substr(m_at, token.size()) != token)
        return false;
    m_at += token.size();
    return true;
}

bool CalculatorParser::expect(const char* token)
{
    return accept(token) || (fail(std::string("expected '") + token + "'"), false);
}

std::string_view CalculatorParser::word()
{
    skip();
    const std::size_t begin = m_at;
    while (m_at < m_text.size()
           && (isLetter(m_text[m_at]) || (m_at > begin && isDigit(m_text[m_at]))))
        ++m_at;
    return m_text.substr(begin, m_at - begin);
}

int CalculatorParser::fail(const std::string& what)
{
    skip();
    return failAt(m_at, what);
}

int CalculatorParser::failAt(std::size_t at, const std::string& what)
{
    if (m_fault.empty()) {
        m_fault = what;
        m_faultAt = at;
    }
    return -1;
}

int CalculatorParser::add(const Node& node)
{
    if (m_program.m_nodes.size() >= CalculatorProgram::kMaxNodes)
        return fail("expected a shorter expression");
    m_program.m_nodes.push_back(node);
    return static_cast<int>(m_program.m_nodes.size()) - 1;
}

bool CalculatorParser::findVariable(std::string_view name, bool& vector, int& index)
{
    using Variables = CalculatorVariables;
    int first = 0, count = Variables::kNumInputs;
    if (name.size() == 2 && (name[0] == 'o' || name[0] == 't')) {
        first = name[0] == 'o' ? Variables::kFirstOutput : Variables::kFirstTemporary;
        count = name[0] == 'o' ? Variables::kNumOutputs : Variables::kCount - first;
        name.remove_prefix(1);
    }
    if (name.size() != 1)
        return false;
    vector = name[0] >= 'A' && name[0] <= 'Z';
    const int letter = name[0] - (vector ? 'A' : 'a');
    index = first + letter;
    return letter >= 0 && letter < count;
}

bool CalculatorParser::parse()
{
    while (accept(";")) {
    }
    skip();
    while (m_at < m_text.size()) {
        if (!statement())
            return false;
        skip();
        if (m_at < m_text.size() && !expect(";"))
            return false;
        while (accept(";")) {
        }
        skip();
    }
    return true;
}

bool CalculatorParser::component(int& index)
{
    skip();
    if (m_at >= m_text.size() || m_text[m_at] < '0' || m_text[m_at] > '2')
        return fail("expected 0, 1 or 2"), false;
    index = m_text[m_at++] - '0';
    return expect("]");
}

bool CalculatorParser::statement()
{
    skip();
    const std::size_t at = m_at;
    CalculatorProgram::Assignment to;
    if (!findVariable(word(), to.isVector, to.variable)
        || to.variable < CalculatorVariables::kFirstOutput)
        return failAt(at, "expected an output or a temporary variable"), false;
    if (to.isVector && accept("[") && !component(to.component))
        return false;
    if (!expect("="))
        return false;
    skip();
    const std::size_t valueAt = m_at;
    to.value = conditional();
    if (to.value < 0)
        return false;
    const bool wantsVector = to.isVector && to.component < 0;
    if (isVector(to.value) != wantsVector)
        return failAt(valueAt, wantsVector ? "expected a vector" : "expected a number"), false;
    m_program.m_assignments.push_back(to);
    m_program.m_set[to.isVector ? 1 : 0] |= 1u << to.variable;
    return true;
}

int CalculatorParser::conditional()
{
    if (++m_depth > CalculatorProgram::kMaxNesting)
        return fail("expected less nesting");
    Node node{Op::CHOOSE};
    node.a = binary(1);
    if (node.a < 0 || !accept("?")) {
        --m_depth;
        return node.a;
    }
    if (isVector(node.a))
        return fail("expected a number in front of '?'");
    node.b = conditional();
    if (node.b < 0 || !expect(":"))
        return -1;
    node.c = conditional();
    if (node.c < 0)
        return -1;
    if (isVector(node.b) != isVector(node.c))
        return fail("expected two numbers or two vectors around ':'");
    node.isVector = isVector(node.b);
    --m_depth;
    return add(node);
}

int CalculatorParser::binary(int precedence)
{
    int left = unary();
    while (left >= 0) {
        skip();
        const std::size_t at = m_at;
        const Operator* found = nullptr;
        for (const Operator& o : kOperators)
            if (!found && m_text.substr(m_at, std::string_view(o.text).size()) == o.text)
                found = &o;
        if (!found || found->precedence < precedence)
            return left;
        m_at += std::string_view(found->text).size();
        const int right = binary(found->precedence + 1);
        left = right < 0 ? -1 : combine(found->op, left, right, at);
    }
    return left;
}

int CalculatorParser::combine(Op op, int a, int b, std::size_t at)
{
    Node node{op};
    const bool first = isVector(a), second = isVector(b);
    bool fits = !first && !second;
    if (op == Op::ADD || op == Op::SUBTRACT || op == Op::EQUAL || op == Op::NOT_EQUAL)
        fits = first == second;
    else if (op == Op::MULTIPLY)
        fits = !(first && second);
    else if (op == Op::DIVIDE)
        fits = !second;
    if (!fits)
        return failAt(at, "expected operands that this operator takes");
    node.isVector = (first || second) && op != Op::EQUAL && op != Op::NOT_EQUAL;
    node.a = op == Op::MULTIPLY && second ? b : a;
    node.b = op == Op::MULTIPLY && second ? a : b;
    return add(node);
}

int CalculatorParser::unary()
{
    if (++m_depth > CalculatorProgram::kMaxNesting)
        return fail("expected less nesting");
    skip();
    Node node{Op::NEGATE};
    if (accept("!"))
        node.op = Op::NOT;
    else if (!accept("-")) {
        --m_depth;
        return primary();
    }
    node.a = unary();
    --m_depth;
    if (node.a < 0)
        return -1;
    if (node.op == Op::NOT && isVector(node.a))
        return fail("expected a number behind '!'");
    node.isVector = isVector(node.a);
    return add(node);
}

int CalculatorParser::primary()
{
    skip();
    if (accept("(")) {
        const int inner = conditional();
        return inner >= 0 && expect(")") ? inner : -1;
    }
    if (m_at < m_text.size() && (isDigit(m_text[m_at]) || m_text[m_at] == '.'))
        return literal();
    const std::size_t at = m_at;
    const std::string_view name = word();
    if (name.empty())
        return fail("expected a value");
    return accept("(") ? call(name, at) : named(name, at);
}

int CalculatorParser::literal()
{
    Node node;
    const char* begin = m_text.data() + m_at;
    const auto result = std::from_chars(begin, m_text.data() + m_text.size(), node.number);
    if (result.ec != std::errc())
        return fail("expected a number");
    m_at += static_cast<std::size_t>(result.ptr - begin);
    return add(node);
}

int CalculatorParser::named(std::string_view name, std::size_t at)
{
    Node node;
    if (const Constant* constant = find<Constant>(kConstants, name)) {
        node.number = constant->value;
        return add(node);
    }
    node.op = Op::VARIABLE;
    if (!findVariable(name, node.isVector, node.index))
        return failAt(at, "expected a variable, a constant or a function, not '" + std::string(name)
                              + "'");
    m_program.m_used[node.isVector ? 1 : 0] |= 1u << node.index;
    const int variable = add(node);
    if (variable < 0 || !node.isVector || !accept("["))
        return variable;
    Node part{Op::COMPONENT};
    part.a = variable;
    return component(part.index) ? add(part) : -1;
}

bool CalculatorParser::arguments(Node& node, int count, bool vectors)
{
    int* const places[] = {&node.a, &node.b, &node.c};
    for (int i = 0; i < count; ++i) {
        if (i > 0 && !expect(","))
            return false;
        skip();
        const std::size_t at = m_at;
        *places[i] = conditional();
        if (*places[i] < 0)
            return false;
        if (isVector(*places[i]) != vectors)
            return failAt(at, vectors ? "expected a vector" : "expected a number"), false;
    }
    return expect(")");
}

int CalculatorParser::call(std::string_view name, std::size_t at)
{
    Node node;
    int count = 1;
    bool vectors = false;
    if (const Function1* f = find<Function1>(kFunctions1, name)) {
        node.op = Op::CALL1;
        node.call1 = f->call;
    } else if (const Function2* g = find<Function2>(kFunctions2, name)) {
        node.op = Op::CALL2;
        node.call2 = g->call;
        count = 2;
    } else if (const Special* s = find<Special>(kSpecials, name)) {
        node.op = s->op;
        node.isVector = s->givesVector;
        vectors = s->takesVectors;
        count = s->count;
    } else {
        return failAt(at, "expected the name of a function, not '" + std::string(name) + "'");
    }
    return arguments(node, count, vectors) ? add(node) : -1;
}

std::unique_ptr<CalculatorProgram> CalculatorProgram::parse(std::string_view text,
                                                            std::string& fault, std::size_t& offset)
{
    auto program = std::make_unique<CalculatorProgram>();
    CalculatorParser parser(text, *program);
    if (parser.parse())
        return program;
    fault = parser.getFault();
    offset = parser.getOffset();
    return nullptr;
}

} // namespace kalmyr::detail
