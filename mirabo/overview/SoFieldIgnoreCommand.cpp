#include "mirabo/overview/SoFieldIgnoreCommand.h"

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/io/SoDB.h>

SoFieldIgnoreCommand::SoFieldIgnoreCommand(SoField* field, bool ignored)
    : m_container(field->getContainer()), m_ignored(ignored), m_before(field->isIgnored())
{
    m_field.reset(field);
}

void SoFieldIgnoreCommand::apply(bool ignored)
{
    if (!m_field)
        return;
    SoDB::writelock();
    m_field->setIgnored(ignored);
    SoDB::writeunlock();
}

bool SoFieldIgnoreCommand::execute()
{
    if (m_ignored == m_before)
        return false;
    apply(m_ignored);
    return true;
}

void SoFieldIgnoreCommand::undo()
{
    apply(m_before);
}

void SoFieldIgnoreCommand::redo()
{
    apply(m_ignored);
}
