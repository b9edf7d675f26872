#include "mirabo/extender/MrbExtension.h"

#include "mirabo/extender/private/HostedExtension.h"

MrbExtension::MrbExtension() = default;
MrbExtension::~MrbExtension() = default;

QWidget* MrbExtension::createView(QWidget*)
{
    return nullptr;
}

MrbPreferencePage* MrbExtension::createPreferencePage(QWidget*)
{
    return nullptr;
}

void MrbExtension::addControlled(MrbExtension*) {}
void MrbExtension::removeControlled(MrbExtension*) {}

MrbServices* MrbExtension::services() const
{
    return m_host ? m_host->services() : nullptr;
}

MrbShell* MrbExtension::shell() const
{
    return m_host ? m_host->shell() : nullptr;
}

void MrbExtension::fail(const QString& cause)
{
    if (m_host)
        m_host->fail(cause);
}
