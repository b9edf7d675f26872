#include "mirabo/core/SoMiraboStateManager.h"

#include "mirabo/core/SoMiraboState.h"

#include <QHash>

#include <cstdio>

namespace {

struct States {
    QHash<QString, SoMiraboState*> byName; // Not owned; their panels'.
    QString current;
};

States& states()
{
    static States s;
    return s;
}

/// The state of a name; without one tells what is missing.
SoMiraboState* find(const QString& name, const char* missing)
{
    const auto at = states().byName.constFind(name);
    const bool known = at != states().byName.constEnd();
    if (known && *at)
        return *at;
    std::fprintf(stderr, "[E] SoMiraboStateManager::setCurrentState: Error %s\n",
                 known ? "state is NULL" : missing);
    return nullptr;
}

} // namespace

SoMiraboState::~SoMiraboState()
{
    SoMiraboStateManager::forget(this);
}

void SoMiraboStateManager::registerState(const QString& name, SoMiraboState* state)
{
    states().byName.insert(name, state);
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
    auto& byName = states().byName;
    for (auto at = byName.begin(); at != byName.end();) {
        if (*at == state) {
            if (at.key() == states().current)
                states().current.clear();
            at = byName.erase(at);
        } else {
            ++at;
        }
    }
}
