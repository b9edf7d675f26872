#include "DeclarationReader.h"

#include "NodeReader.h"

#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/vrml/SoVRMLScript.h>

#include <algorithm>
#include <array>

namespace kalmyr::detail {

namespace {

struct Kind {
    std::string_view word;
    SoField::FieldType type;
};
constexpr std::array kKinds{
    Kind{"field", SoField::ORDINARY},
    Kind{"exposedField", SoField::EXPOSED},
    Kind{"eventIn", SoField::EVENT_IN},
    Kind{"eventOut", SoField::EVENT_OUT},
    // As later versions of the language call them.
    Kind{"initializeOnly", SoField::ORDINARY},
    Kind{"inputOutput", SoField::EXPOSED},
    Kind{"inputOnly", SoField::EVENT_IN},
    Kind{"outputOnly", SoField::EVENT_OUT},
};

/// Field types under their names of VRML 1.0.
SbName currentFieldType(std::string_view type)
{
    if (type == "SFLong")
        return SbName("SFInt32");
    if (type == "MFLong")
        return SbName("MFInt32");
    return SbName(type);
}

bool declareField(SoNode* node, const SbName& type, const SbName& name, SoField::FieldType kind)
{
    if (node->isOfType(SoUnknownNode::getClassTypeId())) {
        auto* unknown = static_cast<SoUnknownNode*>(node);
        SoField* field = unknown->declareField(type, name);
        if (!field)
            return false;
        unknown->setDeclaration(true);
        field->setFieldType(kind);
        return true;
    }
    if (node->isOfType(SoVRMLScript::getClassTypeId()))
        return static_cast<SoVRMLScript*>(node)->getDeclared().declare(type, name, kind) != nullptr;
    return false;
}

} // namespace

const SoField::FieldType* findFieldKind(std::string_view word)
{
    const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                    [word](const Kind& kind) { return kind.word == word; });
    return found == kKinds.end() ? nullptr : &found->type;
}

void warnOfLaterKind(SceneText& scene, std::string_view word)
{
    constexpr std::size_t kFirstLater = 4;
    const auto later = std::find_if(kKinds.begin() + kFirstLater, kKinds.end(),
                                    [word](const Kind& kind) { return kind.word == word; });
    if (later != kKinds.end())
        scene.warnOnce("kind " + std::string(word), word.data(),
                       quoted(word) + " is a word of later versions");
}

Parsed DeclarationReader::tryInScript(SoVRMLScript* script, std::string_view word)
{
    SoTokenizer& text = m_scene.getTokens();
    const SoField::FieldType* kind = findFieldKind(word);
    if (!kind)
        return Parsed::No;
    warnOfLaterKind(m_scene, word);
    std::string_view type, name;
    if (!text.readWord(type) || !text.readName(name))
        return parsedIf(text.fail("expected the type and the name of a field"));
    SoField* field = script->getDeclared().declare(SbName(type), SbName(name), *kind);
    const bool isEvent = *kind == SoField::EVENT_IN || *kind == SoField::EVENT_OUT;
    if (!field) {
        m_scene.warnOnce("declaration " + std::string(name), type.data(),
                         "expected a known field type and a new name, not '" + std::string(type)
                             + " " + std::string(name) + "'; it is left out");
        // One that is there already takes the value.
        SoField* known = script->getField(SbName(name));
        if (known && known->getTypeId().getName() == type && known->getFieldType() == *kind)
            field = known;
        else
            return parsedIf(isEvent || m_scene.skipValue());
    }
    if (const Parsed is = m_nodes.getPrototypes().tryIs(*field, isEvent); is != Parsed::No)
        return is;
    return parsedIf(isEvent || m_nodes.getValues().read(*field)
                    || text.fail("expected a value for '" + std::string(name) + "' of 'Script'"));
}

bool DeclarationReader::readList(SoNode* node)
{
    const bool declaresOwn = node->isOfType(SoUnknownNode::getClassTypeId())
                             || node->isOfType(SoVRMLScript::getClassTypeId());
    return declaresOwn ? readOwnList(node) : keepList(node);
}

bool DeclarationReader::readOwnList(SoNode* node)
{
    SoTokenizer& text = m_scene.getTokens();
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::string_view type, name;
        if (!text.readWord(type))
            return text.fail("expected a field type or ']'");
        const SoField::FieldType* kind = findFieldKind(type);
        if (kind && !text.readWord(type))
            return text.fail("expected a field type");
        if (!text.readName(name))
            return text.fail("expected a field name");
        if (declareField(node, currentFieldType(type), SbName(name),
                         kind ? *kind : SoField::ORDINARY))
            continue;
        if (m_scene.getDialect().isLenient)
            m_scene.warnOnce("declaration " + std::string(type), type.data(),
                             "the declaration of '" + std::string(name) + "' is left out");
        else
            return m_scene.failAt(type, "expected a known field type and a new name, not '"
                                            + std::string(type) + " " + std::string(name) + "'");
    }
    return true;
}

bool DeclarationReader::keepList(SoNode* node)
{
    SoTokenizer& text = m_scene.getTokens();
    text.peek();
    const std::size_t begin = text.getOffset();
    if (!m_scene.skipBlock('[', true))
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

bool DeclarationReader::isDeclared(const SoNode* node, std::string_view name) const
{
    const auto found = m_declared.find(node);
    return found != m_declared.end() && found->second.count(name) > 0;
}

} // namespace kalmyr::detail
