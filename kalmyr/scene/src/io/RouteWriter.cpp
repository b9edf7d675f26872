#include "RouteWriter.h"

#include "WriteDialect.h"
#include "WriteInterruption.h"
#include "WrittenNames.h"
#include "WrittenText.h"

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/sensors/SoRoute.h>

namespace kalmyr::detail {

void RouteWriter::find(const SoFieldContainer* container)
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
        m_interruption.hold(m_routes[at].from->getContainer());
        m_interruption.hold(m_routes[at].to->getContainer());
        findEngine(m_routes[at].from->getContainer());
    }
}

void RouteWriter::findEngine(const SoFieldContainer* engine)
{
    if (!m_dialect.hasEngines() || !engine || !engine->isOfType(SoEngine::getClassTypeId())
        || m_engineNames.count(engine))
        return;
    m_interruption.hold(const_cast<SoFieldContainer*>(engine));
    m_engineNames[engine]; // named when all names of nodes are known
    m_engines.push_back(engine);
    find(engine);
}

bool RouteWriter::isWritten(const Route& route) const
{
    const SoFieldContainer* master = route.from->getContainer();
    if (!master || !m_dialect.hasRoutes())
        return false;
    if (master->isOfType(SoNode::getClassTypeId()))
        return m_names.contains(static_cast<const SoNode*>(master));
    return m_dialect.hasEngines()
           && (master->isOfType(SoEngine::getClassTypeId())
               || master->isOfType(SoGlobalField::getClassTypeId()));
}

void RouteWriter::settle()
{
    std::erase_if(m_routes, [this](const Route& route) { return !isWritten(route); });
    for (const Route& route : m_routes) {
        for (const SoFieldContainer* end : {route.to->getContainer(), route.from->getContainer()})
            if (end->isOfType(SoNode::getClassTypeId()))
                m_names[static_cast<const SoNode*>(end)].named = true;
    }
}

void RouteWriter::engine(const SoFieldContainer* engine)
{
    m_writtenEngines.insert(engine);
    std::string& name = m_engineNames[engine];
    name = m_names.take(engine->getName().view(), "Engine");
    m_text << "ENGINE " << name << " " << engine->getTypeId().getName().view() << " {";
    const SoFieldData* data = engine->getFieldData();
    m_text.indent();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* one = data->getField(engine, i);
        if (engine->computes(one) || !engine->isFieldWritten(*one))
            continue;
        m_text.newLine();
        m_text << data->getFieldName(i).view() << " ";
        one->writeValue(m_values);
    }
    m_text.outdent();
    m_text.newLine();
    m_text << "}";
}

void RouteWriter::engines()
{
    for (const SoFieldContainer* one : m_engines) {
        if (m_writtenEngines.count(one))
            continue;
        m_text << "\n";
        engine(one);
    }
}

void RouteWriter::writeEngine(const SoEngine* one)
{
    if (!one || !m_dialect.hasEngines())
        m_text << "NULL";
    else if (m_writtenEngines.count(one))
        m_text << m_engineNames[one];
    else
        engine(one);
}

void RouteWriter::globals()
{
    std::unordered_set<SbName> written; // threads have a `realTime` each
    for (const auto& [master, follower] : m_routes) {
        const SoFieldContainer* global = master->getContainer();
        if (!global->isOfType(SoGlobalField::getClassTypeId())
            || !written.insert(global->getFieldName(master)).second)
            continue;
        m_text << "\nGLOBAL " << master->getTypeId().getName().view() << " "
               << global->getFieldName(master).view() << " ";
        master->writeValue(m_values);
    }
}

std::string RouteWriter::nameOf(const SoFieldContainer* container)
{
    if (container->isOfType(SoNode::getClassTypeId()))
        return m_names.of(static_cast<const SoNode*>(container));
    const auto engine = m_engineNames.find(container);
    return engine == m_engineNames.end() ? "global" : engine->second;
}

void RouteWriter::writeEnd(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    m_text << nameOf(container) << "." << container->getFieldName(&field).view();
}

void RouteWriter::write()
{
    engines();
    globals();
    for (const auto& [master, follower] : m_routes) {
        m_text.endLine();
        m_text << "ROUTE ";
        writeEnd(*master);
        m_text << " TO ";
        writeEnd(*follower);
        m_text.flushIfLarge();
    }
}

} // namespace kalmyr::detail
