#include "SoSceneReader.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/io/SoUnknownNode.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Field types under their names of VRML 1.0.
SbName currentFieldType(std::string_view type)
{
    if (type == "SFLong")
        return SbName("SFInt32");
    if (type == "MFLong")
        return SbName("MFInt32");
    return SbName(type);
}

} // namespace

SoType KalmyrReader::findType(std::string_view name) const
{
    const SbName known = SbName::find(name);
    return known.isEmpty() ? SoType() : SoType::fromName(known);
}

bool KalmyrReader::isLegalName(std::string_view name) const
{
    return !isDigit(name[0]) && name[0] != '-';
}

std::string_view KalmyrReader::ownName(std::string_view name) const
{
    const std::size_t plus = name.rfind('+');
    if (plus == std::string_view::npos)
        return name;
    const std::string_view number = name.substr(plus + 1);
    const bool instance = !number.empty() && std::all_of(number.begin(), number.end(), isDigit);
    return instance ? name.substr(0, plus) : name;
}

void KalmyrReader::afterValue(SoField& field)
{
    if (text.accept('~'))
        field.setIgnored(true);
}

bool KalmyrReader::readBody(SoNode* node, std::string_view typeName)
{
    SoChildList* children = node->getChildren();
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return failInBody(typeName, children ? "a field, a node or '}'" : "a field or '}'");
        const int read = tryField(node, word, typeName);
        if (read < 0)
            return false;
        if (read > 0)
            continue;
        if (!children)
            return text.failAt(static_cast<std::size_t>(word.data() - text.getText()),
                               "expected a field of '" + std::string(typeName) + "', not '"
                                   + std::string(word) + "'");
        SoNode* child = nullptr;
        if (!readNodeFrom(word, child))
            return false;
        if (child)
            children->append(child);
        text.reportProgress();
    }
    return true;
}

bool KalmyrReader::readUnknownBody(SoUnknownNode* node, std::string_view typeName)
{
    node->setUnknownTypeName(SbName(typeName));
    if (text.peekWord() != "fields") {
        // A node without anything in it says as much as one that declares that it has no fields.
        if (text.accept('}'))
            return true;
        warnOnce("type " + std::string(typeName), typeName.data(),
                 "node type '" + std::string(typeName) + "' is unknown; it is kept as text");
        return readSkippedBody(node, true);
    }
    if (!readDeclaration(node))
        return false;
    return readBody(node, typeName);
}

bool KalmyrReader::readDeclaration(SoUnknownNode* node)
{
    text.acceptWord("fields");
    node->setDeclaration(true);
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::string_view type, name;
        if (!text.readWord(type))
            return text.fail("expected a field type or ']'");
        if (!text.readWord(name))
            return text.fail("expected a field name");
        if (!node->declareField(currentFieldType(type), SbName(name)))
            return text.failAt(static_cast<std::size_t>(type.data() - text.getText()),
                               "expected a known field type and a new name, not '"
                                   + std::string(type) + " " + std::string(name) + "'");
    }
    return true;
}

} // namespace kalmyr::detail
