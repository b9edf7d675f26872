#include "mirabo/core/HistoryList.h"

#include "mirabo/core/SoCommandManager.h"

#include <QAbstractListModel>
#include <QFont>
#include <QPainter>
#include <QPalette>

#include <utility>

namespace mirabo {

namespace {

constexpr int kHintMargin = 12;

} // namespace

/// Row 0 is the scene before all commands; row n the n-th command.
class HistoryModel final : public QAbstractListModel {
public:
    HistoryModel(QPointer<SoCommandManager> hub, QWidget* view)
        : QAbstractListModel(view), m_hub(std::move(hub)), m_view(view)
    {
    }

    void refresh()
    {
        beginResetModel();
        m_rows = m_hub ? m_hub->undoStack().count() + 1 : 1;
        endResetModel();
    }

    /// Of the last executed command.
    int currentRow() const { return m_hub ? m_hub->undoStack().currentIndex() + 1 : 0; }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : m_rows;
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        const int row = index.row();
        if (role == Qt::DisplayRole)
            return text(row);
        if (role == Qt::ForegroundRole && row > currentRow())
            return m_view->palette().brush(QPalette::Disabled, QPalette::Text);
        if (role == Qt::FontRole && row == currentRow()) {
            QFont font = m_view->font();
            font.setBold(true);
            return font;
        }
        return {};
    }

private:
    QString text(int row) const
    {
        if (row == 0)
            return tr("Scene as it was");
        // The stack may have been cleared since; a refresh is on its way then.
        const bool isThere = m_hub && row <= m_hub->undoStack().count();
        return isThere ? m_hub->nameOfStep(row - 1) : QString();
    }

    QPointer<SoCommandManager> m_hub;
    QWidget* m_view; // Owns us.
    int m_rows = 1;
};

HistoryList::HistoryList(SoCommandManager* hub, QWidget* parent)
    : QListView(parent), m_hub(hub), m_model(new HistoryModel(hub, this))
{
    setObjectName("historyList");
    setAccessibleName(tr("History of edits"));
    setModel(m_model);
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    connect(hub, &SoCommandManager::historyChanged, this, &HistoryList::refresh);
    connect(this, &QListView::clicked, this, &HistoryList::choose);
    connect(this, &QListView::activated, this, &HistoryList::choose);
}

HistoryList::~HistoryList() = default;

void HistoryList::refresh()
{
    if (!isVisible())
        return;
    m_model->refresh();
    const QModelIndex current = m_model->index(m_model->currentRow());
    setCurrentIndex(current);
    scrollTo(current);
}

/// Last in what calls it: the host may end the tool when it hears of a step.
void HistoryList::choose(const QModelIndex& index)
{
    if (m_hub)
        m_hub->goToCommand(index.row());
}

void HistoryList::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    refresh();
}

void HistoryList::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (m_model->rowCount() > 1)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(
        viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
        Qt::AlignCenter | Qt::TextWordWrap, tr("Edits that can be undone are listed here."));
}

} // namespace mirabo
