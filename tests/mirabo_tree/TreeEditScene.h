#pragma once

#include "TreeTestScene.h"

#include "mirabo/core/CommandOwner.h"
#include "mirabo/core/UndoStack.h"
#include "mirabo/tree/TreeEditor.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/fields/SoMFUniformShaderParameter.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>

#include <string>
#include <vector>

/// A node with a list of uniform parameters, as shaders have.
class ParameterHolder : public SoNode {
    SO_NODE_HEADER(ParameterHolder)

public:
    ParameterHolder();
    static void initClass();

    SoMFUniformShaderParameter parameter;

protected:
    ~ParameterHolder() override;
};

/// What a tree with an editor needs around it, and the boxes that it shows.
class EditedTree {
public:
    explicit EditedTree(SoMiraboTreeView& view);
    ~EditedTree();

    /// The last box, "title: text", and forgets it.
    std::string box();

    /// Set: holds the root, as a viewer does, and perhaps further top-level nodes.
    SoRef<SoGroup> container;
    mirabo::UndoStack stack;
    mirabo::CommandOwner owner;
    std::vector<std::string> boxes;
    std::vector<std::string> names; ///< of all commands that were pushed
    mirabo::TreeEditor editor;

private:
    void setRoot(SoNode* root);

    SoMiraboTreeView& m_view;
};

/// The scene as text.
std::string textOf(SoNode* node);

/// What the user sees of the tree: rows, which of them are open, and the current one.
std::string lookOf(const SoMiraboTreeView& view);

/// A clock on which so much passes from look to look: from two milliseconds on, every single
/// removal is dear enough for the view to be made to forget its open branches.
class SteppingClock {
public:
    explicit SteppingClock(double seconds);
    ~SteppingClock();
    SteppingClock(const SteppingClock&) = delete;
    SteppingClock& operator=(const SteppingClock&) = delete;

private:
    static double s_now;
    static double s_step;
};
