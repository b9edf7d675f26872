#pragma once

#include "mirabo/tree/BookmarkPath.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>
#include <vector>

class MrbFindDialog;
class QComboBox;
class SoCommandManager;
class SoMiraboTreeView;
class SoTreeViewItem;

namespace mirabo {

class TypedSearch;

/// Finding rows of the tree again: the find dialog, the search in the tool bar, and bookmarks,
/// which it keeps from one showing of a scene to the next. Answers the hub's requests for them.
class TreeNavigator final : public QObject {
    Q_OBJECT

public:
    /// Texts that the lists of earlier searches hold.
    static constexpr int kHistory = 20;

    /// The tree owns it. `searchBox` is the editable one of the tool bar, in the same window.
    TreeNavigator(SoMiraboTreeView* tree, QComboBox* searchBox, SoCommandManager* hub);
    ~TreeNavigator() override;

    /// Tells the name under which bookmarks of the scene are kept; empty: they are not.
    void setSceneNamer(std::function<QString()> namer) { m_sceneNamer = std::move(namer); }
    MrbFindDialog* dialog() const;

    /// Writes the bookmarks of the shown scene to the settings now.
    void saveBookmarks();

private:
    void registerActions();
    void updateActions();
    void showFindDialog();
    QString searchText() const;
    /// Searches with the options of the dialog, but for `clear` and `set`.
    void find(unsigned clear = 0, unsigned set = 0);
    void goTo(SoTreeViewItem* row);
    void toggleBookmark();
    void stepBookmark(bool backward);
    void clearBookmarks();
    void bookmarksChanged();
    void sceneLeaves();
    void sceneCame();
    void findLostBookmarks();

    SoMiraboTreeView* m_tree; // Not owned; owns us.
    QPointer<SoCommandManager> m_hub;
    QPointer<QComboBox> m_searchBox;
    QPointer<MrbFindDialog> m_dialog;
    TypedSearch* m_typed; // Owned by the tree.
    std::function<QString()> m_sceneNamer;
    QString m_scene;                    ///< name of the shown scene
    std::vector<BookmarkPath> m_stored; ///< its bookmarks as they were read or written last
    QTimer m_saveLater;                 ///< at the end of the pass
    QTimer m_findLost;                  ///< at the end of a pass in which rows changed
};

} // namespace mirabo
