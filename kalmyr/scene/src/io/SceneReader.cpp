#include "SceneReader.h"

#include <kalmyr/base/SoReadError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>

namespace kalmyr::detail {

std::unique_ptr<SceneReader> SceneReader::make(SoInput& in, bool headerNeeded)
{
    if (!in.isOpen()) {
        if (!in.tellStop()) // while it was being opened
            SoReadError::post(in.getCurFileName(), 0, 0, "no file is open");
        return nullptr;
    }
    switch (in.getFormat()) {
    case SoInput::KALMYR_ASCII:
        return std::make_unique<SceneReader>(in, kKalmyrDialect);
    case SoInput::VRML1:
        return std::make_unique<SceneReader>(in, kVrml1Dialect);
    case SoInput::VRML2:
        return std::make_unique<SceneReader>(in, kVrml97Dialect);
    case SoInput::KALMYR_BINARY: {
        auto reader = std::make_unique<SceneReader>(in, kKalmyrDialect);
        const SoTokenizer& text = in.getTokenizer();
        if (reader->m_nodes.getPieces().open({text.getText(), in.getSize()}, text.getOffset()))
            return reader;
        reader->abandon();
        return nullptr;
    }
    case SoInput::UNKNOWN_FORMAT:
        break;
    }
    if (!headerNeeded && in.getHeader().isEmpty())
        return std::make_unique<SceneReader>(in, kKalmyrDialect);
    const SbString found = in.getSize() == 0 ? SbString("the file is empty")
                           : in.getHeader().isEmpty()
                               ? SbString("the first line is no header")
                               : "the header " + SbString(quoted(in.getHeader())) + " is unknown";
    SoReadError::post(in.getCurFileName(), 1, 1, "%s; expected one of %s", found.getString(),
                      SoInput::getKnownHeaders().getString());
    return nullptr;
}

void SceneReader::abandon()
{
    if (m_abandoned || !m_nodes.text.hasFailed())
        return;
    m_abandoned = true;
    m_nodes.getScene().tellFault();
    m_nodes.release();
}

bool SceneReader::atEnd()
{
    SoTokenizer& text = m_nodes.text;
    if (!text.atEnd())
        return false;
    if (text.hasFailed() || !m_nodes.getPieces().isOpen())
        return true;
    m_nodes.forgetNames(); // they lie in the piece before
    return !m_nodes.getPieces().openNext();
}

bool SceneReader::readTop(SoNode*& node)
{
    SoTokenizer& text = m_nodes.text;
    node = nullptr;
    while (!node) {
        if (!m_nodes.getScene().goesOn())
            return false;
        if (atEnd())
            return !text.hasFailed() && m_nodes.getRoutes().makeLateRoutes()
                   && m_nodes.getPrototypes().checkUnused();
        std::string_view word;
        if (!text.readWord(word))
            return text.fail("expected a node");
        const Parsed statement = m_nodes.tryStatement(word);
        if (statement == Parsed::Fault
            || (statement == Parsed::No && !m_nodes.readChildFrom(word, node)))
            return false;
    }
    return true;
}

bool SceneReader::readAll(std::vector<SoRef<SoNode>>& nodes)
{
    for (;;) {
        SoNode* node = nullptr;
        if (!readTop(node))
            return false;
        if (!node)
            break;
        nodes.emplace_back(node);
    }
    m_nodes.getScene().tellEnd();
    return !m_nodes.getScene().isStopped();
}

bool SceneReader::readPath(SoRef<SoPath>& path)
{
    SoTokenizer& text = m_nodes.text;
    if (!m_nodes.getScene().goesOn())
        return false;
    // Prototypes stand in front of what uses them, routes behind.
    if (!m_nodes.readStatements())
        return false;
    if (!text.acceptWord("Path"))
        return text.fail("expected 'Path'");
    if (!text.expect('{'))
        return false;
    if (!text.acceptWord("head"))
        return text.fail("expected 'head'");
    SoNode* head = nullptr;
    if (!m_nodes.readNode(head))
        return false;
    if (!head)
        return text.fail("expected a node as head of the path");
    path = new SoPath(head);
    if (!text.acceptWord("indices"))
        return text.fail("expected 'indices'");
    if (!text.expect('['))
        return false;
    while (!text.accept(']')) {
        std::int32_t index = 0;
        if (!text.readInt(index))
            return false;
        const SoChildList* children = path->getTail()->getInternalChildren();
        if (!children || index < 0 || index >= children->getLength())
            return text.fail("expected the index of a child in front of this");
        path->append(index);
    }
    return text.expect('}') && m_nodes.readStatements();
}

} // namespace kalmyr::detail
