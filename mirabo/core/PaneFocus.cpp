#include "mirabo/core/PaneFocus.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <tuple>
#include <vector>

namespace mirabo {

namespace {

constexpr int kMarkHeight = 2;

class Mark final : public QWidget {
public:
    explicit Mark(QWidget* parent) : QWidget(parent)
    {
        setObjectName("paneMark");
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).fillRect(rect(), palette().color(QPalette::Active, QPalette::Highlight));
    }
};

/// The docks that can be seen, or stand behind another one, from left to right and down.
std::vector<QDockWidget*> panesOf(const QMainWindow& window)
{
    std::vector<QDockWidget*> panes;
    for (auto* dock : window.findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (dock->isVisible() && dock->widget())
            panes.push_back(dock);
    // One that stands behind another is not where it will be.
    const auto place = [&window](const QDockWidget* dock) {
        const QDockWidget* seen = dock;
        for (QDockWidget* beside : window.tabifiedDockWidgets(const_cast<QDockWidget*>(dock)))
            if (seen->visibleRegion().isEmpty())
                seen = beside;
        return std::tuple(seen->x(), seen->y(), dock->windowTitle());
    };
    std::sort(panes.begin(), panes.end(),
              [&place](const QDockWidget* a, const QDockWidget* b) { return place(a) < place(b); });
    return panes;
}

bool takesFocus(const QWidget* widget)
{
    return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus);
}

} // namespace

PaneFocus::PaneFocus(QMainWindow* window)
    : QObject(window),
      m_window(window),
      m_next(new QAction(tr("Next Pane"), window)),
      m_previous(new QAction(tr("Previous Pane"), window))
{
    m_next->setShortcut(QKeySequence("F6"));
    m_previous->setShortcut(QKeySequence("Shift+F6"));
    window->addActions({m_next, m_previous});
    connect(m_next, &QAction::triggered, this, [this] { step(1); });
    connect(m_previous, &QAction::triggered, this, [this] { step(-1); });
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focusMoved(now); });
}

QDockWidget* PaneFocus::paneOf(QWidget* widget) const
{
    for (; widget; widget = widget->parentWidget())
        if (auto* dock = qobject_cast<QDockWidget*>(widget);
            dock && (dock->parentWidget() == m_window || m_window->centralWidget() == dock))
            return dock;
    return nullptr;
}

void PaneFocus::focusMoved(QWidget* now)
{
    QDockWidget* pane = paneOf(now);
    if (pane && !m_raising)
        m_latest[pane] = now;
    if (pane == m_current)
        return;
    delete m_mark;
    if (m_current)
        m_current->removeEventFilter(this);
    m_current = pane;
    if (!pane)
        return;
    m_mark = new Mark(pane);
    pane->installEventFilter(this);
    placeMark();
    m_mark->show();
}

bool PaneFocus::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        placeMark();
    return false;
}

void PaneFocus::placeMark()
{
    if (m_mark && m_current) {
        m_mark->setGeometry(0, 0, m_current->width(), kMarkHeight);
        m_mark->raise();
    }
}

void PaneFocus::step(int direction)
{
    const std::vector<QDockWidget*> panes = panesOf(*m_window);
    if (panes.empty())
        return;
    const int count = static_cast<int>(panes.size());
    const auto at = std::find(panes.begin(), panes.end(), m_current.data());
    const int start = at == panes.end() ? (direction > 0 ? -1 : 0) : int(at - panes.begin());
    focusIn(panes[static_cast<std::size_t>((start + direction + count) % count)]);
}

void PaneFocus::focusIn(QDockWidget* pane)
{
    {
        // A pane that goes behind passes the focus on to a control that nobody has chosen.
        const QScopedValueRollback<bool> raising(m_raising, true);
        pane->raise();
    }
    if (pane->isFloating())
        pane->activateWindow();
    QWidget* wanted = m_latest.value(pane);
    if (!wanted || !takesFocus(wanted)) {
        const QList<QWidget*> all =
            QList<QWidget*>{pane->widget()} + pane->widget()->findChildren<QWidget*>();
        const auto first = std::find_if(all.begin(), all.end(), takesFocus);
        wanted = first == all.end() ? pane->widget() : *first;
    }
    wanted->setFocus(Qt::ShortcutFocusReason);
}

} // namespace mirabo
