#include "core/FieldText.h"

#include <utility>

namespace kalmyr::detail {

namespace {

NodeTextFunctions s_functions;

/// Notices that a value holds nodes or engines.
class PlainWriter final : public SoFieldWriter {
public:
    using SoFieldWriter::SoFieldWriter;
    void writeNode(const SoNode* node) override
    {
        holdsNodes |= node != nullptr;
        SoFieldWriter::writeNode(node);
    }
    void writeEngine(const SoEngine* engine) override
    {
        holdsNodes |= engine != nullptr;
        SoFieldWriter::writeEngine(engine);
    }

    bool holdsNodes = false;
};

class PlainReader final : public SoFieldReader {
public:
    using SoFieldReader::SoFieldReader;
    ~PlainReader() override { s_plain = m_outer; }
    static PlainReader* of(const SoFieldReader& in) { return s_plain == &in ? s_plain : nullptr; }
    bool readNode(SoNode*& node) override
    {
        const bool isNull = SoFieldReader::readNode(node);
        holdsNodes |= !isNull;
        return isNull;
    }
    bool readEngine(SoEngine*& engine) override
    {
        const bool isNull = SoFieldReader::readEngine(engine);
        holdsNodes |= !isNull;
        return isNull;
    }
    /// Declarations and connections stand beside nodes only.
    bool readStatements()
    {
        constexpr std::string_view kWords[] = {"ROUTE", "ENGINE", "GLOBAL", "PROTO", "EXTERNPROTO"};
        const std::string_view next = text.peekWord();
        for (const std::string_view word : kWords)
            holdsNodes |= next == word;
        return !holdsNodes || text.fail("expected a value");
    }

    bool holdsNodes = false;

private:
    static thread_local PlainReader* s_plain; ///< the innermost one
    PlainReader* m_outer = std::exchange(s_plain, this);
};

thread_local PlainReader* PlainReader::s_plain = nullptr;

} // namespace

void setNodeTextFunctions(const NodeTextFunctions& functions)
{
    s_functions = functions;
}

std::string writeValueText(const WriteValue& value)
{
    std::string text;
    PlainWriter writer(text);
    value(writer);
    return writer.holdsNodes && s_functions.write ? s_functions.write(value) : text;
}

bool readStatements(SoFieldReader& in)
{
    if (PlainReader* plain = PlainReader::of(in))
        return plain->readStatements();
    return !s_functions.readStatements || s_functions.readStatements(in);
}

bool readValueText(std::string_view text, const ReadValue& value, TextFault& fault)
{
    SoTokenizer tokens(text.data(), text.size());
    PlainReader reader(tokens);
    if (value(reader))
        return true;
    if (reader.holdsNodes && s_functions.read)
        return s_functions.read(text, value, fault);
    fault = {tokens.getErrorLine(), tokens.getErrorColumn(), tokens.getError()};
    return false;
}

} // namespace kalmyr::detail
