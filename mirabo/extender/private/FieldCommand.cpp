#include "mirabo/extender/private/FieldCommand.h"

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/io/SoWriteLock.h>

#include <algorithm>
#include <utility>

namespace mirabo {

namespace {

/// Calls an operation of the step if the field lives; its container lives until that is over.
void call(const FieldCommand::Entry& entry, void (FieldStep::*operation)(const Observed<SoField>&))
{
    if (!*entry.field)
        return;
    const SoRef<const SoFieldContainer> held(entry.field->get()->getContainer());
    (entry.step.get()->*operation)(*entry.field);
}

} // namespace

FieldCommand::FieldCommand(const QString& name, Entries entries) : m_entries(std::move(entries))
{
    setName(name);
}

bool FieldCommand::execute()
{
    const SoWriteLock lock;
    if (!lock)
        return false;
    for (const Entry& entry : m_entries)
        call(entry, &FieldStep::make);
    return true;
}

void FieldCommand::undo()
{
    const SoWriteLock lock;
    if (!lock)
        return;
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        call(*entry, &FieldStep::takeBack);
}

void FieldCommand::redo()
{
    execute();
}

bool FieldCommand::absorb(const Entry& later)
{
    const auto last = std::find_if(m_entries.rbegin(), m_entries.rend(), [&](const Entry& entry) {
        return entry.field->get() == later.field->get();
    });
    return last != m_entries.rend() && last->step->absorb(*later.step);
}

bool FieldCommand::extend(Entries entries)
{
    const SoWriteLock lock;
    if (!lock)
        return false;
    for (Entry& entry : entries) {
        call(entry, &FieldStep::make);
        if (!absorb(entry))
            m_entries.push_back(std::move(entry));
    }
    return true;
}

} // namespace mirabo
