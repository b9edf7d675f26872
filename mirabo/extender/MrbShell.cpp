#include "mirabo/extender/MrbShell.h"

namespace {

MrbShell* s_instance = nullptr;

} // namespace

MrbShell* MrbShell::getInstance()
{
    return s_instance;
}

void MrbShell::setInstance(MrbShell* shell)
{
    s_instance = shell;
}

MrbShell::~MrbShell()
{
    if (s_instance == this)
        s_instance = nullptr;
}
