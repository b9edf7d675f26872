#include "mirabo/core/UndoStack.h"
#include "mirabo/extender/MrbCommand.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using mirabo::UndoStack;

/// Writes what is done to it into a log.
class Step final : public MrbCommand {
public:
    Step(std::string& log, char name, UndoStack* clearInside = nullptr)
        : m_log(log), m_name(name), m_clearInside(clearInside)
    {
    }
    ~Step() override { note('~'); }
    bool execute() override
    {
        note('+');
        if (m_clearInside) {
            m_clearInside->clear();
            note(m_clearInside->canUndo() ? 'u' : '.');
        }
        return m_name != 'f';
    }
    void undo() override { note('-'); }
    void redo() override { note('r'); }

private:
    void note(char what) { m_log += std::string{what, m_name, ' '}; }

    std::string& m_log;
    char m_name;
    UndoStack* m_clearInside;
};

class UndoStackTest : public testing::Test {
protected:
    UndoStackTest()
    {
        stack.setStateCallback([this] {
            canUndo = stack.canUndo();
            canRedo = stack.canRedo();
        });
        stack.clear(); // as every start does
    }
    ~UndoStackTest() override
    {
        // Commands still on the stack are kept by whoever pushed them: here, nobody else.
        while (stack.canUndo())
            stack.undo();
        Step last(log, 'x');
        stack.add(&last); // deletes what was undone
        stack.clear();
    }
    bool push(char name) { return stack.add(new Step(log, name)); }
    std::string taken()
    {
        std::string text = log;
        log.clear();
        return text;
    }

    std::string log;
    UndoStack stack;
    bool canUndo = true;
    bool canRedo = true;
};

TEST_F(UndoStackTest, BeginsAtAnIndexThatTheFirstClearMends)
{
    const UndoStack fresh;
    EXPECT_EQ(fresh.currentIndex(), 0);
    EXPECT_FALSE(fresh.canUndo());
    EXPECT_EQ(stack.currentIndex(), -1);
    EXPECT_FALSE(canUndo);
    EXPECT_FALSE(canRedo);
    stack.undo();
    stack.redo();
    EXPECT_EQ(log, "");
}

TEST_F(UndoStackTest, WalksBackAndForth)
{
    push('a');
    push('b');
    EXPECT_TRUE(canUndo);
    EXPECT_FALSE(canRedo);
    stack.undo();
    EXPECT_TRUE(canRedo);
    stack.undo();
    EXPECT_FALSE(canUndo);
    stack.undo();
    stack.redo();
    EXPECT_TRUE(canUndo);
    stack.redo();
    EXPECT_FALSE(canRedo);
    EXPECT_EQ(taken(), "+a +b -b -a ra rb ");
}

TEST_F(UndoStackTest, DeletesTheUndoneCommandsWhenAnotherIsPushed)
{
    for (const char name : {'a', 'b', 'c'})
        push(name);
    stack.undo();
    stack.undo();
    taken();
    push('d');
    EXPECT_EQ(taken(), "~c ~b +d ");
    EXPECT_EQ(stack.count(), 2);
    EXPECT_FALSE(canRedo);
    EXPECT_TRUE(canUndo);
}

TEST_F(UndoStackTest, HandsBackWhatACommandSaysAndKnowsThatItIsModified)
{
    EXPECT_FALSE(stack.isModified());
    EXPECT_TRUE(push('a'));
    EXPECT_FALSE(push('f'));
    EXPECT_TRUE(stack.isModified());
    stack.undo();
    stack.undo();
    push('b');
    EXPECT_TRUE(stack.isModified());
}

TEST_F(UndoStackTest, PutsAClearOffUntilNoCommandRuns)
{
    auto* command = new Step(log, 'a', &stack);
    stack.add(command);
    EXPECT_EQ(taken(), "+a ua ") << "still there while it ran";
    EXPECT_EQ(stack.count(), 0);
    EXPECT_EQ(stack.currentIndex(), -1);
    EXPECT_FALSE(stack.isModified());
    EXPECT_FALSE(canUndo);
    delete command; // a clear forgets commands, it does not delete them
}

} // namespace
