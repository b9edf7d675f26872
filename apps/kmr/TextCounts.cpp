#include "TextCounts.h"

#include <vector>

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ',' || c == '\f' || c == '\v';
}

bool isWordChar(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return u > 0x20 && u != 0x7f
           && std::string_view("\"#',.\\[]{}").find(c) == std::string_view::npos;
}

class Counter {
public:
    explicit Counter(std::string_view text) : m_text(text) {}

    TextCounts count()
    {
        while (skipSpace()) {
            const char c = m_text[m_at];
            if (c == '"') {
                skipString();
            } else if (isWordChar(c)) {
                takeWord();
            } else {
                takeBracket(c);
                ++m_at;
            }
        }
        return std::move(m_counts);
    }

private:
    enum class Block { Node, List, ProtoInterface, ProtoBody };
    enum class Expect { Nothing, Interface, ExternInterface, Body };

    /// To the next character that counts; false at the end.
    bool skipSpace()
    {
        while (m_at < m_text.size()) {
            if (m_text[m_at] == '#') {
                while (m_at < m_text.size() && m_text[m_at] != '\n' && m_text[m_at] != '\r')
                    ++m_at;
            } else if (isSpace(m_text[m_at])) {
                ++m_at;
            } else {
                return true;
            }
        }
        return false;
    }

    void skipString()
    {
        for (++m_at; m_at < m_text.size() && m_text[m_at] != '"'; ++m_at)
            if (m_text[m_at] == '\\')
                ++m_at;
        ++m_at;
    }

    std::string_view word()
    {
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && isWordChar(m_text[m_at]))
            ++m_at;
        return m_text.substr(begin, m_at - begin);
    }

    /// Names as readers take them: they may hold dots, quotes and pairs of brackets.
    void skipName()
    {
        if (!skipSpace())
            return;
        if (m_text[m_at] == '"')
            return skipString();
        int brackets = 0;
        for (const std::size_t begin = m_at; m_at < m_text.size(); ++m_at) {
            const char c = m_text[m_at];
            const bool ends = (c == ']' && brackets == 0) || (c == '[' && m_at == begin);
            if (ends || isSpace(c) || std::string_view("{}\"#").find(c) != std::string_view::npos)
                return;
            brackets += c == '[' ? 1 : c == ']' ? -1 : 0;
        }
    }

    void takeWord()
    {
        const std::string_view name = word();
        if (name == "DEF" || name == "USE") {
            ++(name == "DEF" ? m_counts.def : m_counts.use);
            skipName();
        } else if (name == "ROUTE") {
            ++m_counts.route;
            skipName();
        } else if (name == "ENGINE") {
            skipName();
            skipSpace();
            word(); // what follows is no node
        } else if (name == "PROTO" || name == "EXTERNPROTO") {
            const bool external = name[0] == 'E';
            ++(external ? m_counts.externproto : m_counts.proto);
            skipSpace();
            word();
            m_expect = external ? Expect::ExternInterface : Expect::Interface;
        } else if (skipSpace() && m_text[m_at] == '{') {
            auto& nodes = m_protoDepth > 0 ? m_counts.protoNodes : m_counts.nodes;
            const auto found = nodes.find(name);
            ++(found != nodes.end() ? found->second : nodes[std::string(name)]);
            m_blocks.push_back(Block::Node);
            ++m_at;
        }
    }

    void takeBracket(char c)
    {
        if (c == '[') {
            const bool interface = m_expect == Expect::Interface;
            m_blocks.push_back(interface ? Block::ProtoInterface : Block::List);
            m_protoDepth += interface;
            m_expect = Expect::Nothing;
        } else if (c == '{') {
            const bool body = m_expect == Expect::Body;
            m_blocks.push_back(body ? Block::ProtoBody : Block::Node);
            m_protoDepth += body;
            m_expect = Expect::Nothing;
        } else if ((c == ']' || c == '}') && !m_blocks.empty()) {
            const Block closed = m_blocks.back();
            m_blocks.pop_back();
            m_protoDepth -= closed == Block::ProtoInterface || closed == Block::ProtoBody;
            if (closed == Block::ProtoInterface)
                m_expect = Expect::Body;
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<Block> m_blocks;
    Expect m_expect = Expect::Nothing;
    int m_protoDepth = 0;
    TextCounts m_counts;
};

} // namespace

TextCounts countText(std::string_view text)
{
    return Counter(text).count();
}
