#include <kalmyr/nodes/SoInlineNode.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/sensors/SoSensorManager.h>

#include "core/Threads.h"

namespace {

SoInlineNode::Loading s_loading = SoInlineNode::WITH_FILE;

} // namespace

void SoInlineNode::setLoading(Loading loading)
{
    s_loading = loading;
}

SoInlineNode::Loading SoInlineNode::getLoading()
{
    return s_loading;
}

SoInlineNode::SoInlineNode()
    : m_children(this),
      m_loader(
          [](void* node, SoSensor*) {
              // The content may take the place of what holds us.
              const SoRef<SoInlineNode> self(static_cast<SoInlineNode*>(node));
              const kalmyr::detail::SharedEdit edit(SoSensorManager::isApplicationThread());
              if (edit)
                  self->load();
              else
                  self->m_loader.schedule(); // somebody reads
          },
          this)
{
    m_loader.setPartOfGraph();
}

SoInlineNode::~SoInlineNode()
{
    m_loader.unschedule();
}

void SoInlineNode::addBox()
{
    // Nobody can listen yet.
    enableNotify(false);
    m_children.append(new SoGroup);
    enableNotify(true);
}

SoNode* SoInlineNode::getChildData() const
{
    return m_children.getLength() > 1 ? m_children[1] : nullptr;
}

void SoInlineNode::setChildData(SoNode* data)
{
    if (getChildData() && data) {
        m_children.set(1, data);
    } else if (getChildData()) {
        m_children.remove(1);
    } else if (data) {
        m_children.append(data);
    }
}

void SoInlineNode::doAction(SoAction* action)
{
    // The graph must not change while it is traversed.
    if (m_pending) {
        m_pending = false;
        m_loader.schedule();
    }
    SoState* state = action->getState();
    state->push();
    action->traverseChildren(m_children);
    state->pop();
}

void SoInlineNode::measure(SoAction* action, const SbBox3f& box)
{
    if (!getChildData() && !box.isEmpty())
        static_cast<SoGetBoundingBoxAction*>(action)->extendBy(box);
    else
        doAction(action);
}

void SoInlineNode::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    const auto* source = static_cast<const SoInlineNode*>(from);
    m_children.truncate(); // the box of the original takes the place of the copy's own
    SoNode::copyContents(from, copier);
    m_directory = source->m_directory;
    m_pending = source->m_pending;
}
