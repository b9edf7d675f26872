#pragma once

#include "mirabo/extender/MrbServices.h"

#include <functional>

namespace mirabo {

class HostedExtension;

/// The tool's services as one extension sees them: its slots and commands run under its guard.
class ExtensionServices final : public MrbServices {
    Q_OBJECT

public:
    explicit ExtensionServices(HostedExtension& owner);
    ~ExtensionServices() override;

    /// Returns the services of the tool; null when there are none any more.
    static MrbServices* tool() { return getToolInstance(); }

    /// No more signals.
    void mute();

    bool pushCommand(MrbCommand* command) override;
    QMainWindow* getMainWindow() override;
    SoField* getSelectedField() const override;
    SoFieldContainer* getSelectedNode() const override;
    void redo() override;
    void setSceneGraph(SoNode* root) override;
    void setSelectedField(SoField* field) override;
    void setSelectedNode(SoFieldContainer* node) override;
    void undo() override;
    SoSceneManager* getSceneManager() const override;
    int isStandalone() const override;
    SoGuiRenderArea* getRenderArea() const override;
    SoNode* getSceneGraph() const override;

private:
    void pass(const char* signal, const std::function<void()>& emission);

    HostedExtension& m_owner;
    bool m_muted = false;
};

} // namespace mirabo
