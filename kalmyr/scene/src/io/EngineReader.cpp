#include "EngineReader.h"

#include "NodeReader.h"

#include <kalmyr/engines/SoGlobalField.h>

#include <memory>

namespace kalmyr::detail {

Parsed EngineReader::tryStatement(std::string_view word)
{
    if (word == "GLOBAL")
        return parsedIf(readGlobalStatement());
    SoRef<SoEngine> engine;
    return word == "ENGINE" ? parsedIf(readEngineStatement(engine)) : Parsed::No;
}

SoEngine* EngineReader::find(std::string_view name) const
{
    const auto engine = m_engines.find(name);
    return engine == m_engines.end() ? nullptr : engine->second.get();
}

bool EngineReader::readEngine(SoEngine*& engine)
{
    SoTokenizer& text = m_scene.getTokens();
    engine = nullptr;
    std::string_view word;
    if (!text.readWord(word))
        return text.fail("expected NULL, ENGINE or the name of an engine");
    if (word == "NULL")
        return true;
    SoRef<SoEngine> made;
    if (word == "ENGINE" && !readEngineStatement(made))
        return false;
    engine = made ? made.get() : find(word);
    return engine || m_scene.failAt(word, "expected NULL, ENGINE or the name of an engine");
}

bool EngineReader::readEngineStatement(SoRef<SoEngine>& engine)
{
    SoTokenizer& text = m_scene.getTokens();
    std::string_view name, type;
    if (!text.readName(name) || !m_scene.getDialect().isLegalName(name))
        return text.fail("expected a name");
    text.peek();
    const std::size_t typeAt = text.getOffset();
    if (!text.readWord(type))
        return text.fail("expected the type of an engine");
    const SbName known = SbName::find(type);
    engine = known.isEmpty() ? nullptr : SoEngine::create(SoType::fromName(known));
    if (!engine)
        return text.failAt(typeAt, "expected the type of an engine");
    engine->setName(SbName(name));
    m_engines[name] = engine;
    if (!text.expect('{'))
        return false;
    while (!text.accept('}')) {
        std::string_view word;
        if (!text.readWord(word))
            return m_scene.failInBody(type, "a field or '}'");
        const SbName fieldName = SbName::find(word);
        SoField* field = fieldName.isEmpty() ? nullptr : engine->getField(fieldName);
        if (!field || engine->computes(field))
            return m_scene.failAt(word, "expected an input of '" + std::string(type) + "'");
        if (!m_nodes.getValues().read(*field))
            return text.fail("expected a value");
        m_nodes.getValues().readMark(*field);
    }
    return true;
}

bool EngineReader::readGlobalStatement()
{
    SoTokenizer& text = m_scene.getTokens();
    std::string_view type, name;
    text.peek();
    const std::size_t typeAt = text.getOffset();
    if (!text.readWord(type) || !text.readName(name))
        return text.fail("expected the type and the name of a global field");
    const SbName known = SbName::find(type);
    const SoType fieldType = known.isEmpty() ? SoType() : SoType::fromName(known);
    if (!fieldType.isDerivedFrom(SoField::getClassTypeId()) || !fieldType.canCreateInstance())
        return text.failAt(typeAt, "expected the type of a field");
    const SbName global(name);
    const bool isNew = !SoGlobalField::find(global);
    SoField* field = SoGlobalField::create(global, fieldType);
    if (isNew && field)
        m_newGlobals.push_back(global);
    if (!field)
        return text.failAt(typeAt,
                           "expected another name or type: the global field is a different one");
    // One that exists already belongs to the whole process, not to this file.
    const std::unique_ptr<SoField> ignored(static_cast<SoField*>(fieldType.createInstance()));
    return m_nodes.getValues().read(isNew ? *field : *ignored) || text.fail("expected a value");
}

void EngineReader::release()
{
    m_engines.clear();
    // Global fields of the file that no node follows go, too. Nodes handed out before keep theirs.
    for (const SbName& name : m_newGlobals) {
        const SoField* field = SoGlobalField::find(name);
        if (field && field->getAuditors().getLength() == 0)
            SoGlobalField::remove(name);
    }
    m_newGlobals.clear();
}

} // namespace kalmyr::detail
