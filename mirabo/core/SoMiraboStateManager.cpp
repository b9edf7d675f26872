#include "mirabo/core/SoMiraboStateManager.h"

#include "mirabo/core/SoMiraboState.h"

#include <cstdio>
#include <memory>
#include <string>
#include <unordered_map>

namespace {

/// A registered state.
struct Wrapper {
    SoMiraboState* state; // Not owned; its panel's.
};

struct States {
    /// No wrapper: the state of that name has died.
    std::unordered_map<std::string, std::unique_ptr<Wrapper>> byName;
    QString current;
};

States& states()
{
    static States s;
    return s;
}

void tell(const char* missing)
{
    std::fprintf(stderr, "[E] SoMiraboStateManager::setCurrentState: Error %s\n", missing);
}

/// The state of a name; without one tells what is missing.
SoMiraboState* find(const QString& name, const char* notFound)
{
    const auto at = states().byName.find(name.toStdString());
    if (at == states().byName.end())
        tell(notFound);
    else if (!at->second)
        tell("wrapper is NULL");
    else if (!at->second->state)
        tell("state is NULL");
    else
        return at->second->state;
    return nullptr;
}

} // namespace

SoMiraboState::~SoMiraboState()
{
    SoMiraboStateManager::forget(this);
}

void SoMiraboStateManager::registerState(const QString& name, SoMiraboState* state)
{
    states().byName[name.toStdString()] = std::make_unique<Wrapper>(Wrapper{state});
}

void SoMiraboStateManager::setCurrentState(const QString& name)
{
    if (name == states().current)
        return;
    if (!states().current.isEmpty()) {
        SoMiraboState* left = find(states().current, "wrapper not found");
        if (!left)
            return;
        left->leave();
        states().current.clear();
    }
    SoMiraboState* entered = find(name, "state not found");
    if (!entered)
        return;
    entered->enter();
    states().current = name;
}

QString SoMiraboStateManager::getCurrentState()
{
    return states().current;
}

void SoMiraboStateManager::forget(const SoMiraboState* state)
{
    for (auto& [name, wrapper] : states().byName) {
        if (!state || !wrapper || wrapper->state != state)
            continue;
        if (name == states().current.toStdString())
            states().current.clear();
        wrapper.reset();
    }
}
