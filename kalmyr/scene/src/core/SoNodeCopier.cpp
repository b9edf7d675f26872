#include <kalmyr/core/SoNodeCopier.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/sensors/SoRoute.h>

#include "core/StackSwitch.h"

#include <utility>

namespace {

bool hasConnections(const SoFieldContainer* container)
{
    const SoFieldData* data = container->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(container, i);
        if (field->isConnected() || SoRoute::hasSources(field))
            return true;
    }
    return false;
}

/// Whether a field holds a value that was set since its master changed last.
bool isSetApart(const SoField& field)
{
    const SoField* master = field.getConnectedField();
    master->evaluate();
    return field.getTypeId() != master->getTypeId() || !field.isSame(*master);
}

} // namespace

SoNodeCopier::~SoNodeCopier() = default;

SoNode* SoNodeCopier::copyOf(const SoNode* original)
{
    if (!original)
        return nullptr;
    if (SoFieldContainer* known = find(original))
        return static_cast<SoNode*>(known);
    if (m_depth++ == 0)
        m_stackLimit = kalmyr::detail::stackLimit();
    SoNode* copy = nullptr;
    if (kalmyr::detail::isStackLow(m_stackLimit)) {
        const char* before = m_stackLimit;
        kalmyr::detail::callOnNewStack([&](const char* limit) {
            m_stackLimit = limit;
            copy = makeCopy(original);
        });
        m_stackLimit = before;
    } else {
        copy = makeCopy(original);
    }
    if (m_depth == 1 && copy) {
        copy->ref();
        connect();
        copy->unrefNoDelete();
    }
    --m_depth;
    return copy;
}

SoNode* SoNodeCopier::makeCopy(const SoNode* original)
{
    auto* copy = static_cast<SoNode*>(original->createTwin());
    if (!copy)
        return nullptr;
    m_copies[original] = copy;
    if (hasConnections(original))
        m_unconnected.push_back(original);
    copy->ref(); // what the copying connects must not take the only reference with it
    copy->copyContents(original, *this);
    copy->unrefNoDelete();
    return copy;
}

SoFieldContainer* SoNodeCopier::find(const SoFieldContainer* original) const
{
    SoFieldContainer* const* copy = m_copies.find(original);
    return copy ? *copy : nullptr;
}

SoNode* SoNodeCopier::resolve(SoNode* original) const
{
    SoFieldContainer* copy = find(original);
    return copy ? static_cast<SoNode*>(copy) : original;
}

void SoNodeCopier::connect()
{
    std::vector<Connection> connections;
    std::vector<Connection> routes;
    // Copies of engines join the list while it is worked through.
    for (std::size_t i = 0; i < m_unconnected.size(); ++i) {
        const SoFieldContainer* original = m_unconnected[i];
        addConnections(original, find(original), connections, routes);
    }
    mastersFirst(connections);
    for (const Connection& one : connections)
        connect(one);
    for (const Connection& one : connections)
        keepValue(one);
    for (const Connection& route : routes)
        SoRoute::add(route.master, route.follower);
    m_unconnected.clear();
    m_fed.clear();
    m_engines.clear();
}

/// A field that is connected already would be notified of every further connection above.
void SoNodeCopier::mastersFirst(std::vector<Connection>& connections)
{
    std::unordered_map<const SoField*, std::size_t> places;
    for (std::size_t i = 0; i < connections.size(); ++i)
        places[connections[i].follower] = i;
    std::vector<Connection> sorted;
    std::vector<bool> isDone(connections.size());
    std::vector<std::size_t> chain;
    // From the back, where the engines are whose outputs others follow.
    for (std::size_t last = connections.size(); last-- > 0;) {
        for (std::size_t i = last; !isDone[i];) {
            isDone[i] = true;
            chain.push_back(i);
            const auto above = places.find(connections[i].master);
            if (above != places.end())
                i = above->second;
        }
        for (; !chain.empty(); chain.pop_back())
            sorted.push_back(connections[chain.back()]);
    }
    connections = std::move(sorted);
}

void SoNodeCopier::connect(const Connection& one)
{
    one.follower->connectFrom(one.master);
    one.follower->enableConnection(one.original->isConnectionEnabled());
}

void SoNodeCopier::keepValue(const Connection& one)
{
    if (!isSetApart(*one.original))
        return;
    // In silence: whoever follows this one would take the value.
    const bool told = one.follower->enableNotify(false);
    one.follower->evaluate();
    one.follower->copyWith(*this, *one.original);
    one.follower->setDefault(one.original->isDefault());
    one.follower->enableNotify(told);
}

void SoNodeCopier::addConnections(const SoFieldContainer* original, SoFieldContainer* copy,
                                  std::vector<Connection>& connections,
                                  std::vector<Connection>& routes)
{
    const SoFieldData* data = original->getFieldData();
    const SoFieldData* copyData = copy->getFieldData();
    for (int i = 0; data && copyData && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(original, i);
        if (i >= copyData->getNumFields())
            continue;
        SoField* follower = copyData->getField(copy, i);
        if (SoField* master =
                field->isConnected() ? masterFor(field->getConnectedField()) : nullptr)
            connections.push_back({follower, master, field});
        for (SoField* source : SoRoute::getSources(field))
            if (SoField* from = masterFor(source))
                routes.push_back({follower, from, field});
    }
}

SoField* SoNodeCopier::masterFor(SoField* master)
{
    SoFieldContainer* container = master->getContainer();
    SoFieldContainer* copy = container ? find(container) : nullptr;
    if (!copy && container && !container->isOfType(SoNode::getClassTypeId())
        && isFedFromInside(container)) {
        copy = container->createTwin();
        if (copy) {
            m_engines.emplace_back(copy);
            copy->copyFieldValues(container);
            m_copies[container] = copy;
            m_unconnected.push_back(container);
        }
    }
    if (copy)
        return copy->getField(container->getFieldName(master));
    return m_fromOutside ? master : nullptr;
}

bool SoNodeCopier::isFedFromInside(const SoFieldContainer* engine)
{
    const auto [at, isNew] = m_fed.emplace(engine, false);
    if (!isNew)
        return at->second;
    struct Step {
        const SoFieldContainer* engine;
        std::vector<SoField*> fields;
    };
    // Each engine of the stack is fed by the next; long rows of them cost no stack of calls.
    std::vector<Step> steps{{engine, engine->getFields()}};
    while (!steps.empty()) {
        std::vector<SoField*>& fields = steps.back().fields;
        if (fields.empty()) {
            steps.pop_back();
            continue;
        }
        const SoField* master = fields.back()->getConnectedField();
        fields.pop_back();
        const SoFieldContainer* source = master ? master->getContainer() : nullptr;
        if (!source)
            continue;
        bool isFed = find(source) != nullptr;
        if (!isFed && !source->isOfType(SoNode::getClassTypeId())) {
            // Not yet known counts as no, which ends circles.
            const auto [known, isOpen] = m_fed.emplace(source, false);
            isFed = known->second;
            if (isOpen)
                steps.push_back({source, source->getFields()});
        }
        if (!isFed)
            continue;
        for (const Step& step : steps)
            m_fed[step.engine] = true;
        return true;
    }
    return false;
}
