#include "mirabo/extension/MrbServicesImpl.h"

#include "mirabo/core/CommandOwner.h"
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/private/Frame.h"

#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/nodes/SoSelection.h>

#include <exception>

namespace {

MrbServicesImpl* s_instance = nullptr;

/// Slots of extensions that are connected past their own services are not told apart.
template <typename Emission>
void emitSafely(Emission emission)
{
    const mirabo::Frame frame;
    try {
        emission();
    } catch (const std::exception& error) {
        SoError::post("Mirabo: a slot of an extension threw: %s", error.what());
    } catch (...) {
        SoError::post("Mirabo: a slot of an extension threw an exception of unknown type");
    }
}

} // namespace

MrbServicesImpl* MrbServicesImpl::getInstance()
{
    if (!s_instance) {
        s_instance = new MrbServicesImpl;
        setInstance(s_instance);
    }
    return s_instance;
}

bool MrbServicesImpl::exists()
{
    return s_instance != nullptr;
}

void MrbServicesImpl::destroyInstance()
{
    delete s_instance;
    s_instance = nullptr;
}

MrbServicesImpl::MrbServicesImpl()
    : m_hub(std::make_unique<SoCommandManager>()),
      m_ownCommands(std::make_unique<mirabo::CommandOwner>(
          m_hub->undoStack(),
          [hub = m_hub.get()](MrbCommand* command) { return hub->addCommand(command); }))
{
}

MrbServicesImpl::~MrbServicesImpl()
{
    watchSelection(nullptr);
}

bool MrbServicesImpl::pushCommand(MrbCommand* command)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    return m_hub->addCommand(command);
}

QMainWindow* MrbServicesImpl::getMainWindow()
{
    return m_mainWindow;
}

bool MrbServicesImpl::pushOwnCommand(std::unique_ptr<MrbCommand> command)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    return m_ownCommands->push(std::move(command));
}

bool MrbServicesImpl::isLastCommand(const MrbCommand* command) const
{
    return m_hub->undoStack().isLast(command);
}

bool MrbServicesImpl::extendCommand(const MrbCommand* command, const std::function<bool()>& edit)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    return m_hub->undoStack().extend(command, edit);
}

SoRef<const SoRefCounter> MrbServicesImpl::holdSelectedField(SoField*& field) const
{
    SoRef<const SoRefCounter> held = m_selectedField.hold();
    field = held ? m_selectedField.get() : nullptr;
    return held;
}

bool MrbServicesImpl::isRunningCommand() const
{
    return m_hub->undoStack().isBusy();
}

void MrbServicesImpl::removeCommands(const Test& test)
{
    m_hub->undoStack().remove(test);
}

void MrbServicesImpl::redo()
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    m_hub->redo();
}

void MrbServicesImpl::undo()
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    m_hub->undo();
}

void MrbServicesImpl::setSceneGraph(SoNode* root)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    m_sceneGraph.reset(root);
    m_announced = false;
    if (m_sceneSetter)
        m_sceneSetter(root);
    // The tree, once it shows the scene, has it announced.
    if (!m_announced)
        announceSceneGraph(root);
}

void MrbServicesImpl::announceSceneGraph(SoNode* root)
{
    m_announced = true;
    m_sceneGraph.reset(root);
    m_selectedNode.reset();
    m_selectedField.reset();
    m_fieldContainer.reset();
    emitSafely([&] { Q_EMIT sceneGraphChanged(root); });
}

SoField* MrbServicesImpl::getSelectedField() const
{
    return m_fieldContainer ? m_selectedField.get() : nullptr;
}

void MrbServicesImpl::setSelectedField(SoField* field)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    m_selectedField.reset(field);
    m_fieldContainer.reset(field ? field->getContainer() : nullptr);
    emitSafely([&] { Q_EMIT selectedFieldChanged(field); });
}

void MrbServicesImpl::setSelectedNode(SoFieldContainer* node)
{
    const mirabo::Frame frame(mirabo::Frame::Kind::Call);
    m_selectedNode.reset(node);
    emitSafely([&] { Q_EMIT selectedNodeChanged(node); });
}

void MrbServicesImpl::watchSelection(SoSelection* selection)
{
    const SoRef<SoSelection> incoming(selection);
    if (m_selection)
        m_selection->removeChangeCallback(&MrbServicesImpl::selectionChanged, nullptr);
    m_selection = incoming;
    if (m_selection)
        m_selection->addChangeCallback(&MrbServicesImpl::selectionChanged, nullptr);
}

void MrbServicesImpl::selectionChanged(void*, SoSelection*)
{
    if (s_instance && s_instance->m_sceneManager)
        s_instance->m_sceneManager->scheduleRedraw();
}
