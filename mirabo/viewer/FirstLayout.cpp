#include "mirabo/viewer/FirstLayout.h"

#include "mirabo/core/ExtensionView.h"
#include "mirabo/extender/private/Later.h"

#include <kalmyr/base/SbTime.h>

#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>

#include <algorithm>

namespace mirabo {

namespace {

/// How long after it was first shown a window still finds its size, in seconds.
constexpr double kSettleTime = 1;
/// Width in which types, names and reference counts of a tree are readable, in characters.
constexpr int kTreeWidth = 66;
/// Shares of the window that the docks take at most.
constexpr double kTreeShare = 0.45;
constexpr double kOverviewShare = 0.42;
constexpr int kOverviewLines = 19;
/// Beside the tree: what overview and watch need to stand side by side, in characters.
constexpr int kTwoPanels = 78;
/// The same for the viewer and the views of extensions on its right, and what those take.
constexpr int kViewerAndViews = 78;
constexpr int kViews = 46;
constexpr double kViewsShare = 0.42;

} // namespace

FirstLayout::FirstLayout(QMainWindow* window) : QObject(window), m_window(window)
{
    window->installEventFilter(this);
}

bool FirstLayout::eventFilter(QObject*, QEvent* event)
{
    const double now = SbTime::monotonic().getValue();
    if (event->type() == QEvent::Show && m_shownAt < 0) {
        m_shownAt = now;
        apply();
    }
    if (event->type() != QEvent::Resize || m_shownAt < 0)
        return false;
    if (now - m_shownAt < kSettleTime) {
        applyLater();
    } else {
        m_window->removeEventFilter(this);
        deleteLater();
    }
    return false;
}

void FirstLayout::applyLater()
{
    if (m_pending)
        return;
    m_pending = true;
    callLater(this, 0, [this] {
        m_pending = false;
        apply();
    });
}

void FirstLayout::placeWatch(QDockWidget* overview, QDockWidget* watch, bool beside)
{
    const bool isBeside = !m_window->tabifiedDockWidgets(overview).contains(watch);
    if (beside == isBeside)
        return;
    if (beside) {
        m_window->removeDockWidget(watch);
        m_window->addDockWidget(Qt::BottomDockWidgetArea, watch, Qt::Horizontal);
        watch->show();
    } else {
        m_window->tabifyDockWidget(overview, watch);
        overview->raise();
    }
}

/// The views of extensions on the right: beside the viewer, or for lack of room behind the watch.
void FirstLayout::placeViews(QDockWidget* watch, int width)
{
    const int letter = m_window->fontMetrics().averageCharWidth();
    const bool beside = width >= letter * kViewerAndViews;
    for (auto* view :
         m_window->findChildren<ExtensionView*>(QString(), Qt::FindDirectChildrenOnly)) {
        const bool isBeside = m_window->dockWidgetArea(view) == Qt::RightDockWidgetArea;
        if (isBeside && beside) {
            m_window->resizeDocks({view}, {std::min(letter * kViews, int(width * kViewsShare))},
                                  Qt::Horizontal);
        } else if (isBeside && view->isVisible()) {
            m_window->tabifyDockWidget(watch, view);
            m_moved.push_back(view);
        } else if (beside && m_moved.removeOne(view)) {
            m_window->addDockWidget(Qt::RightDockWidgetArea, view);
        }
    }
}

void FirstLayout::apply()
{
    const auto dock = [this](const char* name) {
        return m_window->findChild<QDockWidget*>(name, Qt::FindDirectChildrenOnly);
    };
    QDockWidget* tree = dock("dockMainWin");
    QDockWidget* overview = dock("dockNodeOverview");
    QDockWidget* watch = dock("dockFieldWatch");
    if (!tree || !overview || !watch)
        return;
    const QWidget* viewer = m_window->centralWidget();
    if (viewer && !viewer->isHidden())
        applyAroundViewer(tree, overview, watch);
    else
        applyBesideHost(tree, overview, watch);
}

void FirstLayout::applyAroundViewer(QDockWidget* tree, QDockWidget* overview, QDockWidget* watch)
{
    const QFontMetrics font = m_window->fontMetrics();
    const int treeWidth =
        std::min(font.averageCharWidth() * kTreeWidth, int(m_window->width() * kTreeShare));
    const int rest = m_window->width() - treeWidth;
    const int height =
        std::min(font.height() * kOverviewLines, int(m_window->height() * kOverviewShare));
    m_window->resizeDocks({tree}, {treeWidth}, Qt::Horizontal);
    placeWatch(overview, watch, rest >= font.averageCharWidth() * kTwoPanels);
    placeViews(watch, rest);
    (m_window->tabifiedDockWidgets(overview).contains(watch) ? overview : watch)->raise();
    m_window->resizeDocks({overview, watch}, {rest * 3 / 5, rest * 2 / 5}, Qt::Horizontal);
    m_window->resizeDocks({overview, watch}, {height, height}, Qt::Vertical);
}

void FirstLayout::applyBesideHost(QDockWidget* tree, QDockWidget* overview, QDockWidget* watch)
{
    for (auto* view :
         m_window->findChildren<ExtensionView*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (m_window->dockWidgetArea(view) == Qt::RightDockWidgetArea && !m_moved.contains(view))
            m_moved.push_back(view);
    }
    for (QDockWidget* moved : QList<QDockWidget*>{overview, watch} + m_moved)
        m_window->removeDockWidget(moved);
    m_window->addDockWidget(Qt::RightDockWidgetArea, overview);
    const int width = m_window->width();
    const int treeWidth = width / 3;
    const int rest = width - treeWidth;
    const bool hasRoom = rest >= m_window->fontMetrics().averageCharWidth() * kTwoPanels;
    if (hasRoom && !m_moved.isEmpty())
        m_window->splitDockWidget(overview, m_moved.first(), Qt::Horizontal);
    m_window->splitDockWidget(overview, watch, Qt::Vertical);
    for (QDockWidget* view : m_moved)
        if (!hasRoom || view != m_moved.first())
            m_window->tabifyDockWidget(hasRoom ? m_moved.first() : watch, view);
    for (QDockWidget* shown : QList<QDockWidget*>{overview, watch} + m_moved)
        shown->show();
    watch->raise();
    if (hasRoom && !m_moved.isEmpty()) {
        const int views = int(rest * kViewsShare);
        m_window->resizeDocks({tree, overview, m_moved.first()}, {treeWidth, rest - views, views},
                              Qt::Horizontal);
    } else {
        m_window->resizeDocks({tree, overview}, {treeWidth, rest}, Qt::Horizontal);
    }
    m_window->resizeDocks({overview, watch}, {3, 2}, Qt::Vertical);
}

} // namespace mirabo
