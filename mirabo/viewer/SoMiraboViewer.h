#pragma once

#include "mirabo/core/Panels.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/viewer/Document.h"
#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/viewer/SceneHighlighter.h"
#endif
#include "mirabo/viewer/SceneExport.h"
#include "mirabo/viewer/ScenePrinting.h"
#include "mirabo/viewer/SceneSaving.h"
#include "mirabo/viewer/ViewerDocks.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class LiveInput;
class QDockWidget;
class QWidget;
class SoPath;
class SoQtExaminerViewer;
class SoSelection;

/// The inspected scene as the rest of the tool has it: as a document, with its outline, in the
/// docks of the window, and, when the tool runs standalone, in a viewer of its own.
class SoMiraboViewer final : public QObject, public mirabo::SceneDocument {
    Q_OBJECT

public:
    enum HighlightMode { OUTLINED = 0, NOT_HIGHLIGHTED = 1 };

    /// Created on first use.
    static SoMiraboViewer* instance();
    static bool exists();
    static void destroyInstance();

    /// Makes the docks, and the viewer when the tool runs standalone.
    void setUp(SoMiraboMainFrame* frame, bool standalone);

    /// The main window is being destroyed; its docks may outlive it.
    void forgetWindow();

    /// Null before setUp().
    QDockWidget* getTreeDock() const { return m_docks ? m_docks->tree : nullptr; }
    QDockWidget* getOverviewDock() const { return m_docks ? m_docks->overview : nullptr; }
    QDockWidget* getWatchDock() const { return m_docks ? m_docks->watch : nullptr; }
    SoQtExaminerViewer* getExaminerViewer() const { return m_examiner.get(); }
    /// The widget in which the scene is drawn: the viewer's own or the host's. Null when it is
    /// drawn nowhere, or not by the toolkit's Qt widgets.
    QWidget* viewerWidget() const;
    /// Brings that widget's window to the front and gives it the focus.
    void bringToFront();
    SoSelection* getSelectionNode() const { return m_highlighter.getSelection(); }
    const QString& getCurrentFile() const { return m_document.getFile(); }

    /// While another thread edits, as soon as that is over.
    void setScene(SoNode* root, bool resetCommands) override;
    SoNode* getScene() const override { return m_highlighter.getScene(); }
    bool openSceneFile(const QString& fileName) override;
    /// As openSceneFile(), but a file that cannot be opened at all changes and shows nothing.
    bool openDroppedFile(const QString& fileName);
    /// Shows a copy of the document that has that file (empty: none).
    bool restoreScene(const QString& copy, const QString& fileName);
    bool closeScene() override;
    void reopenRecentFile(int index) override;
    bool canReload() const override { return !getCurrentFile().isEmpty(); }
    void highlight(const SoPath* path) override;
    void saveWindowSettings() override { writeSettings(); }
    void refresh() override;

    /// State of the scene that others know.
    struct SceneState {
        std::function<bool()> isModified; ///< since it was shown or saved
        std::function<bool()> isVrml;     ///< a VRML97 world
    };
    void setSceneState(SceneState state) { m_state = std::move(state); }
    /// All that is shown: the scene, and what was pasted beside it.
    mirabo::SceneWriter::Content wholeScene() const;

    /// To the document's file, in its format; asks for a name without one. When the file has no
    /// known format any more, or cannot be written, the document has no file afterwards. False
    /// when nothing was saved.
    bool saveScene();
    /// Asks for a name and a format. Null: the whole scene, which has that file from then on.
    bool saveSceneAs(SoNode* node = nullptr);
    /// Writes a graph (null: the whole scene) without asking for anything but files that it refers
    /// to. `showInViewer`: shows what was written as the scene.
    bool writeScene(SoNode* node, const QString& fileName, mirabo::SceneFileFormat format,
                    bool showInViewer);
    /// Writes what the view shows to a picture, a drawing or a model; asks for the file and its
    /// format. A failure posts a debug error.
    void exportImage();
    /// Prints the picture that the view shows; asks for the printer.
    void printFile();
    /// Edits of the scene by which the clipboard's operations are undoable.
    struct SceneEdits {
        /// Returns the current node when it cannot be selected: when there is no outline, or it
        /// hangs on a field. Else null.
        std::function<SoNode*()> currentNode;
        /// Takes the end of a path out of the scene, with what is left without content above it;
        /// the current node when the path does not lead into the scene.
        std::function<bool(const SoPath& path)> cut;
        /// Puts a node beside the scene.
        std::function<bool(SoNode*)> addBeside;
    };
    void setSceneEdits(SceneEdits edits) { m_edits = std::move(edits); }
    bool canCopy() const;
    /// Copies what is selected, with its way from the top, to the clipboard. False when there is
    /// nothing, another thread edits, or, with a message shown, memory is short.
    bool copySelection();
    /// The same, and takes it out of the scene.
    void cutSelection();
    /// Puts what was copied beside the scene. False, with nothing told, when the clipboard holds
    /// something else.
    bool pasteClipboard();
    /// True when the caller may go on: nothing would be lost, or the user has decided.
    bool confirmUnsavedChanges();
    /// Called when the document's own file was read anew, before the panels let go of the old
    /// scene; returns what is to be called when they show the new one.
    void setReloadKeeper(std::function<std::function<void()>()> keep)
    {
        m_keepForReload = std::move(keep);
    }
    HighlightMode getHighlightMode() const
    {
        return m_highlighter.isOn() ? OUTLINED : NOT_HIGHLIGHTED;
    }
    void setHighlightMode(HighlightMode mode);
    /// Takes over colour and width of the outline from the preferences.
    void readOutlineStyle();
    /// False in the launch modes that have no highlight.
    bool canHighlight() const { return m_highlighter.isInstalled(); }

    /// A file is being read: the window is painted meanwhile, and timers of the host run, but
    /// nothing may be replaced or torn down.
    bool isReading() const { return m_document.isReading(); }
    /// Reads a whole scene from an opened input and makes it the document. The old scene stays, and
    /// the first error is shown, when that fails.
    bool readScene(LiveInput& input);
    /// Adds what reading another file, which the scene refers to, gave.
    void addReadMessages(const mirabo::ReadMessages& messages);

    void addRecentFile(const QString& path);
    /// Window geometry, dock layout and recent files, from and to the settings.
    void readSettings();
    void writeSettings();

Q_SIGNALS:
    /// The scene is about to be replaced; whoever holds on to nodes lets go.
    void sceneAboutToChange();
    /// The new scene is in place: the tree is rebuilt on it (null: none).
    void sceneChanged(SoNode* root);
    void undoResetRequested();
    /// The scene has another file, or none.
    void fileChanged();
    /// Something else is selected, or nothing.
    void selectionChanged();
    /// The scene was saved to its file.
    void sceneSaved();
    /// The user picked an occurrence of a node in the viewer; the path begins at the selection
    /// node.
    void picked(const SoPath* path);
    /// The errors and warnings of the last file that was read, or could not be: once a read, at its
    /// end, and whenever more come in later; none when the scene is closed.
    void readMessagesChanged(const mirabo::ReadMessages& messages);

private:
    SoMiraboViewer();
    ~SoMiraboViewer() override;

    mirabo::Document::Listener listener();
    mirabo::SceneSaving::Document savedDocument();
    bool isModified() const { return m_state.isModified && m_state.isModified(); }
    void replaceScene(SoNode* root);
    void createExaminer();
    void showRead(SoNode* root, bool isReload);

    QPointer<SoMiraboMainFrame> m_frame; // Not owned; the shell's. The host may delete it.
    std::unique_ptr<SoQtExaminerViewer> m_examiner;
    mirabo::SceneHighlighter m_highlighter;
    mirabo::Document m_document;
    std::optional<mirabo::ViewerDocks> m_docks;
    QDockWidget* m_viewerDock = nullptr;
    SoRef<SoPath> pathToCopy() const;

    SceneState m_state;
    SceneEdits m_edits;
    mirabo::SceneSaving m_saving;
    mirabo::SceneExport m_export;
    mirabo::ScenePrinting m_printing;
    std::function<std::function<void()>()> m_keepForReload;
};
