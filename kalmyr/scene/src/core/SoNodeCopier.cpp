#include <kalmyr/core/SoNodeCopier.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include "core/StackSwitch.h"

namespace {

bool hasConnections(const SoFieldContainer* container)
{
    const SoFieldData* data = container->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i)
        if (data->getField(container, i)->isConnected())
            return true;
    return false;
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
    // Copies of engines join the list while it is worked through.
    for (std::size_t i = 0; i < m_unconnected.size(); ++i) {
        const SoFieldContainer* original = m_unconnected[i];
        addConnections(original, find(original), connections);
    }
    // Masters first: what is connected already would be told of every further connection above.
    for (auto at = connections.rbegin(); at != connections.rend(); ++at) {
        at->follower->connectFrom(at->master);
        at->follower->enableConnection(at->isEnabled);
    }
    m_unconnected.clear();
    m_fed.clear();
    m_engines.clear();
}

void SoNodeCopier::addConnections(const SoFieldContainer* original, SoFieldContainer* copy,
                                  std::vector<Connection>& connections)
{
    const SoFieldData* data = original->getFieldData();
    const SoFieldData* copyData = copy->getFieldData();
    for (int i = 0; data && copyData && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(original, i);
        if (!field->isConnected() || i >= copyData->getNumFields())
            continue;
        if (SoField* master = masterFor(field->getConnectedField()))
            connections.push_back(
                {copyData->getField(copy, i), master, field->isConnectionEnabled()});
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
