#include "mirabo/plugins/defaults/RotationWidget.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "mirabo/plugins/defaults/RotationParts.h"
#include "mirabo/plugins/defaults/Trackball.h"
#include "support/Passes.h"

#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <QToolButton>

#include <cmath>
#include <numbers>
#include <random>

using Form = MrbFieldWidget::Form;
using rotations::Notation;
using rotations::Parts;

namespace {

SbRotation about(int axis, double degrees)
{
    SbVec3f v;
    v[axis] = 1;
    return {v, static_cast<float>(degrees * std::numbers::pi / 180)};
}

class RotationWidgetTest : public EditTest {
protected:
    ~RotationWidgetTest() override
    {
        // What was chosen last holds for the widgets to come.
        Editor editor(m_probe->rotation, makeRotationWidget);
        choose(editor, 0);
        if (unit(editor)->text() == "radians")
            unit(editor)->click();
    }

    static void choose(const Editor& editor, int index)
    {
        auto* box = editor.child<QComboBox>("Notation");
        box->setCurrentIndex(index);
        Q_EMIT box->activated(index);
    }
    static QToolButton* unit(const Editor& editor)
    {
        return editor.child<QToolButton>("Unit of the angles: degrees or radians");
    }
    const SbRotation& value() const { return m_probe->rotation.getValue(); }
};

} // namespace

TEST(RotationPartsTest, SplitsAndMakesAnyRotation)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> number(-1, 1);
    for (int i = 0; i < 2000; ++i) {
        SbRotation rotation(number(random), number(random), number(random), number(random));
        if (i % 4 == 0) // quarter turns, where Euler angles lock
            rotation = about(i % 3, 90 * (i % 5)) * about((i + 1) % 3, 90 * (i % 7));
        for (int order = 0; order < 6; ++order)
            for (const Parts parts : {Parts::AxisAngle, Parts::Euler, Parts::Quaternion}) {
                const Notation notation{parts, order, i % 2 == 0};
                double numbers[4];
                rotations::split(notation, rotation, numbers);
                SbRotation made;
                ASSERT_TRUE(rotations::make(notation, numbers, made));
                ASSERT_TRUE(made.equals(rotation, 1e-6f))
                    << static_cast<int>(parts) << " order " << order;
            }
    }
}

TEST(RotationPartsTest, TurnsInTheOrderOfTheName)
{
    const double angles[] = {10, 20, 30};
    for (int i = 0; i < 6; ++i) {
        const rotations::EulerOrder& order = rotations::kEulerOrders[i];
        const SbRotation expected = about(order.first, angles[order.first])
                                    * about(order.second, angles[order.second])
                                    * about(order.third, angles[order.third]);
        SbRotation made;
        ASSERT_TRUE(rotations::make({Parts::Euler, i, true}, angles, made));
        EXPECT_TRUE(made.equals(expected, 1e-6f)) << order.name;
        double split[3];
        rotations::split({Parts::Euler, i, true}, made, split);
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(split[axis], angles[axis], 1e-5) << order.name;
    }
}

TEST_F(RotationWidgetTest, ShowsAndSetsEachNotation)
{
    m_probe->rotation.setValue(SbVec3f(0, 1, 0), 0.5f);
    Editor editor(m_probe->rotation, makeRotationWidget);
    EXPECT_EQ(editor.texts(), QStringList({"0", "1", "0", "28.64789"}));
    unit(editor)->click();
    EXPECT_EQ(editor.texts(), QStringList({"0", "1", "0", "0.5"}));
    unit(editor)->click();
    enter(editor.box("angle"), "90");
    EXPECT_TRUE(value().equals(about(1, 90), 1e-6f));
    choose(editor, 1);
    EXPECT_EQ(editor.texts(), QStringList({"0", "90", "0"}));
    enter(editor.box("about y"), "-45");
    EXPECT_TRUE(value().equals(about(1, -45), 1e-6f));
    choose(editor, 2);
    EXPECT_EQ(editor.texts().first(), "0");
    enter(editor.box("w"), "0");
    EXPECT_TRUE(value().equals(about(1, -180), 1e-6f)) << "any length will do";
    EXPECT_EQ(m_stack.done(), 3);
    const std::string last = text(m_probe->rotation);
    m_stack.undoAll();
    EXPECT_EQ(text(m_probe->rotation), "0 1 0 0.5");
    m_stack.redoAll();
    EXPECT_EQ(text(m_probe->rotation), last);
}

TEST_F(RotationWidgetTest, LeavesTheFieldAloneThatIsConfirmedUnchanged)
{
    Editor editor(m_probe->rotation, makeRotationWidget);
    for (int notation = 0; notation < 3; ++notation) {
        choose(editor, notation);
        for (NumberBox* box : editor.widget->findChildren<NumberBox*>()) {
            if (box->isHidden())
                continue;
            box->lineEdit()->setFocus();
            QTest::keyClick(box->lineEdit(), Qt::Key_Return);
        }
    }
    EXPECT_EQ(m_stack.done(), 0);
    EXPECT_TRUE(m_probe->rotation.isDefault());
}

TEST_F(RotationWidgetTest, KeepsTheNumbersAsTheyWereTyped)
{
    Editor editor(m_probe->rotation, makeRotationWidget);
    enter(editor.box("angle"), "-450");
    enter(editor.box("axis x"), "2");
    enter(editor.box("axis z"), "2");
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"2", "0", "2", "-450"}));
    EXPECT_TRUE(
        value().equals(SbRotation(SbVec3f(1, 0, 1), std::numbers::pi_v<float> * -2.5f), 1e-6f));
    enter(editor.box("angle"), "0");
    enter(editor.box("angle"), "90");
    EXPECT_TRUE(value().equals(SbRotation(SbVec3f(1, 0, 1), std::numbers::pi_v<float> / 2), 1e-6f))
        << "the axis is known while the angle is 0";
    m_probe->rotation.setValue(about(0, 30));
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"1", "0", "0", "30"}));
}

TEST_F(RotationWidgetTest, WaitsForADirection)
{
    Editor editor(m_probe->rotation, makeRotationWidget);
    typeInto(editor.box("axis z"), "0");
    EXPECT_TRUE(editor.box("axis z")->isIllegal());
    EXPECT_TRUE(m_probe->rotation.isDefault());
    enter(editor.box("axis x"), "1");
    EXPECT_FALSE(editor.box("axis z")->isIllegal());
    EXPECT_EQ(editor.texts().mid(0, 3), QStringList({"1", "0", "0"}));
    EXPECT_TRUE(value().equals(SbRotation(SbVec3f(1, 0, 0), 0.5f), 1e-6f));
    for (const char* illegal : {"nan", "inf"}) {
        typeInto(editor.box("angle"), illegal);
        EXPECT_TRUE(editor.box("angle")->isIllegal()) << illegal;
        QTest::keyClick(editor.box("angle")->lineEdit(), Qt::Key_Escape);
    }
    EXPECT_TRUE(value().equals(SbRotation(SbVec3f(1, 0, 0), 0.5f), 1e-6f));
}

TEST_F(RotationWidgetTest, IsTurnedByTheBall)
{
    m_probe->rotation.setValue(SbRotation());
    Editor editor(m_probe->rotation, makeRotationWidget);
    auto* ball = editor.widget->findChild<Trackball*>();
    ASSERT_TRUE(ball);
    drag(ball, ball->rect().center(), QPoint(20, 0));
    EXPECT_EQ(m_stack.done(), 1) << "a drag is one gesture";
    SbVec3f axis;
    float angle = 0;
    value().getValue(axis, angle);
    EXPECT_TRUE(axis.equals(SbVec3f(0, 1, 0), 0.05f)) << "the front goes to the right";
    EXPECT_GT(angle, 0.3f);
    EXPECT_TRUE(ball->rotation() == value());
    m_stack.undo();
    EXPECT_TRUE(value() == SbRotation());

    ball->setFocus();
    QTest::keyClick(ball, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(ball, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_TRUE(value().equals(about(0, -90), 1e-6f));
    EXPECT_EQ(m_stack.done(), 1);
    m_clock.advance(2);
    QTest::keyClick(ball, Qt::Key_PageUp);
    EXPECT_TRUE(value().equals(about(0, -90) * about(2, 5), 1e-6f)) << "about the fixed axis";
    EXPECT_EQ(m_stack.done(), 2);
    QTest::keyClick(ball, Qt::Key_Escape);
    EXPECT_TRUE(value().equals(about(0, -90), 1e-6f));

    // Beside the ball it turns about the line of sight.
    m_probe->rotation.setValue(SbRotation());
    drag(ball, QPoint(0, 0), QPoint(0, ball->height() - 1));
    value().getValue(axis, angle);
    EXPECT_TRUE(axis.equals(SbVec3f(0, 0, 1), 1e-3f)) << axis[0] << axis[1] << axis[2];
}

TEST_F(RotationWidgetTest, TurnsSeveralFields)
{
    const SoRef<NumberProbe> other = makeProbe();
    m_probe->rotation.setValue(SbRotation());
    other->rotation.setValue(about(0, 90));
    Editor editor(m_probe->rotation, makeRotationWidget);
    editor.add(other->rotation);
    auto* ball = editor.widget->findChild<Trackball*>();
    ball->setFocus();
    QTest::keyClick(ball, Qt::Key_PageUp, Qt::ShiftModifier);
    EXPECT_TRUE(value().equals(about(2, 45), 1e-6f));
    EXPECT_TRUE(other->rotation.getValue().equals(about(0, 90) * about(2, 45), 1e-6f));
    ball->commit();
    choose(editor, 0);
    enter(editor.box("angle"), "10");
    EXPECT_TRUE(value().equals(about(2, 10), 1e-6f));
    SbVec3f axis, before;
    float angle = 0, unused = 0;
    other->rotation.getValue().getValue(axis, angle);
    (about(0, 90) * about(2, 45)).getValue(before, unused);
    EXPECT_TRUE(axis.equals(before, 1e-5f)) << "the axis of the other is left";
    EXPECT_EQ(m_stack.done(), 2);
}

TEST_F(RotationWidgetTest, IsWalkedByTheTabKeyAsItIsRead)
{
    Editor editor(m_probe->rotation, makeRotationWidget);
    editor.child<QComboBox>("Notation")->setFocus();
    QStringList names;
    for (int i = 0; i < 7; ++i) {
        names << QApplication::focusWidget()->accessibleName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names.join(", "), "Notation, Unit of the angles: degrees or radians, axis x, axis y, "
                                "axis z, angle, Trackball");
}

TEST_F(RotationWidgetTest, FitsALine)
{
    Editor editor(m_probe->rotation, makeRotationWidget, Form::Compact);
    EXPECT_EQ(editor.texts(), QStringList({"0", "0", "1", "28.64789"}));
    enter(editor.box("angle"), "90");
    EXPECT_TRUE(value().equals(about(2, 90), 1e-6f));
    EXPECT_EQ(editor.widget->findChild<Trackball*>(), nullptr);
    EXPECT_LE(editor.widget->sizeHint().height(), 2 * editor.widget->fontMetrics().lineSpacing());
}
