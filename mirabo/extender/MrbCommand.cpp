#include "mirabo/extender/MrbCommand.h"

MrbCommand::MrbCommand() = default;

MrbCommand::~MrbCommand() = default;

const QString& MrbCommand::getName() const
{
    return m_name;
}

void MrbCommand::setName(const QString& name)
{
    m_name = name;
}
