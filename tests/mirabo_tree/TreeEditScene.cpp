#include "TreeEditScene.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/tree/TreeEditCommand.h"

SO_NODE_SOURCE(ParameterHolder)

ParameterHolder::ParameterHolder()
{
    SO_NODE_CONSTRUCTOR(ParameterHolder);
    SO_ADD_EMPTY_FIELD(parameter);
}

ParameterHolder::~ParameterHolder() = default;

void ParameterHolder::initClass()
{
    if (s_classTypeId.isBad())
        SO_NODE_INIT_CLASS(ParameterHolder, SoNode, "ParameterHolder");
}

EditedTree::EditedTree(SoMiraboTreeView& view)
    : owner(stack,
            [this](MrbCommand* command) {
                names.push_back(command->getName().toStdString());
                return stack.add(command);
            }),
      editor(&view,
             {stack, owner,
              [this](const mirabo::Refusal& refusal) {
                  boxes.push_back(refusal.title.toStdString() + ": " + refusal.text.toStdString());
              },
              [this](SoNode* root) { setRoot(root); }}),
      m_view(view)
{
    ParameterHolder::initClass();
    stack.clear(); // as every start does
    QObject::connect(&view, &SoMiraboTreeView::outsideStructureChange, &editor, [this] {
        if (!stack.isBusy())
            stack.clear();
    });
    QObject::connect(&view, &SoMiraboTreeView::commandReady, &editor,
                     [this](mirabo::TreeEditCommand* command) {
                         editor.run(std::unique_ptr<mirabo::TreeEditCommand>(command));
                     });
    QObject::connect(&view, &SoMiraboTreeView::deleteRequested, &editor,
                     [this] { editor.deleteCurrent(); });
    QObject::connect(&view, &SoMiraboTreeView::moveRequested, &editor,
                     &mirabo::TreeEditor::moveRow);
    QObject::connect(&view, &SoMiraboTreeView::referenceRequested, &editor,
                     &mirabo::TreeEditor::addReference);
    QObject::connect(&view, &SoMiraboTreeView::stepRequested, &editor,
                     &mirabo::TreeEditor::stepCurrent);
}

EditedTree::~EditedTree()
{
    m_view.blockSignals(true); // nobody is left to hear of it
    stack.clear();
    owner.freeForgotten();
    m_view.blockSignals(false);
}

void EditedTree::setRoot(SoNode* root)
{
    if (container) {
        m_view.setContainer(nullptr);
        container->removeAllChildren();
        if (root)
            container->addChild(root);
        m_view.setContainer(container.get());
    }
    m_view.setSceneGraph(root);
}

std::string EditedTree::box()
{
    QCoreApplication::processEvents(); // undo and redo tell later
    std::string text = boxes.empty() ? "" : boxes.back();
    boxes.clear();
    return text;
}

std::string textOf(SoNode* node)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction(&out).apply(node);
    return std::string(out.getText());
}

std::string lookOf(const SoMiraboTreeView& view)
{
    std::string look;
    std::vector<const SoTreeViewItem*> open;
    const QList<QTreeWidgetItem*> selection = view.selectedItems();
    const QTreeWidgetItem* selected = selection.size() == 1 ? selection.front() : nullptr;
    for (int row = view.topLevelItemCount(); row-- > 0;)
        open.push_back(static_cast<const SoTreeViewItem*>(view.topLevelItem(row)));
    while (!open.empty()) {
        const SoTreeViewItem* row = open.back();
        open.pop_back();
        look += row->getNode()->getTypeId().getName().getString();
        look += row == view.currentItem() ? "*" : "";
        look += row == selected ? "#" : "";
        look += row->isDisabledNode() ? "-" : row->childCount() > 0 && view.isOpen(row) ? "v" : ">";
        look += std::to_string(row->childCount());
        for (int i = row->childCount(); i-- > 0;)
            open.push_back(row->childItem(i));
    }
    return look;
}

double SteppingClock::s_now = 0;
double SteppingClock::s_step = 0;

SteppingClock::SteppingClock(double seconds)
{
    s_step = seconds;
    SbTime::setSource([] { return SbTime(s_now += s_step); });
}

SteppingClock::~SteppingClock()
{
    SbTime::setSource(nullptr);
}
