#pragma once

#include "mirabo/extender/MrbServices.h"

#include <kalmyr/base/SoRef.h>

#include <functional>
#include <memory>

class SoCommandManager;
class SoSelection;

/// The tool's services: what extensions see, and the launch context. Owns the command hub.
class MrbServicesImpl final : public MrbServices {
    Q_OBJECT

public:
    /// Created on first use.
    static MrbServicesImpl* getInstance();
    static bool exists();
    static void destroyInstance();

    SoCommandManager* getCommandManager() const { return m_hub.get(); }

    bool pushCommand(MrbCommand* command) override;
    QMainWindow* getMainWindow() override;
    SoField* getSelectedField() const override { return m_selectedField; }
    SoFieldContainer* getSelectedNode() const override { return m_selectedNode; }
    void redo() override;
    void setSceneGraph(SoNode* root) override;
    void setSelectedField(SoField* field) override;
    void setSelectedNode(SoFieldContainer* node) override;
    void undo() override;
    SoSceneManager* getSceneManager() const override { return m_sceneManager; }
    int isStandalone() const override { return m_standalone; }
    SoGuiRenderArea* getRenderArea() const override { return m_renderArea; }

    void setStandalone(int on) { m_standalone = on; }
    void setRenderArea(SoGuiRenderArea* area) { m_renderArea = area; }
    void setSceneManager(SoSceneManager* manager) { m_sceneManager = manager; }
    /// Who replaces the shown scene, and who is the main window; set once the window exists.
    void setSceneSetter(std::function<void(SoNode*)> setter) { m_sceneSetter = std::move(setter); }
    void setMainWindow(QMainWindow* window) { m_mainWindow = window; }

    /// The tree shows a new root: stored and told, without giving it to the viewer again.
    void announceSceneGraph(SoNode* root);
    SoNode* getSceneGraph() const { return m_sceneGraph; }
    /// Redraws the host's scene whenever this selection changes; null watches none.
    void watchSelection(SoSelection* selection);

private:
    MrbServicesImpl();
    ~MrbServicesImpl() override;
    static void selectionChanged(void* data, SoSelection* selection);

    std::unique_ptr<SoCommandManager> m_hub;
    SoField* m_selectedField = nullptr;         // Not owned.
    SoFieldContainer* m_selectedNode = nullptr; // Not owned.
    SoNode* m_sceneGraph = nullptr;             // Not owned; the viewer keeps it.
    SoRef<SoSelection> m_selection;
    SoGuiRenderArea* m_renderArea = nullptr;  // Not owned; the host's or the viewer's.
    SoSceneManager* m_sceneManager = nullptr; // Not owned; the host's or the viewer's.
    int m_standalone = 0;
    std::function<void(SoNode*)> m_sceneSetter;
    QMainWindow* m_mainWindow = nullptr; // Not owned; the shell's.
};
