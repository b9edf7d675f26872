#include "mirabo/overview/SoFieldIgnoreCommand.h"

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/io/SoWriteLock.h>

SoFieldIgnoreCommand::SoFieldIgnoreCommand(SoField* field, bool ignored)
    : m_ignored(ignored), m_before(field->isIgnored())
{
    m_field.reset(field);
    const SoFieldContainer* container = field->getContainer();
    const SbName name = container ? container->getFieldName(field) : SbName::empty();
    setName(QString(ignored ? "Ignore %1" : "Enable %1").arg(QString::fromUtf8(name.getString())));
}

bool SoFieldIgnoreCommand::apply(bool ignored)
{
    const SoWriteLock lock;
    if (!lock || !m_field)
        return false;
    m_field->setIgnored(ignored);
    return true;
}

bool SoFieldIgnoreCommand::execute()
{
    if (m_ignored == m_before)
        return false;
    return apply(m_ignored);
}

void SoFieldIgnoreCommand::undo()
{
    apply(m_before);
}

void SoFieldIgnoreCommand::redo()
{
    apply(m_ignored);
}
