#include "SoSceneReader.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/io/SoUnknownNode.h>

namespace kalmyr::detail {

SoType Vrml97Reader::findType(std::string_view name) const
{
    const SbName known = SbName::find("VRML" + std::string(name));
    return known.isEmpty() ? SoType() : SoType::fromName(known);
}

bool Vrml97Reader::isLegalName(std::string_view name) const
{
    const char c = name[0];
    return !(c >= '0' && c <= '9') && c != '+' && c != '-';
}

bool Vrml97Reader::readTop(SoNode*& node)
{
    node = nullptr;
    if (text.hasFailed())
        return false;
    while (!node) {
        if (text.atEnd())
            return true;
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node");
        const int skipped = tryStatement(word);
        if (skipped < 0 || (skipped == 0 && !readNodeFrom(word, node)))
            return false;
        text.reportProgress();
    }
    return true;
}

bool Vrml97Reader::readBody(SoNode* node, std::string_view typeName)
{
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return failInBody(typeName, "a field or '}'");
        int read = tryField(node, word, typeName);
        if (read == 0)
            read = tryStatement(word);
        if (read < 0)
            return false;
        if (read == 0)
            return text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                               "expected a field of '" + std::string(typeName) + "', not '"
                                   + std::string(word) + "'");
    }
    return true;
}

bool Vrml97Reader::readUnknownBody(SoUnknownNode* node, std::string_view typeName)
{
    node->setUnknownTypeName(SbName(typeName));
    const std::string name(typeName);
    if (m_prototypes.count(typeName)) {
        warnOnce("prototype " + name, typeName.data(), "prototype '" + name + "' is not expanded");
    } else if (name == "Script") {
        warnOnce("script", typeName.data(), "scripts are not run");
    } else {
        warnOnce("type " + name, typeName.data(),
                 "node type '" + name + "' is unknown; it is kept as text");
    }
    return readSkippedBody(node, true);
}

int Vrml97Reader::tryStatement(std::string_view word)
{
    if (word == "ROUTE")
        return skipRoute(word) ? 1 : -1;
    if (word == "PROTO")
        return skipPrototype(false) ? 1 : -1;
    if (word == "EXTERNPROTO")
        return skipPrototype(true) ? 1 : -1;
    return 0;
}

bool Vrml97Reader::skipRoute(std::string_view word)
{
    const auto end = [this] {
        std::string_view name;
        if (!text.readWord(name))
            return text.fail("expected the name of a node");
        if (!text.expect('.'))
            return false;
        return text.readWord(name) || text.fail("expected the name of a field");
    };
    if (!end())
        return false;
    if (!text.acceptWord("TO"))
        return text.fail("expected 'TO'");
    if (!end())
        return false;
    warnOnce("route", word.data(), "routes are not connected; the scene stands still");
    return true;
}

bool Vrml97Reader::skipPrototype(bool external)
{
    std::string_view name;
    if (!text.readWord(name))
        return text.fail("expected the name of a prototype");
    if (!skipBlock('[', false))
        return false;
    m_prototypes.insert(name);
    if (!external)
        return skipBlock('{', false);
    if (text.peek() == '[')
        return skipBlock('[', false);
    std::string url;
    return text.readString(url);
}

} // namespace kalmyr::detail
