#include "mirabo/launch/PreferencePages.h"

#include "mirabo/core/Modal.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extension/ExtensionsPage.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/preferences/GeneralPage.h"
#include "mirabo/preferences/OutlinePage.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/preferences/ShortcutsPage.h"
#include "mirabo/preferences/SoFieldWatchPreferences.h"
#include "mirabo/preferences/SoMiraboPreferences.h"
#include "mirabo/preferences/SoNodeOverviewPreferences.h"
#include "mirabo/preferences/SoTreeViewPreferences.h"
#include "mirabo/preferences/SoViewerPreferences.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/viewer/SceneManagerLook.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <QCoreApplication>
#include <QPointer>

#include <memory>

namespace mirabo {

namespace {

QString nameOf(const char* page)
{
    return QCoreApplication::translate("Preferences", page);
}

void addViewerPage(SoMiraboPreferences* dialog)
{
    if (!MrbServicesImpl::getInstance()->getSceneManager())
        return;
    auto* page = new SoViewerPreferences(std::make_unique<SceneManagerLook>(), dialog);
    dialog->addPage(page->asPage(nameOf(QT_TRANSLATE_NOOP("Preferences", "Viewer"))));
}

void showTreePreferences(SoMiraboTreeView* tree)
{
    tree->setPreferences();
    const bool outlines = readHighlightSelectedNode();
    SoMiraboViewer* viewer = SoMiraboViewer::instance();
    if (outlines == (viewer->getHighlightMode() == SoMiraboViewer::OUTLINED))
        return;
    viewer->setHighlightMode(outlines ? SoMiraboViewer::OUTLINED : SoMiraboViewer::NOT_HIGHLIGHTED);
    if (outlines) // what is current is outlined without being chosen again
        tree->showItem(static_cast<SoTreeViewItem*>(tree->currentItem()));
}

void addViewPages(SoMiraboPreferences* dialog, SoMiraboTreeView* tree, SoMiraboEdition* edition)
{
    auto* treePage = new SoTreeViewPreferences(dialog);
    QObject::connect(treePage, &SoStylePreferences::saved, tree,
                     [tree] { showTreePreferences(tree); });
    dialog->addPage(treePage->asPage(nameOf(QT_TRANSLATE_NOOP("Preferences", "Tree View"))));

    auto* overviewPage = new SoNodeOverviewPreferences(dialog);
    QObject::connect(overviewPage, &SoStylePreferences::saved, edition->getTabs(),
                     &SoTabNodeOverview::setPreferences);
    dialog->addPage(
        overviewPage->asPage(nameOf(QT_TRANSLATE_NOOP("Preferences", "Node Overview"))));

    auto* watchPage = new SoFieldWatchPreferences(dialog);
    QObject::connect(watchPage, &SoStylePreferences::saved, edition->getWatch(),
                     &SoFieldWatch::setPreferences);
    dialog->addPage(watchPage->asPage(nameOf(QT_TRANSLATE_NOOP("Preferences", "Field Watch"))));
}

/// The pages beyond those of views and extensions.
void addOwnPages(SoMiraboPreferences* dialog, SoMiraboMainFrame& window, SoCommandManager& hub,
                 bool standalone)
{
    const auto add = [dialog](MrbPluginsManager::PreferencePage page) { dialog->addPage(page); };
    add((new GeneralPage(standalone, dialog))->asPage());
    // The host may delete the window while the dialog is open; the hub lives as long as the tool.
    const auto applyShortcuts = [window = QPointer(&window), &hub] {
        if (window)
            window->applyShortcuts(&hub);
    };
    add((new ShortcutsPage(window.shortcutEntries(), applyShortcuts, dialog))->asPage());
    const auto applyOutline = [] {
        if (SoMiraboViewer::exists())
            SoMiraboViewer::instance()->readOutlineStyle();
    };
    add((new OutlinePage(applyOutline, dialog))->asPage());
}

} // namespace

void editPreferences(SoMiraboMainFrame& window, SoCommandManager& hub, SoMiraboTreeView* tree,
                     SoMiraboEdition* edition, bool standalone)
{
    auto* dialog = new SoMiraboPreferences(&window);
    Modal modal(dialog);
    addViewerPage(dialog);
    addViewPages(dialog, tree, edition);
    for (const auto& page : MrbPluginsManager::getInstance()->createPreferencePages(dialog))
        dialog->addPage(page);
    addOwnPages(dialog, window, hub, standalone);
    // Last: choosing another profile ends the extensions whose pages come before.
    dialog->addPage((new ExtensionsPage(dialog))->asPage());
    modal.run();
}

} // namespace mirabo
