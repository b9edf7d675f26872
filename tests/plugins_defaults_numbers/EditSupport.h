#pragma once

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extender/MrbFieldEditor.h"
#include "mirabo/plugins/defaults/NumberBox.h"
#include "support/Clock.h"
#include "support/TestServices.h"

#ifndef Q_MOC_RUN
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#endif

#include <QWidget>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

/// A node with a field of every kind that the editors treat apart.
class NumberProbe final : public SoNode {
    SO_NODE_HEADER(NumberProbe)

public:
    NumberProbe();
    static void initClass();

    SoSFFloat number;
    SoSFDouble fine;
    SoSFInt32 whole;
    SoSFUInt32 bits;
    SoSFShort small;
    SoSFUShort smallBits;
    SoSFTime time;
    SoSFVec3f vector;
    SoSFVec2d point;
    SoSFVec4s quad;
    SoSFVec3i32 steps;
    SoSFPlane plane;
    SoSFBox3f box;
    SoSFRotation rotation;
    SoSFMatrix matrix;
    SoSFColor color;
    SoSFColorRGBA glass;
    SoSFString text;

protected:
    ~NumberProbe() override;
};

using MakeWidget = MrbFieldWidget* (*)(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                       QWidget* parent);

/// A widget for a field in a window of its own, on the screen and active.
class Editor {
public:
    Editor(SoField& field, MakeWidget make, MrbFieldWidget::Form form = MrbFieldWidget::Form::Full);

    MrbFieldEdit edit;
    QWidget window;
    MrbFieldWidget* widget; // Owned by the window.

    /// Adds a field and shows the value, as the editor's dock does.
    void add(SoField& field);
    /// The box of that name.
    NumberBox* box(const QString& name) const;
    QStringList texts() const;
    template <class T>
    T* child(const QString& accessibleName) const
    {
        for (T* child : widget->findChildren<T*>())
            if (child->accessibleName() == accessibleName)
                return child;
        ADD_FAILURE() << "there is no " << accessibleName.toStdString();
        return nullptr;
    }
};

/// Replaces the text of a box and leaves it with the focus.
void typeInto(NumberBox* box, const QString& text);
/// The same and Return.
void enter(NumberBox* box, const QString& text);
/// Drags the mouse over a widget, by so many pixels in as many moves.
void drag(QWidget* widget, const QPoint& from, const QPoint& by,
          Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// A toolkit, an undo stack and a node.
class EditTest : public ::testing::Test {
protected:
    EditTest();
    ~EditTest() override;

    static SoRef<NumberProbe> makeProbe();
    /// The value as text, to the bit.
    static std::string text(const SoField& field);

    /// Lets the edit tell what changed.
    static void pass();

    support::Clock m_clock;
    support::TestServices m_stack;
    SoRef<NumberProbe> m_probe = makeProbe();
};
