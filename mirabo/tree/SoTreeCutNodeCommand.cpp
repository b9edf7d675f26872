#include "mirabo/tree/SoTreeCutNodeCommand.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeDeleteNodeCommand.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <utility>

namespace {

/// Also in branches that a switch leaves out: nothing is cut that may be seen one day.
bool holdsShape(SoNode* node)
{
    for (const SoType type : {SoShape::getClassTypeId(), SoVRMLShape::getClassTypeId()}) {
        SoSearchAction search;
        search.setType(type);
        search.setInterest(SoSearchAction::FIRST);
        search.setSearchingAll(true);
        search.apply(node);
        if (search.getPath())
            return true;
    }
    return false;
}

enum class Content { None, Some, Shape };

Content contentOf(SoNode* node)
{
    if (node->isOfType(SoSeparator::getClassTypeId()))
        return holdsShape(node) ? Content::Shape : Content::None;
    const bool isEmpty = node->isOfType(SoGroup::getClassTypeId())
                         && static_cast<SoGroup*>(node)->getNumChildren() == 0;
    return isEmpty ? Content::None : Content::Some;
}

} // namespace

SoTreeCutNodeCommand::SoTreeCutNodeCommand(SoTreeViewItem* item,
                                           const std::shared_ptr<const mirabo::TreeEditHost>& host,
                                           bool& done)
{
    setName(mirabo::commandName("Cut", *item->getNode()));
    std::vector<SoTreeViewItem*> above; // rows that go are below those that are looked at later
    for (SoTreeViewItem* at = item->parentItem(); at; at = at->parentItem())
        above.push_back(at);
    done = take(item, host);
    for (std::size_t i = 0; done && i < above.size(); ++i) {
        const Content content = contentOf(above[i]->getNode());
        if (content == Content::Shape || (content == Content::None && !take(above[i], host)))
            break;
    }
}

bool SoTreeCutNodeCommand::take(SoTreeViewItem* item,
                                const std::shared_ptr<const mirabo::TreeEditHost>& host)
{
    bool done = false;
    auto step = std::make_unique<SoTreeDeleteNodeCommand>(item, host, done);
    if (done)
        m_steps.push_back(std::move(step));
    else if (m_steps.empty())
        m_refusal = step->refusal();
    return done;
}

void SoTreeCutNodeCommand::undo()
{
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        (*step)->undo();
        if ((*step)->isDone())
            return; // refused, and told
    }
}

void SoTreeCutNodeCommand::redo()
{
    for (const auto& step : m_steps) {
        step->redo();
        if (!step->isDone())
            return;
    }
}
