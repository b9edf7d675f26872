#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>

class MrbCommand;
class QMainWindow;
class SoField;
class SoFieldContainer;
class SoGuiRenderArea;
class SoNode;
class SoSceneManager;

/// What extensions see of the tool: the scene, the selection and the command stack.
///
/// The order of the virtual operations is part of the binary interface. GUI thread only; the
/// signals are emitted inside the call that causes them.
class MRBEXT_API MrbServices : public QObject {
    Q_OBJECT

public:
    /// The running tool's services; null while no tool runs.
    static MrbServices* getInstance();

    /// Executes a command and puts it on the undo stack, which owns it. Returns what execute()
    /// returned.
    virtual bool pushCommand(MrbCommand* command) = 0;
    virtual QMainWindow* getMainWindow() = 0;
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

Q_SIGNALS:
    void sceneGraphChanged(SoNode* root);
    void selectedNodeChanged(SoFieldContainer* node);
    void selectedFieldChanged(SoField* field);

protected:
    MrbServices() = default;
    ~MrbServices() override;
    static void setInstance(MrbServices* services);
};
