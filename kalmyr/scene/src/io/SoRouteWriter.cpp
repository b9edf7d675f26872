// Routes: fields that follow others, and the engines and global fields that they name.
#include "SoSceneWriter.h"

#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/sensors/SoRoute.h>

namespace kalmyr::detail {

void SceneWriter::findRoutes(const SoFieldContainer* container)
{
    const SoFieldData* data = container->getFieldData();
    std::size_t at = m_routes.size();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* one = data->getField(container, i);
        if (const SoField* master = one->getConnectedField())
            m_routes.push_back({master, one});
        if (one->isOfType(SoSFEngine::getClassTypeId()))
            findEngine(static_cast<const SoSFEngine*>(one)->getValue());
        if (one->isOfType(SoMFEngine::getClassTypeId())) {
            const auto& engines = *static_cast<const SoMFEngine*>(one);
            for (int k = 0; k < engines.getNum(); ++k)
                findEngine(engines[k]);
        }
        for (const SoField* source : SoRoute::getSources(one))
            m_routes.push_back({source, one});
    }
    for (; at < m_routes.size(); ++at) {
        hold(m_routes[at].from->getContainer());
        hold(m_routes[at].to->getContainer());
        findEngine(m_routes[at].from->getContainer());
    }
}

void SceneWriter::findEngine(const SoFieldContainer* engine)
{
    if (m_dialect != KALMYR || !engine || !engine->isOfType(SoEngine::getClassTypeId())
        || m_engineNames.count(engine))
        return;
    hold(const_cast<SoFieldContainer*>(engine));
    m_engineNames[engine]; // named when all names of nodes are known
    m_engines.push_back(engine);
    findRoutes(engine);
}

bool SceneWriter::isWritten(const Route& route) const
{
    const SoFieldContainer* master = route.from->getContainer();
    if (!master || m_dialect == VRML10)
        return false;
    if (master->isOfType(SoNode::getClassTypeId()))
        return m_nodes.contains(static_cast<const SoNode*>(master));
    return m_dialect == KALMYR
           && (master->isOfType(SoEngine::getClassTypeId())
               || master->isOfType(SoGlobalField::getClassTypeId()));
}

void SceneWriter::engine(const SoFieldContainer* engine)
{
    m_writtenEngines.insert(engine);
    std::string& name = m_engineNames[engine];
    name = std::string(engine->getName().view());
    while (name.empty() || m_names.count(name) || !m_taken.insert(name).second) {
        name = "Engine";
        SbNumber::appendInt(name, m_nextInstance++);
    }
    m_buffer += "ENGINE ";
    m_buffer += name;
    m_buffer += ' ';
    m_buffer += engine->getTypeId().getName().view();
    m_buffer += " {";
    const SoFieldData* data = engine->getFieldData();
    ++m_indent;
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* one = data->getField(engine, i);
        if (engine->computes(one) || !engine->isFieldWritten(*one))
            continue;
        newLine();
        m_buffer += data->getFieldName(i).view();
        m_buffer += ' ';
        one->writeValue(*this);
    }
    --m_indent;
    newLine();
    m_buffer += '}';
}

void SceneWriter::engines()
{
    for (const SoFieldContainer* one : m_engines) {
        if (m_writtenEngines.count(one))
            continue;
        m_buffer += '\n';
        engine(one);
    }
}

void SceneWriter::writeEngine(const SoEngine* one)
{
    if (m_counting)
        findEngine(one);
    else if (!one || m_dialect != KALMYR)
        m_buffer += "NULL";
    else if (m_writtenEngines.count(one))
        m_buffer += m_engineNames[one];
    else
        engine(one);
}

void SceneWriter::globals()
{
    std::unordered_set<SbName> written; // threads have a `realTime` each
    for (const auto& [master, follower] : m_routes) {
        const SoFieldContainer* global = master->getContainer();
        if (!global->isOfType(SoGlobalField::getClassTypeId())
            || !written.insert(global->getFieldName(master)).second)
            continue;
        m_buffer += "\nGLOBAL ";
        m_buffer += master->getTypeId().getName().view();
        m_buffer += ' ';
        m_buffer += global->getFieldName(master).view();
        m_buffer += ' ';
        master->writeValue(*this);
    }
}

std::string SceneWriter::nameInRoute(const SoFieldContainer* container)
{
    if (container->isOfType(SoNode::getClassTypeId())) {
        const auto* node = static_cast<const SoNode*>(container);
        return nameOf(node, m_nodes[node]);
    }
    const auto engine = m_engineNames.find(container);
    return engine == m_engineNames.end() ? "global" : engine->second;
}

void SceneWriter::routes()
{
    engines();
    globals();
    for (const auto& [master, field] : m_routes) {
        if (m_buffer.empty() || m_buffer.back() != '\n')
            m_buffer += '\n';
        m_buffer += "ROUTE ";
        m_buffer += nameInRoute(master->getContainer());
        m_buffer += '.';
        m_buffer += master->getContainer()->getFieldName(master).view();
        m_buffer += " TO ";
        m_buffer += nameInRoute(field->getContainer());
        m_buffer += '.';
        m_buffer += field->getContainer()->getFieldName(field).view();
        flushIfLarge();
    }
}

} // namespace kalmyr::detail
