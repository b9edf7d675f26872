#include "mirabo/extender/private/FieldCommand.h"

#include <kalmyr/io/SoWriteLock.h>

#include <algorithm>
#include <utility>

namespace mirabo {

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
        if (SoField* field = entry.field->get())
            entry.step->make(*field);
    return true;
}

void FieldCommand::undo()
{
    const SoWriteLock lock;
    if (!lock)
        return;
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (SoField* field = entry->field->get())
            entry->step->takeBack(*field);
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
        if (SoField* field = entry.field->get())
            entry.step->make(*field);
        if (!absorb(entry))
            m_entries.push_back(std::move(entry));
    }
    return true;
}

} // namespace mirabo
