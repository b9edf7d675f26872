#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoCoreInit.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoFieldsInit.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <string>
#include <vector>

namespace fieldtest {

/// Counts what passes by, and remembers the last of it.
class Listener final : public SoAuditor {
public:
    void auditedChanged(SoNotification& notification) override
    {
        ++changes;
        kind = notification.kind;
        field = notification.field;
        child = notification.child;
        index = notification.index;
    }
    void auditedDying() override { died = true; }
    /// The number of changes since the last call.
    int take() { return std::exchange(changes, 0); }

    int changes = 0;
    bool died = false;
    SoNotification::Kind kind = SoNotification::UNSPECIFIED;
    SoField* field = nullptr;
    SoNode* child = nullptr;
    int index = -1;
};

/// A node with fields that hold nodes.
class Holder : public SoNode {
    SO_NODE_HEADER(Holder)

public:
    Holder();
    static void initClass();

    SoSFFloat size;
    SoSFNode part;
    SoMFNode parts;

protected:
    ~Holder() override = default;
};

/// A node whose field stands for its children.
class Bound : public SoNode {
    SO_NODE_HEADER(Bound)

public:
    Bound();
    static void initClass();
    SoChildList* getChildren() const override { return &m_list; }

    SoMFNode children;

protected:
    ~Bound() override = default;

private:
    mutable SoChildList m_list{this};
};

void initTypes();

inline std::string textOf(const SoField& field)
{
    SbString text;
    field.get(text);
    return text.toStdString();
}

} // namespace fieldtest
