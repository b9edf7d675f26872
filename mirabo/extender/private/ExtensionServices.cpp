#include "mirabo/extender/private/ExtensionServices.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/HostedExtension.h"

namespace mirabo {

ExtensionServices::ExtensionServices(HostedExtension& owner) : m_owner(owner)
{
    if (!tool())
        return;
    connect(tool(), &MrbServices::sceneGraphChanged, this, [this](SoNode* root) {
        pass("sceneGraphChanged", [&] { Q_EMIT sceneGraphChanged(root); });
    });
    connect(tool(), &MrbServices::selectedNodeChanged, this, [this](SoFieldContainer* node) {
        pass("selectedNodeChanged", [&] { Q_EMIT selectedNodeChanged(node); });
    });
    connect(tool(), &MrbServices::selectedFieldChanged, this, [this](SoField* field) {
        pass("selectedFieldChanged", [&] { Q_EMIT selectedFieldChanged(field); });
    });
}

ExtensionServices::~ExtensionServices() = default;

void ExtensionServices::mute()
{
    m_muted = true;
}

void ExtensionServices::pass(const char* signal, const std::function<void()>& emission)
{
    if (!m_muted)
        m_owner.run(QString("a slot for %1").arg(signal), emission);
}

bool ExtensionServices::pushCommand(MrbCommand* command)
{
    if (!command)
        return false;
    const Frame frame; // the extension is on the stack
    std::unique_ptr<MrbCommand> guarded = m_owner.adopt(command);
    if (m_owner.isFailed() || !tool())
        return false;
    return tool()->pushCommand(guarded.release());
}

QMainWindow* ExtensionServices::getMainWindow()
{
    return tool() ? tool()->getMainWindow() : nullptr;
}

SoField* ExtensionServices::getSelectedField() const
{
    return tool() ? tool()->getSelectedField() : nullptr;
}

SoFieldContainer* ExtensionServices::getSelectedNode() const
{
    return tool() ? tool()->getSelectedNode() : nullptr;
}

void ExtensionServices::redo()
{
    const Frame frame; // the extension is on the stack
    if (tool())
        tool()->redo();
}

void ExtensionServices::setSceneGraph(SoNode* root)
{
    const Frame frame; // the extension is on the stack
    if (tool())
        tool()->setSceneGraph(root);
}

void ExtensionServices::setSelectedField(SoField* field)
{
    const Frame frame; // the extension is on the stack
    if (tool())
        tool()->setSelectedField(field);
}

void ExtensionServices::setSelectedNode(SoFieldContainer* node)
{
    const Frame frame; // the extension is on the stack
    if (tool())
        tool()->setSelectedNode(node);
}

void ExtensionServices::undo()
{
    const Frame frame; // the extension is on the stack
    if (tool())
        tool()->undo();
}

SoSceneManager* ExtensionServices::getSceneManager() const
{
    return tool() ? tool()->getSceneManager() : nullptr;
}

int ExtensionServices::isStandalone() const
{
    return tool() ? tool()->isStandalone() : 0;
}

SoGuiRenderArea* ExtensionServices::getRenderArea() const
{
    return tool() ? tool()->getRenderArea() : nullptr;
}

SoNode* ExtensionServices::getSceneGraph() const
{
    return tool() ? tool()->getSceneGraph() : nullptr;
}

} // namespace mirabo
