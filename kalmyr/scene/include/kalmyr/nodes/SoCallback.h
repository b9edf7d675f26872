#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>

/// Calls a function of the program whenever an action traverses the node.
class KALMYR_API SoCallback : public SoNode {
    SO_NODE_HEADER(SoCallback)

public:
    /// `action` is the one that traverses, with its state.
    using Function = void(void* userData, SoAction* action);

    SoCallback();
    static void initClass();

    void doAction(SoAction* action) override;

    /// Null switches it off. The data stay the caller's.
    void setCallback(Function* function, void* userData = nullptr);

protected:
    ~SoCallback() override;

private:
    Function* m_function = nullptr;
    void* m_userData = nullptr;
};
