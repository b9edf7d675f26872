#include "mirabo/extension/MrbServicesImpl.h"

#include "mirabo/core/SoCommandManager.h"

#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodes/SoSelection.h>

namespace {

MrbServicesImpl* s_instance = nullptr;

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

MrbServicesImpl::MrbServicesImpl() : m_hub(std::make_unique<SoCommandManager>()) {}

MrbServicesImpl::~MrbServicesImpl()
{
    watchSelection(nullptr);
}

bool MrbServicesImpl::pushCommand(MrbCommand* command)
{
    return m_hub->addCommand(command);
}

QMainWindow* MrbServicesImpl::getMainWindow()
{
    return m_mainWindow;
}

void MrbServicesImpl::redo()
{
    m_hub->redo();
}

void MrbServicesImpl::undo()
{
    m_hub->undo();
}

void MrbServicesImpl::setSceneGraph(SoNode* root)
{
    m_sceneGraph = root;
    if (m_sceneSetter)
        m_sceneSetter(root);
    Q_EMIT sceneGraphChanged(root);
}

void MrbServicesImpl::announceSceneGraph(SoNode* root)
{
    m_sceneGraph = root;
    m_selectedNode = nullptr;
    m_selectedField = nullptr;
    Q_EMIT sceneGraphChanged(root);
}

void MrbServicesImpl::setSelectedField(SoField* field)
{
    m_selectedField = field;
    Q_EMIT selectedFieldChanged(field);
}

void MrbServicesImpl::setSelectedNode(SoFieldContainer* node)
{
    m_selectedNode = node;
    Q_EMIT selectedNodeChanged(node);
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
