#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// A number or a vector of three; numbers use the first place.
using CalculatorValue = std::array<double, 3>;

/// The variables of one run: a to h, oa to od, ta to th, and the same as vectors.
struct CalculatorVariables {
    static constexpr int kNumInputs = 8;
    static constexpr int kNumOutputs = 4;
    static constexpr int kFirstOutput = kNumInputs;
    static constexpr int kFirstTemporary = kNumInputs + kNumOutputs;
    static constexpr int kCount = kFirstTemporary + 8;

    std::array<double, kCount> numbers{};
    std::array<CalculatorValue, kCount> vectors{};
};

/// Expressions ready to run: trees of operations, in one array.
class CalculatorProgram {
public:
    enum class Op : std::uint8_t {
        CONSTANT,
        VARIABLE,
        COMPONENT, ///< of a vector; `index` says which
        NEGATE,
        NOT,
        ADD,
        SUBTRACT,
        MULTIPLY,
        DIVIDE,
        MODULO,
        LESS,
        LESS_EQUAL,
        GREATER,
        GREATER_EQUAL,
        EQUAL,
        NOT_EQUAL,
        AND,
        OR,
        CHOOSE,
        CALL1, ///< a function of one number
        CALL2, ///< a function of two numbers
        RANDOM,
        CROSS,
        DOT,
        LENGTH,
        NORMALIZE,
        MAKE_VECTOR
    };
    struct Node {
        Op op = Op::CONSTANT;
        bool isVector = false;
        int index = 0; ///< variable or component
        int a = -1, b = -1, c = -1;
        double number = 0;
        double (*call1)(double) = nullptr;
        double (*call2)(double, double) = nullptr;
    };
    struct Assignment {
        bool isVector = false;
        int variable = 0;
        int component = -1; ///< of a vector; -1 for all of it
        int value = -1;     ///< node
    };
    /// Longer programs are refused.
    static constexpr std::size_t kMaxNodes = 10000;
    static constexpr int kMaxNesting = 200;

    /// The program of a text; null, with what is wrong and the offset of it, for a faulty one.
    static std::unique_ptr<CalculatorProgram> parse(std::string_view text, std::string& fault,
                                                    std::size_t& offset);

    void run(CalculatorVariables& variables) const;
    /// Whether an input or output is read or set.
    bool uses(bool vector, int variable) const { return m_used[vector ? 1 : 0] >> variable & 1; }
    bool sets(bool vector, int variable) const { return m_set[vector ? 1 : 0] >> variable & 1; }

private:
    friend class CalculatorParser;
    double number(int node, const CalculatorVariables& v) const;
    CalculatorValue vector(int node, const CalculatorVariables& v) const;
    bool equal(const Node& n, const CalculatorVariables& v) const;
    double logical(const Node& n, const CalculatorVariables& v) const;

    std::vector<Node> m_nodes;
    std::vector<Assignment> m_assignments;
    std::uint32_t m_used[2] = {0, 0};
    std::uint32_t m_set[2] = {0, 0};
};

} // namespace kalmyr::detail
