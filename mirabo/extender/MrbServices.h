#pragma once

#include "mirabo/extender/MrbExport.h"

#ifndef Q_MOC_RUN // which cannot parse what C++20 headers of the standard library open
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>
#endif

#include <QObject>

class MrbCommand;
class QMainWindow;
class SoField;
class SoFieldContainer;
class SoGuiRenderArea;
class SoNode;
class SoSceneManager;

/// Access of extensions to the tool: the scene, the selection and the command stack.
///
/// Extensions reach it through MrbExtension::services(). Nodes and fields are the host's, which may
/// delete them at any time: hold a reference on what is kept beyond the signal or call that handed
/// it over, or ask again. Edits of the graph go through commands, under an SoWriteLock.
///
/// The order of the virtual operations is part of the binary interface. GUI thread only; the
/// signals are emitted inside the call that causes them. A slot must not edit the graph or open a
/// dialog: the change that caused the signal may still be under way.
class MRBEXT_API MrbServices : public QObject {
    Q_OBJECT

public:
    /// The running tool's services; null while no tool runs. Within a call of the tool into an
    /// extension they are the extension's own, as MrbExtension::services().
    static MrbServices* getInstance();

    /// Executes a command and puts it on the undo stack, which owns it. Returns what execute()
    /// returned.
    virtual bool pushCommand(MrbCommand* command) = 0;
    /// A parent for dialogs; null once the host has deleted the window.
    virtual QMainWindow* getMainWindow() = 0;
    /// Returns what was announced last and still lives; null for none.
    virtual SoField* getSelectedField() const = 0;
    virtual SoFieldContainer* getSelectedNode() const = 0;
    virtual void redo() = 0;
    /// Replaces the inspected scene; clears the undo stack.
    virtual void setSceneGraph(SoNode* root) = 0;
    /// Announces a selection. Announcing the same object again emits the signal again.
    virtual void setSelectedField(SoField* field) = 0;
    virtual void setSelectedNode(SoFieldContainer* node) = 0;
    virtual void undo() = 0;
    /// The host's scene manager, or none.
    virtual SoSceneManager* getSceneManager() const = 0;
    /// 1 when the tool runs with a viewer of its own.
    virtual int isStandalone() const = 0;
    /// The host's render area, or none.
    virtual SoGuiRenderArea* getRenderArea() const = 0;
    /// The inspected scene's root; null for none.
    virtual SoNode* getSceneGraph() const = 0;

Q_SIGNALS:
    /// Another root is shown; null for none. What was selected before is not any more.
    void sceneGraphChanged(SoNode* root);
    /// A node was selected in the tree or by an extension; null for none.
    void selectedNodeChanged(SoFieldContainer* node);
    /// A field was selected in a node overview; null for none.
    void selectedFieldChanged(SoField* field);

protected:
    MrbServices() = default;
    ~MrbServices() override;
    static void setInstance(MrbServices* services);
    /// The tool's, whoever asks.
    static MrbServices* getToolInstance();
};
