#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts, which this one includes
#include "mirabo/extender/private/Observed.h"
#endif
#include "mirabo/extender/MrbServices.h"
#include "mirabo/extender/private/CommandStackAccess.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/gui/SoGuiRenderArea.h>

#include <functional>
#include <memory>

class SoCommandManager;
class SoSelection;

namespace mirabo {
class CommandOwner;
}

/// The tool's services: what extensions see, and the launch context. Owns the command hub.
class MrbServicesImpl final : public MrbServices, public mirabo::CommandStackAccess {
    Q_OBJECT

public:
    /// Created on first use.
    static MrbServicesImpl* getInstance();
    static bool exists();
    static void destroyInstance();

    SoCommandManager* getCommandManager() const { return m_hub.get(); }

    bool pushCommand(MrbCommand* command) override;
    QMainWindow* getMainWindow() override;
    SoField* getSelectedField() const override;
    SoFieldContainer* getSelectedNode() const override { return m_selectedNode.get(); }
    void redo() override;
    void setSceneGraph(SoNode* root) override;
    void setSelectedField(SoField* field) override;
    void setSelectedNode(SoFieldContainer* node) override;
    void undo() override;
    SoSceneManager* getSceneManager() const override { return m_sceneManager.get(); }
    int isStandalone() const override { return m_standalone; }
    SoGuiRenderArea* getRenderArea() const override { return m_renderArea.get(); }
    SoNode* getSceneGraph() const override { return m_sceneGraph.get(); }

    bool pushOwnCommand(std::unique_ptr<MrbCommand> command) override;
    bool isLastCommand(const MrbCommand* command) const override;
    bool extendCommand(const MrbCommand* command, const std::function<bool()>& edit) override;
    SoRef<const SoRefCounter> holdSelectedField(SoField*& field) const override;
    bool isRunningCommand() const override;
    void removeCommands(const Test& test) override;

    void setStandalone(int on) { m_standalone = on; }
    void setRenderArea(SoGuiRenderArea* area) { m_renderArea.reset(area); }
    void setSceneManager(SoSceneManager* manager) { m_sceneManager.reset(manager); }
    /// The function that replaces the shown scene, and the main window; set once the window exists.
    void setSceneSetter(std::function<void(SoNode*)> setter) { m_sceneSetter = std::move(setter); }
    void setMainWindow(QMainWindow* window) { m_mainWindow = window; }

    /// The tree shows a new root: stored and told, without giving it to the viewer again.
    void announceSceneGraph(SoNode* root);
    /// Redraws the host's scene whenever this selection changes; null watches none.
    void watchSelection(SoSelection* selection);

private:
    MrbServicesImpl();
    ~MrbServicesImpl() override;
    static void selectionChanged(void* data, SoSelection* selection);

    std::unique_ptr<SoCommandManager> m_hub;
    std::unique_ptr<mirabo::CommandOwner> m_ownCommands;
    mirabo::Observed<SoField> m_selectedField; ///< a file's or a script's may go before its node
    mirabo::Observed<SoFieldContainer> m_fieldContainer;
    mirabo::Observed<SoFieldContainer> m_selectedNode;
    mirabo::Observed<SoNode> m_sceneGraph;
    SoRef<SoSelection> m_selection;
    mirabo::Observed<SoGuiRenderArea> m_renderArea;  ///< the host's or the viewer's
    mirabo::Observed<SoSceneManager> m_sceneManager; ///< the host's or the viewer's
    int m_standalone = 0;
    bool m_announced = false; ///< since setSceneGraph() was called
    std::function<void(SoNode*)> m_sceneSetter;
    QMainWindow* m_mainWindow = nullptr; // Not owned; the shell's.
};
