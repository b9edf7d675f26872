#include "mirabo/extender/MrbServices.h"

namespace {

MrbServices* s_instance = nullptr;

} // namespace

MrbServices* MrbServices::getInstance()
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
