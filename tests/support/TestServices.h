#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/MrbServices.h"
#include "mirabo/extender/private/CommandStackAccess.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace support {

/// The services of a tool that has nothing but an undo stack, while it lives.
class TestServices final : public MrbServices, public mirabo::CommandStackAccess {
public:
    TestServices() { setInstance(this); }
    ~TestServices() override { setInstance(nullptr); }

    /// Commands that can be undone.
    int done() const { return static_cast<int>(m_done); }
    void undoAll()
    {
        while (m_done > 0)
            undo();
    }
    void redoAll()
    {
        while (m_done < m_commands.size())
            redo();
    }
    QString lastName() const { return m_done ? m_commands[m_done - 1]->getName() : QString(); }

    bool pushOwnCommand(std::unique_ptr<MrbCommand> command) override
    {
        m_commands.resize(m_done);
        if (!command->execute())
            return false;
        m_commands.push_back(std::move(command));
        ++m_done;
        return true;
    }
    bool isLastCommand(const MrbCommand* command) const override
    {
        return m_done > 0 && m_done == m_commands.size() && m_commands.back().get() == command;
    }
    bool extendCommand(const MrbCommand* command, const std::function<bool()>& edit) override
    {
        return isLastCommand(command) && edit();
    }
    SoRef<const SoRefCounter> holdSelectedField(SoField*& field) const override
    {
        field = nullptr;
        return {};
    }
    bool isRunningCommand() const override { return false; }
    void removeCommands(const Test&) override {}
    bool pushCommand(MrbCommand* command) override
    {
        return pushOwnCommand(std::unique_ptr<MrbCommand>(command));
    }
    void undo() override
    {
        if (m_done > 0)
            m_commands[--m_done]->undo();
    }
    void redo() override
    {
        if (m_done < m_commands.size())
            m_commands[m_done++]->redo();
    }

    QMainWindow* getMainWindow() override { return nullptr; }
    SoField* getSelectedField() const override { return nullptr; }
    SoFieldContainer* getSelectedNode() const override { return nullptr; }
    void setSceneGraph(SoNode*) override {}
    void setSelectedField(SoField*) override {}
    void setSelectedNode(SoFieldContainer*) override {}
    SoSceneManager* getSceneManager() const override { return nullptr; }
    int isStandalone() const override { return 0; }
    SoGuiRenderArea* getRenderArea() const override { return nullptr; }
    SoNode* getSceneGraph() const override { return nullptr; }

private:
    std::vector<std::unique_ptr<MrbCommand>> m_commands;
    std::size_t m_done = 0;
};

} // namespace support
