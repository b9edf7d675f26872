// Fields that the class of a node does not know: kept as text beside the node.
#include "SoSceneReader.h"

#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/io/SoUnknownNode.h>

namespace kalmyr::detail {

namespace {

bool isSeparator(char c)
{
    return c == ' ' || c == ',' || (c >= '\t' && c <= '\r');
}

} // namespace

bool SceneReader::keepField(SoNode* node, std::string_view name)
{
    text.peek();
    const char* begin = text.getText() + text.getOffset();
    if (!skipValue())
        return false;
    const char* end = text.getText() + text.getOffset();
    while (end > begin && isSeparator(end[-1]))
        --end;
    // What instances of prototypes are made of is written as the text of the prototype.
    if (m_protoDepth == 0)
        SoForeignFields::add(node, name, {begin, static_cast<std::size_t>(end - begin)});
    return true;
}

void SceneReader::keepUnused(const SoNode* root) const
{
    std::vector<const SoVRMLProto*> unused;
    for (const SoVRMLProto* proto = m_protos.get(); proto; proto = proto->getPrevious())
        if (proto->getNumInstances() == 0)
            unused.push_back(proto);
    for (auto proto = unused.rbegin(); proto != unused.rend(); ++proto)
        SoForeignFields::add(root,
                             ((*proto)->external ? "EXTERNPROTO " : "PROTO ")
                                 + std::string((*proto)->name.view()),
                             (*proto)->text);
}

const char* Vrml97Reader::nodeFieldType()
{
    const std::size_t at = text.getOffset();
    const bool isList = text.accept('[');
    std::string_view word;
    bool isNode = text.readWord(word);
    if (isNode && word != "DEF" && word != "USE")
        isNode = text.peek() == '{' || (word == "NULL" && !isList);
    text.setOffset(at);
    return !isNode ? nullptr : isList ? "MFNode" : "SFNode";
}

bool Vrml97Reader::readPieces(SoUnknownNode* node)
{
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word) || findFieldKind(word))
            return false;
        if (const int statement = tryStatement(word); statement != 0) {
            if (statement < 0)
                return false;
            continue;
        }
        const char* type = nodeFieldType();
        if (text.peek() == '{' || (!type && !keepField(node, word)))
            return false;
        if (!type)
            continue;
        SoField* field = node->declareField(SbName(type), SbName(word));
        node->setDeclaration(false);
        if (!field || !readFieldValue(*field))
            return false;
    }
    return true;
}

bool KalmyrReader::readKept(SoNode* node)
{
    std::string name, value;
    if (text.peek() != '"' || !text.readString(name) || text.peek() != '"'
        || !text.readString(value))
        return text.fail("expected the name and the text of a field in quotes");
    if (name.empty() && node->isOfType(SoUnknownNode::getClassTypeId()))
        static_cast<SoUnknownNode*>(node)->setBody(value);
    else
        SoForeignFields::add(node, name, value);
    return true;
}

bool KalmyrReader::keepDeclaration(SoNode* node)
{
    text.peek();
    const std::size_t begin = text.getOffset();
    if (!skipBlock('[', true))
        return false;
    const std::string_view all(text.getText() + begin, text.getOffset() - begin);
    text.setOffset(begin);
    text.expect('[');
    bool isForeign = false;
    while (!text.accept(']')) {
        std::string_view type, name;
        if (!text.readWord(type) || (findFieldKind(type) && !text.readWord(type)))
            return text.fail("expected a field type or ']'");
        if (!text.readWord(name))
            return text.fail("expected a field name");
        const SoFieldData* data = node->getFieldData();
        const SbName known = SbName::find(name);
        if (data && !known.isEmpty() && data->getIndex(known) >= 0)
            continue;
        m_declared[node].insert(name);
        isForeign = true;
    }
    if (isForeign)
        SoForeignFields::add(node, "fields", all);
    return true;
}

bool KalmyrReader::isDeclared(const SoNode* node, std::string_view name) const
{
    const auto found = m_declared.find(node);
    return found != m_declared.end() && found->second.count(name) > 0;
}

} // namespace kalmyr::detail
