#include <kalmyr/nodes/SoCallback.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>

SO_NODE_SOURCE(SoCallback)

SoCallback::SoCallback()
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoCallback::~SoCallback() = default;

void SoCallback::initClass()
{
    SO_NODE_INIT_CLASS(SoCallback, SoNode, "Callback");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
}

void SoCallback::setCallback(Function* function, void* userData)
{
    m_function = function;
    m_userData = userData;
    touch();
}

void SoCallback::doAction(SoAction* action)
{
    if (m_function)
        m_function(m_userData, action);
}
