#include "core/ConnectionSearch.h"

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>

#include <unordered_set>
#include <utility>
#include <vector>

namespace {

/// The container, if it is an engine.
const SoFieldContainer* engineOf(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    return container && container->isOfType(SoEngine::getClassTypeId()) ? container : nullptr;
}

bool isOutput(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    return container && container->computes(&field);
}

/// Visits what a value leads to, or what it is made of, in small steps. The fields behind an engine
/// are visited once, by whichever of its fields the search came to it.
template <class Place>
class Search {
public:
    explicit Search(const SoField& start) { open(start); }

    bool isOver() const { return m_places.empty(); }

    /// Looks at one more field; whether it is the one that is looked for.
    bool step(const SoField& goal)
    {
        const SoField* next = m_places.back().next();
        if (!next) {
            m_places.pop_back();
            return false;
        }
        if (next == &goal)
            return true;
        if (m_seen.insert(next).second)
            open(*next);
        return false;
    }

private:
    void open(const SoField& field)
    {
        const SoFieldContainer* engine = Place::engineBehind(field);
        if (engine && !m_seen.insert(engine).second)
            engine = nullptr;
        m_places.emplace_back(field, engine);
    }

    std::vector<Place> m_places;
    std::unordered_set<const void*> m_seen;
};

/// The next field of an engine, from number `at` on, that is an output, or an input.
const SoField* nextOf(const SoFieldContainer* engine, bool output, int& at)
{
    const SoFieldData* data = engine ? engine->getFieldData() : nullptr;
    while (data && at < data->getNumFields()) {
        const SoField* field = data->getField(engine, at++);
        if (engine->computes(field) == output)
            return field;
    }
    return nullptr;
}

/// Towards the sources: the master, or the inputs of the engine that computes the field.
class Upwards {
public:
    static const SoFieldContainer* engineBehind(const SoField& field)
    {
        return isOutput(field) ? field.getContainer() : nullptr;
    }

    Upwards(const SoField& field, const SoFieldContainer* engine)
        : m_master(field.getConnectedField()), m_engine(engine)
    {
    }
    const SoField* next()
    {
        if (const SoField* master = std::exchange(m_master, nullptr))
            return master;
        return nextOf(m_engine, false, m_at);
    }

private:
    const SoField* m_master;
    const SoFieldContainer* m_engine;
    int m_at = 0;
};

/// Towards the followers, and the outputs of the engine whose input the field is.
class Downwards {
public:
    static const SoFieldContainer* engineBehind(const SoField& field)
    {
        return isOutput(field) ? nullptr : engineOf(field);
    }

    Downwards(const SoField& field, const SoFieldContainer* engine)
        : m_field(&field), m_engine(engine)
    {
    }
    const SoField* next()
    {
        const SoAuditorList& auditors = m_field->getAuditors();
        while (m_follower < auditors.getLength()) {
            const SoAuditorList::Entry& entry = auditors[m_follower++];
            if (entry.type != SoAuditor::FIELD)
                continue;
            const auto* follower = static_cast<const SoField*>(entry.auditor);
            if (follower->getConnectedField() == m_field)
                return follower;
        }
        return nextOf(m_engine, true, m_output);
    }

private:
    const SoField* m_field;
    const SoFieldContainer* m_engine;
    int m_follower = 0;
    int m_output = 0;
};

} // namespace

bool kalmyr::detail::isMadeOf(const SoField& field, const SoField& source)
{
    if (&field == &source)
        return true;
    Search<Upwards> up(field);
    Search<Downwards> down(source);
    while (!up.isOver() && !down.isOver())
        if (up.step(source) || down.step(field))
            return true;
    return false;
}
