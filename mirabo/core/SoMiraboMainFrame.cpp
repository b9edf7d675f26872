#include "mirabo/core/SoMiraboMainFrame.h"

#include "mirabo/core/FilePresence.h"
#include "mirabo/core/InlineFetcher.h"
#include "mirabo/core/PaneFocus.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/private/EventFrames.h"
#include "mirabo/preferences/DragFormats.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>

using mirabo::ActionId;
using mirabo::ActionSpec;

namespace {

constexpr char kIconPrefix[] = ":/Mirabo_icons/Icons/";
constexpr int kFindComboWidth = 150;
constexpr int kCategoryCount = 14;
/// Stands for a separator in a list of entries.
constexpr ActionId kSeparator = ActionId::Count;

/// Returns the key, which the text leaves out.
QString toolTipOf(const QAction& action)
{
    const QString text = QString(action.text()).remove('&').remove("...");
    const QString key = action.shortcut().toString(QKeySequence::NativeText);
    return key.isEmpty() ? text : text + " (" + key + ')';
}

QAction* makeAction(const ActionSpec& spec, QObject* parent)
{
    auto* action = new QAction(QString(spec.text), parent);
    if (spec.icon)
        action->setIcon(QIcon(QString(kIconPrefix) + spec.icon));
    if (spec.shortcut)
        action->setShortcut(QKeySequence::fromString(spec.shortcut, QKeySequence::PortableText));
    action->setToolTip(toolTipOf(*action));
    action->setCheckable(spec.check != ActionSpec::NotCheckable);
    action->setChecked(spec.check == ActionSpec::Checked);
    action->setEnabled(false); // until somebody answers
    action->setObjectName(QString(spec.text).remove('&').remove('.').remove(' '));
    return action;
}

} // namespace

SoMiraboMainFrame::SoMiraboMainFrame(QWidget* parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags)
{
    setObjectName("SoMiraboMainFrame");
    // A tool window inside a host's parent would be clipped: it stays a window of its own.
    if (parent)
        setWindowFlags(Qt::Window | flags);
    mirabo::EventFrames::install();
    mirabo::EventFrames::addRoot(this);
}

SoMiraboMainFrame::~SoMiraboMainFrame()
{
    if (m_deathHandler)
        m_deathHandler();
    mirabo::EventFrames::removeRoot(this);
}

void SoMiraboMainFrame::setUp(SoCommandManager* hub, bool standalone)
{
    m_filterMask = mirabo::kAllCategories;
    m_mayReplaceScene = standalone;
    setWindowTitle("Mirabo");
    setWindowIcon(QIcon(QString(kIconPrefix) + "MiraboIcon.png"));
    // A host's loop ends with the host's last window, whatever the tool shows or closes.
    setAttribute(Qt::WA_QuitOnClose, standalone);
    setAcceptDrops(true);
    setDockNestingEnabled(true);
    setIconSize(QSize(20, 20));
    createActions();
    createMenus();
    createToolBars();
    connectActions(hub);
    m_recentMenu->setEnabled(standalone);
    if (standalone) {
        // A host may have its own way to get what its scene refers to.
        auto* fetcher = new mirabo::InlineFetcher(this);
        connect(fetcher, &mirabo::InlineFetcher::notFetched, this, [this](const QString& url) {
            statusBar()->showMessage(tr("not loaded: %1").arg(url));
        });
        connect(fetcher, &mirabo::InlineFetcher::messagesPosted, this,
                &SoMiraboMainFrame::inlineRead);
    }
    statusBar()->setSizeGripEnabled(true);
}

void SoMiraboMainFrame::createActions()
{
    const auto& table = mirabo::actionTable();
    for (std::size_t i = 0; i < table.size(); ++i)
        m_actions[i] = makeAction(table[i], this);
}

mirabo::ShortcutEntries SoMiraboMainFrame::shortcutEntries() const
{
    const auto& table = mirabo::actionTable();
    mirabo::ShortcutEntries entries;
    for (std::size_t i = 0; i < table.size(); ++i)
        entries.push_back(
            {m_actions[i]->objectName(), QString(table[i].text).remove('&').remove("..."),
             QKeySequence::fromString(table[i].shortcut, QKeySequence::PortableText)});
    return entries;
}

void SoMiraboMainFrame::applyShortcuts(SoCommandManager* hub)
{
    const mirabo::ShortcutEntries entries = shortcutEntries();
    for (std::size_t i = 0; i < m_actions.size(); ++i) {
        m_actions[i]->setShortcut(mirabo::readShortcut(entries[i]));
        m_actions[i]->setToolTip(toolTipOf(*m_actions[i]));
        hub->actions().bind(static_cast<ActionId>(i), m_actions[i]); // which reads the tool tip
    }
}

void SoMiraboMainFrame::addEntries(QWidget* target, std::initializer_list<ActionId> ids) const
{
    for (const ActionId id : ids) {
        if (id == kSeparator) {
            auto* line = new QAction(target);
            line->setSeparator(true);
            target->addAction(line);
        } else {
            target->addAction(action(id));
        }
    }
}

void SoMiraboMainFrame::addCategories(QWidget* target) const
{
    for (int bit = 0; bit < kCategoryCount; ++bit)
        target->addAction(categoryAction(bit));
}

QMenu* SoMiraboMainFrame::addNamedMenu(const QString& title)
{
    QMenu* menu = menuBar()->addMenu(title);
    menu->setObjectName(QString(title).remove('&') + "Menu");
    menu->setToolTipsVisible(true);
    return menu;
}

void SoMiraboMainFrame::createMenus()
{
    QMenu* file = addNamedMenu("File");
    addEntries(file, {ActionId::New, ActionId::Open, kSeparator, ActionId::Reload, kSeparator,
                      ActionId::Close, kSeparator, ActionId::Save, ActionId::SaveAs, kSeparator,
                      ActionId::Export, kSeparator, ActionId::Print});
    m_recentMenu = file->addMenu("Recent &Files");
    m_recentMenu->setObjectName("RecentFilesMenu");
    for (QAction*& recent : m_recentActions) {
        recent = m_recentMenu->addAction(QString());
        recent->setVisible(false);
    }
    m_presence = new mirabo::FilePresence(this);
    connect(m_presence, &mirabo::FilePresence::checked, this, &SoMiraboMainFrame::showPresence);
    connect(m_recentMenu, &QMenu::aboutToShow, m_presence,
            [this] { m_presence->check(recentPaths()); });
    addEntries(file, {kSeparator, ActionId::Quit});

    addEntries(addNamedMenu("&Edit"),
               {ActionId::Undo, ActionId::Redo, kSeparator, ActionId::Cut, ActionId::Copy,
                ActionId::Paste, kSeparator, ActionId::Delete, kSeparator, ActionId::Preferences});
    m_viewMenu = addNamedMenu("&View");
    m_panes = new mirabo::PaneFocus(this);
    createTreeViewMenu();
    addEntries(addNamedMenu("&?"), {ActionId::Contents, kSeparator, ActionId::About});
}

void SoMiraboMainFrame::createTreeViewMenu()
{
    QMenu* tree = addNamedMenu("&TreeView");
    addEntries(tree, {ActionId::IgnoreEnable, kSeparator, ActionId::ShowAllReferences,
                      ActionId::HideAllReferences, kSeparator, ActionId::NextReference,
                      ActionId::Preferences, kSeparator, ActionId::Find, ActionId::FindNext});
    addEntries(tree->addMenu("Bookmarks"),
               {ActionId::ToggleBookmark, kSeparator, ActionId::NextBookmark,
                ActionId::PreviousBookmark, kSeparator, ActionId::ClearBookmarks});
    QMenu* filter = tree->addMenu("Filter");
    addEntries(filter, {ActionId::ToggleFilters, kSeparator});
    addCategories(filter);
    // In no menu, yet reachable by its key.
    addAction(action(ActionId::PreviousReference));
}

QToolBar* SoMiraboMainFrame::addNamedToolBar(const QString& title)
{
    QToolBar* bar = addToolBar(title);
    bar->setObjectName(QString(title).remove(' '));
    return bar;
}

void SoMiraboMainFrame::createToolBars()
{
    addEntries(addNamedToolBar("File Tool Bar"),
               {ActionId::New, ActionId::Open, kSeparator, ActionId::Reload, ActionId::Close,
                ActionId::Save, ActionId::SaveAs, kSeparator, ActionId::Print, ActionId::Export});
    addEntries(addNamedToolBar("Edit Tool Bar"), {ActionId::Undo, ActionId::Redo, kSeparator,
                                                  ActionId::Cut, ActionId::Copy, ActionId::Paste});
    QToolBar* search = addNamedToolBar("Search Tool Bar");
    addEntries(search, {ActionId::Find});
    m_findCombo = new QComboBox(search);
    m_findCombo->setObjectName("SearchBox");
    m_findCombo->setEditable(true);
    m_findCombo->setMinimumWidth(kFindComboWidth);
    m_findCombo->setDuplicatesEnabled(false);
    m_findCombo->setAccessibleName("Text to find");
    m_findCombo->setEnabled(false);
    search->addWidget(m_findCombo);
    addEntries(search, {ActionId::FindPrevious, ActionId::FindNext});
    addEntries(
        addNamedToolBar("Bookmark Tool Bar"),
        {ActionId::ToggleBookmark, kSeparator, ActionId::NextBookmark, ActionId::PreviousBookmark});
    QToolBar* filter = addNamedToolBar("Filter Tool Bar");
    addEntries(filter, {ActionId::ToggleFilters, kSeparator});
    addCategories(filter);
    // The bar is full: the arrow beside the toggle leads to the dialog.
    auto* toggle =
        qobject_cast<QToolButton*>(filter->widgetForAction(action(ActionId::ToggleFilters)));
    auto* custom = new QMenu(toggle);
    custom->addAction(action(ActionId::CustomFilter));
    toggle->setMenu(custom);
    toggle->setPopupMode(QToolButton::MenuButtonPopup);
}

void SoMiraboMainFrame::connectActions(SoCommandManager* hub)
{
    const auto run = [&](ActionId id, auto slot) {
        connect(action(id), &QAction::triggered, hub, slot);
    };
    // Intended: "New" closes the scene as "Close" does.
    run(ActionId::New, &SoCommandManager::closeFile);
    run(ActionId::Open, &SoCommandManager::openFile);
    run(ActionId::Reload, &SoCommandManager::reloadFile);
    run(ActionId::Close, &SoCommandManager::closeFile);
    run(ActionId::Save, &SoCommandManager::saveFile);
    run(ActionId::SaveAs, &SoCommandManager::saveAsFile);
    run(ActionId::Print, &SoCommandManager::printQt);
    run(ActionId::Export, &SoCommandManager::printFile);
    run(ActionId::Quit, &SoCommandManager::closeApp);
    run(ActionId::Undo, &SoCommandManager::undo);
    run(ActionId::Redo, &SoCommandManager::redo);
    run(ActionId::Cut, &SoCommandManager::cutNode);
    run(ActionId::Copy, &SoCommandManager::copyNode);
    run(ActionId::Paste, &SoCommandManager::pasteNode);
    run(ActionId::Find, &SoCommandManager::showFindDialog);
    run(ActionId::FindNext, &SoCommandManager::findNext);
    run(ActionId::FindPrevious, &SoCommandManager::findPrevious);
    run(ActionId::ToggleBookmark, &SoCommandManager::toggleBookmark);
    run(ActionId::NextBookmark, &SoCommandManager::nextBookmark);
    run(ActionId::PreviousBookmark, &SoCommandManager::previousBookmark);
    run(ActionId::ClearBookmarks, &SoCommandManager::clearBookmark);
    run(ActionId::Insert, &SoCommandManager::treeAddNode);
    for (const ActionId id : {ActionId::Delete, ActionId::Explore, ActionId::ExploreAll,
                              ActionId::InsertClipboard, ActionId::OpenViewer})
        connect(action(id), &QAction::triggered, hub, [hub, id] { hub->actions().run(id); });
    run(ActionId::IgnoreEnable, &SoCommandManager::ignoreEnable);
    run(ActionId::Preferences, &SoCommandManager::editPreferences);
    run(ActionId::ShowAllReferences, &SoCommandManager::showAllReferences);
    run(ActionId::HideAllReferences, &SoCommandManager::removeAllReferences);
    run(ActionId::NextReference, &SoCommandManager::nextReference);
    run(ActionId::PreviousReference, &SoCommandManager::previousReference);
    run(ActionId::Contents, &SoCommandManager::launchMiraboHelpViewer);
    run(ActionId::About, &SoCommandManager::launchAboutMiraboFrame);
    applyShortcuts(hub);
    // The box may outlive the window: what is in use stays when the host deletes that.
    connect(&hub->actions(), &mirabo::ActionRegistry::updated, this,
            [this] { m_findCombo->setEnabled(action(ActionId::FindNext)->isEnabled()); });
    for (QAction* recent : m_recentActions)
        connect(recent, &QAction::triggered, hub, &SoCommandManager::openFileRecent);
    connect(m_findCombo->lineEdit(), &QLineEdit::returnPressed, hub, &SoCommandManager::find);
    connect(this, &SoMiraboMainFrame::fieldRowDropped, hub, [hub] { hub->setFieldWatch(nullptr); });
    connect(this, &SoMiraboMainFrame::treeRowDropped, hub, [hub] { hub->setNodeOverview(); });
    connectFilters(hub);
}

void SoMiraboMainFrame::connectFilters(SoCommandManager* hub)
{
    connect(this, &SoMiraboMainFrame::filterChanged, hub, &SoCommandManager::setFilter);
    connect(action(ActionId::Filter), &QAction::triggered, hub,
            [hub] { hub->actions().run(ActionId::Filter); });
    connect(action(ActionId::ToggleFilters), &QAction::toggled, this,
            &SoMiraboMainFrame::on_toggleFilterAction_toggled);
    connect(action(ActionId::CustomFilter), &QAction::toggled, this,
            &SoMiraboMainFrame::on_customFilterAction_toggled);
    for (int bit = 0; bit < kCategoryCount; ++bit)
        connect(categoryAction(bit), &QAction::toggled, this, &SoMiraboMainFrame::on_filterChanged);
}

QAction* SoMiraboMainFrame::categoryAction(int bit) const
{
    return action(static_cast<ActionId>(static_cast<int>(ActionId::Appearance) + bit));
}

int SoMiraboMainFrame::getCheckedCategories() const
{
    int mask = 0;
    for (int bit = 0; bit < kCategoryCount; ++bit)
        if (categoryAction(bit)->isChecked())
            mask |= 1 << bit;
    return mask;
}

void SoMiraboMainFrame::checkCategories(int mask)
{
    m_checkingAll = true;
    for (int bit = 0; bit < kCategoryCount; ++bit)
        categoryAction(bit)->setChecked(mask & 1 << bit);
    m_checkingAll = false;
    on_filterChanged();
}

void SoMiraboMainFrame::on_toggleFilterAction_toggled(bool on)
{
    m_filterMask = on ? getCheckedCategories() : mirabo::kAllCategories;
    Q_EMIT filterChanged(m_filterMask);
}

void SoMiraboMainFrame::on_filterChanged()
{
    if (m_checkingAll)
        return;
    if (action(ActionId::ToggleFilters)->isChecked())
        on_toggleFilterAction_toggled(true);
    else
        action(ActionId::ToggleFilters)->setChecked(true);
}

void SoMiraboMainFrame::on_customFilterAction_toggled(bool on)
{
    Q_EMIT customFilterToggled(on);
}

void SoMiraboMainFrame::fillViewMenu()
{
    m_viewMenu->clear();
    for (const QDockWidget* dock :
         findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (dock->features() & QDockWidget::DockWidgetClosable)
            m_viewMenu->addAction(dock->toggleViewAction());
    m_viewMenu->addSeparator();
    for (const QToolBar* bar : findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly))
        m_viewMenu->addAction(bar->toggleViewAction());
    m_viewMenu->addSeparator();
    m_viewMenu->addActions({m_panes->nextAction(), m_panes->previousAction()});
}

void SoMiraboMainFrame::showRecentFiles(const QStringList& paths)
{
    for (int i = 0; i < kRecentFileCount; ++i) {
        QAction* recent = m_recentActions[static_cast<std::size_t>(i)];
        if (!recent)
            return; // not set up
        recent->setVisible(i < paths.size());
        if (i >= paths.size())
            continue;
        recent->setText(QString("&%1 %2").arg(i + 1).arg(paths[i]));
        recent->setData(paths[i]);
        recent->setIcon(QIcon());
        recent->setStatusTip(QString());
    }
}

QStringList SoMiraboMainFrame::recentPaths() const
{
    QStringList paths;
    for (const QAction* recent : m_recentActions)
        if (recent->isVisible())
            paths << recent->data().toString();
    return paths;
}

void SoMiraboMainFrame::showPresence(const QString& path, bool exists)
{
    for (QAction* recent : m_recentActions) {
        if (recent->data().toString() != path)
            continue;
        recent->setIcon(exists ? QIcon() : QIcon(":/Mirabo_icons/Icons/error.png"));
        recent->setStatusTip(exists ? QString() : tr("This file doesn't exist anymore."));
    }
}

void SoMiraboMainFrame::closeEvent(QCloseEvent* event)
{
    const QPointer<SoMiraboMainFrame> self(this);
    if (m_mayClose && !m_mayClose()) {
        event->ignore();
        return;
    }
    if (!self)
        return; // the host deleted the window while the question was open
    if (m_closeHandler)
        m_closeHandler();
    QMainWindow::closeEvent(event);
}

bool SoMiraboMainFrame::takes(const QMimeData& data) const
{
    return data.hasFormat(mirabo::kFieldRowFormat) || data.hasFormat(mirabo::kTreeRowFormat)
           || (data.hasUrls() && action(ActionId::Open)->isEnabled());
}

void SoMiraboMainFrame::dragEnterEvent(QDragEnterEvent* event)
{
    if (takes(*event->mimeData()))
        event->acceptProposedAction();
}

// A row that is dropped on the window, and not on a panel that has a use of its own for it, is to
// be kept in view: a field by the watch, a node by a tab of its own.
void SoMiraboMainFrame::dropEvent(QDropEvent* event)
{
    const QMimeData* data = event->mimeData();
    if (!takes(*data))
        return;
    event->acceptProposedAction();
    if (data->hasFormat(mirabo::kFieldRowFormat)) {
        Q_EMIT fieldRowDropped();
    } else if (data->hasFormat(mirabo::kTreeRowFormat)) {
        Q_EMIT treeRowDropped();
    } else {
        const QString path = data->urls().first().toLocalFile();
        if (!path.isEmpty() && m_dropHandler)
            m_dropHandler(path);
    }
}
