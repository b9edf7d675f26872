#include "mirabo/overview/NodeGuard.h"

#include <kalmyr/core/SoNode.h>

namespace mirabo {

NodeGuard::NodeGuard(SoNode* node, Callback died) : m_node(node), m_died(std::move(died))
{
    m_node->addAuditor(this, SoAuditor::SENSOR);
}

NodeGuard::~NodeGuard()
{
    if (m_node)
        m_node->removeAuditor(this);
}

void NodeGuard::auditedDying()
{
    m_node = nullptr;
    const Callback died = std::move(m_died); // the callback may destroy this guard
    died();
}

} // namespace mirabo
