#include "mirabo/extender/MrbServices.h"

#include "mirabo/extender/private/HostedExtension.h"

namespace {

MrbServices* s_instance = nullptr;

} // namespace

MrbServices* MrbServices::getInstance()
{
    const auto* caller = mirabo::HostedExtension::current();
    return caller ? caller->services() : s_instance;
}

MrbServices* MrbServices::getToolInstance()
{
    return s_instance;
}

void MrbServices::setInstance(MrbServices* services)
{
    s_instance = services;
}

MrbServices::~MrbServices()
{
    if (s_instance == this)
        s_instance = nullptr;
}
