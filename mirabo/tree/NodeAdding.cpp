#include "mirabo/tree/NodeAdding.h"

#include "mirabo/tree/SoMiraboAddDialog.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <algorithm>
#include <utility>

namespace mirabo {

namespace {

bool isBelow(const SoTreeViewItem* row, const SoTreeViewItem* above)
{
    while (row && row != above)
        row = row->parentItem();
    return row;
}

QString textOf(const SoTreeViewItem* row)
{
    const QString type = row->data(SoTreeViewItem::Type, Qt::DisplayRole).toString();
    return (type + ' ' + row->data(SoTreeViewItem::Name, Qt::DisplayRole).toString()).trimmed();
}

} // namespace

NodeAdding::NodeAdding(SoMiraboTreeView* tree, QWidget* window, Add add)
    : QObject(tree), m_tree(tree), m_window(window), m_add(std::move(add))
{
    connect(tree, &QTreeWidget::currentItemChanged, this, &NodeAdding::currentChanged);
    // A view does not tell when its current row goes with a row above it.
    connect(tree, &SoMiraboTreeView::rootChanged, this, &NodeAdding::currentChanged);
}

NodeAdding::~NodeAdding()
{
    delete m_dialog;
}

SoMiraboAddDialog* NodeAdding::dialog() const
{
    return m_dialog;
}

SoTreeViewItem* NodeAdding::target() const
{
    return m_tree->context().addTarget;
}

void NodeAdding::open()
{
    if (!m_dialog) {
        m_dialog = new SoMiraboAddDialog(m_window);
        connect(m_dialog, &SoMiraboAddDialog::addRequested, this, &NodeAdding::add);
    }
    setTarget(asItem(m_tree->currentItem()));
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void NodeAdding::setTarget(SoTreeViewItem* row)
{
    m_tree->context().addTarget = row;
    if (m_dialog)
        m_dialog->setTarget(
            row ? tr("Target: %1").arg(textOf(row)) : tr("No row of the tree is chosen."), row);
}

void NodeAdding::currentChanged()
{
    if (m_dialog && !m_adding)
        setTarget(asItem(m_tree->currentItem()));
}

/// Where the target occurs several times, so does what was added: the row next to the target.
SoTreeViewItem* NodeAdding::rowOf(const SoNode* added) const
{
    SoTreeViewItem* current = asItem(m_tree->currentItem());
    if (current && current->getNode() == added)
        return current; // made so by whoever added it
    const SoTreeViewItem* at = target();
    const std::vector<SoTreeViewItem*> rows = m_tree->itemsOf(added);
    for (SoTreeViewItem* row : rows)
        if (at && (row->parentItem() == at || row->parentItem() == at->parentItem()))
            return row;
    return rows.empty() ? nullptr : rows.front();
}

void NodeAdding::add(SoNode* node)
{
    SoTreeViewItem* at = target() ? target() : asItem(m_tree->currentItem());
    if (!at || m_adding)
        return;
    const QPointer<NodeAdding> self(this);
    m_adding = true;
    const bool done = m_add(node, at); // the host may end the tool
    if (!self)
        return;
    if (SoTreeViewItem* row = done ? rowOf(node) : nullptr) {
        // A kit's list has a group between itself and its entries.
        if (!isBelow(row, target()) && row->parentItem())
            setTarget(row->parentItem());
        m_tree->goToItem(row);
    }
    if (!self)
        return;
    m_adding = false;
    if (!target())
        currentChanged();
}

} // namespace mirabo
