#include "mirabo/plugins/defaults/NumbersWidget.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "support/Passes.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QTest>
#include <QToolButton>

#include <cmath>
#include <cstring>

using Form = MrbFieldWidget::Form;

namespace {

class NumbersWidgetTest : public EditTest {
protected:
    /// Every field that the widget edits.
    std::vector<SoField*> fields() const
    {
        return {&m_probe->number, &m_probe->fine,      &m_probe->whole, &m_probe->bits,
                &m_probe->small,  &m_probe->smallBits, &m_probe->time,  &m_probe->vector,
                &m_probe->point,  &m_probe->quad,      &m_probe->steps, &m_probe->plane,
                &m_probe->box};
    }
};

} // namespace

TEST_F(NumbersWidgetTest, ShowsAndSetsEveryType)
{
    const struct {
        SoField& field;
        QStringList shown;
        const char *box, *typed, *text;
    } cases[] = {{m_probe->number, {"1.5"}, "number", "0.1", "0.1"},
                 {m_probe->fine, {"0.1"}, "fine", "1/3", "0.3333333333333333"},
                 {m_probe->whole, {"-7"}, "whole", "-0x10", "-16"},
                 {m_probe->bits, {"255"}, "bits", "4294967295", "4294967295"},
                 {m_probe->small, {"3"}, "small", "-32768", "-32768"},
                 {m_probe->smallBits, {"16"}, "smallBits", "65535", "65535"},
                 {m_probe->time, {"90"}, "time", "1e9", "1e+09"},
                 {m_probe->vector, {"1", "2", "4"}, "y", "-0", "1 -0 4"},
                 {m_probe->point, {"0.1", "0.2"}, "x", "inf", "inf 0.2"},
                 {m_probe->quad, {"1", "2", "3", "4"}, "w", "2^10", "1 2 3 1024"},
                 {m_probe->steps, {"1", "2", "0"}, "z", "5", "1 2 5"},
                 {m_probe->plane, {"0", "0", "1", "2"}, "distance", "3", "0 0 1 3"},
                 {m_probe->box, {"-1", "-2", "-3", "1", "2", "3"}, "max y", "7", "-1 -2 -3 1 7 3"}};
    for (const auto& [field, shown, name, typed, expected] : cases) {
        for (const Form form : {Form::Full, Form::Compact}) {
            Editor editor(field, makeNumbersWidget, form);
            EXPECT_EQ(editor.texts(), shown) << name;
            const std::string before = text(field);
            enter(editor.box(name), typed);
            EXPECT_EQ(text(field), expected) << name;
            EXPECT_FALSE(field.isDefault());
            ASSERT_EQ(m_stack.done(), 1) << name;
            m_stack.undo();
            EXPECT_EQ(text(field), before);
            EXPECT_TRUE(field.isDefault()) << name;
            m_stack.redo();
            EXPECT_EQ(text(field), expected);
            m_stack.undo();
        }
    }
    EXPECT_EQ(makeNumbersWidget(std::make_unique<MrbFieldEdit>(&m_probe->text).get(), Form::Full,
                                nullptr),
              nullptr);
}

TEST_F(NumbersWidgetTest, LeavesAFieldAloneThatIsConfirmedUnchanged)
{
    for (SoField* field : fields()) {
        Editor editor(*field, makeNumbersWidget);
        for (NumberBox* box : editor.widget->findChildren<NumberBox*>()) {
            box->lineEdit()->setFocus();
            QTest::keyClick(box->lineEdit(), Qt::Key_Return);
            enter(box, box->text()); // and when it is typed once more
        }
        editor.widget->commit();
        EXPECT_EQ(m_stack.done() > 0, !field->isDefault());
        m_stack.undoAll();
        EXPECT_TRUE(field->isDefault()) << text(*field);
    }
    // The bits that no text has.
    const float payload = std::nanf("0x1234");
    m_probe->vector.setValue(SbVec3f(payload, -0.f, 0.1f));
    Editor editor(m_probe->vector, makeNumbersWidget);
    EXPECT_EQ(editor.texts(), QStringList({"nan", "-0", "0.1"}));
    QTest::keyClick(editor.box("x")->lineEdit(), Qt::Key_Return);
    enter(editor.box("z"), "7");
    EXPECT_EQ(std::memcmp(&m_probe->vector.getValue()[0], &payload, sizeof payload), 0);
    EXPECT_TRUE(std::signbit(m_probe->vector.getValue()[1]));
    m_stack.undo();
    EXPECT_EQ(std::memcmp(&m_probe->vector.getValue()[0], &payload, sizeof payload), 0);
}

TEST_F(NumbersWidgetTest, MakesOneCommandOfAGesture)
{
    Editor editor(m_probe->vector, makeNumbersWidget);
    drag(editor.child<QLabel>(""), QPoint(1, 1), QPoint(40, 0));
    EXPECT_EQ(m_stack.done(), 1);
    EXPECT_NE(m_probe->vector.getValue()[0], 1);
    enter(editor.box("y"), "12345");
    EXPECT_EQ(m_stack.done(), 2);
    typeInto(editor.box("z"), "99");
    QTest::keyClick(editor.box("z")->lineEdit(), Qt::Key_Escape);
    EXPECT_EQ(m_stack.done(), 2);
    EXPECT_EQ(m_probe->vector.getValue()[2], 4);
    EXPECT_EQ(editor.box("z")->text(), "4");
    m_stack.undoAll();
    EXPECT_TRUE(m_probe->vector.isDefault());
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"1", "2", "4"}));
}

TEST_F(NumbersWidgetTest, ChangesOneComponentInAllFields)
{
    const SoRef<NumberProbe> other = makeProbe();
    other->vector.setValue(SbVec3f(7, 8, 9));
    Editor editor(m_probe->vector, makeNumbersWidget);
    editor.add(other->vector);
    EXPECT_EQ(editor.texts(), QStringList({"1", "2", "4"}));
    enter(editor.box("y"), "5");
    EXPECT_EQ(m_probe->vector.getValue(), SbVec3f(1, 5, 4));
    EXPECT_EQ(other->vector.getValue(), SbVec3f(7, 5, 9));
    EXPECT_EQ(m_stack.done(), 1);
    m_stack.undo();
    EXPECT_EQ(other->vector.getValue(), SbVec3f(7, 8, 9));
}

TEST_F(NumbersWidgetTest, KeepsProportions)
{
    const SoRef<NumberProbe> other = makeProbe();
    other->vector.setValue(SbVec3f(10, 0, -4));
    Editor editor(m_probe->vector, makeNumbersWidget);
    editor.add(other->vector);
    editor.child<QToolButton>("Keep the proportions: scale all components together")->click();
    enter(editor.box("x"), "0.5"); // through 0
    EXPECT_EQ(m_probe->vector.getValue(), SbVec3f(0.5f, 1, 2));
    EXPECT_EQ(other->vector.getValue(), SbVec3f(0.5f, 0, -0.2f));
    EXPECT_EQ(m_stack.done(), 1);
    EXPECT_EQ(editor.texts(), QStringList({"0.5", "1", "2"}));

    Editor whole(m_probe->quad, makeNumbersWidget);
    whole.child<QToolButton>("Keep the proportions: scale all components together")->click();
    typeInto(whole.box("x"), "20000"); // 80000 is no 16-bit number
    EXPECT_TRUE(whole.box("x")->isIllegal());
    EXPECT_EQ(m_probe->quad.getValue(), SbVec4s(2000, 4000, 6000, 8000));
    QTest::keyClick(whole.box("x")->lineEdit(), Qt::Key_Escape);
    EXPECT_EQ(m_probe->quad.getValue(), SbVec4s(1, 2, 3, 4));
    enter(whole.box("x"), "3");
    EXPECT_EQ(m_probe->quad.getValue(), SbVec4s(3, 6, 9, 12));

    // A component of zero scales nothing.
    Editor zero(m_probe->steps, makeNumbersWidget);
    zero.child<QToolButton>("Keep the proportions: scale all components together")->click();
    enter(zero.box("z"), "9");
    EXPECT_EQ(m_probe->steps.getValue(), SbVec3i32(1, 2, 9));
}

TEST_F(NumbersWidgetTest, TakesNormalsNumberByNumber)
{
    Editor editor(m_probe->plane, makeNumbersWidget);
    typeInto(editor.box("normal z"), "0");
    EXPECT_TRUE(editor.box("normal z")->isIllegal()) << "no direction is left";
    EXPECT_EQ(m_stack.done(), 0);
    enter(editor.box("normal x"), "3"); // now there is one
    EXPECT_FALSE(editor.box("normal z")->isIllegal());
    enter(editor.box("normal y"), "4");
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"3", "4", "0", "2"})) << "as they were typed";
    EXPECT_EQ(text(m_probe->plane), "0.6 0.8 0 2");
    m_stack.undoAll();
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"0", "0", "1", "2"}));
}

TEST_F(NumbersWidgetTest, PastesAllNumbersAtOnce)
{
    Editor editor(m_probe->vector, makeNumbersWidget);
    const auto paste = [&](const char* text) {
        QApplication::clipboard()->setText(text);
        editor.box("y")->lineEdit()->setFocus();
        editor.box("y")->lineEdit()->selectAll();
        QTest::keySequence(editor.box("y")->lineEdit(), QKeySequence::Paste);
    };
    paste("[ 7, pi\t9 ]\n");
    EXPECT_EQ(m_probe->vector.getValue(), SbVec3f(7, 3.1415927f, 9));
    EXPECT_EQ(editor.texts(), QStringList({"7", "3.1415927", "9"}));
    EXPECT_EQ(m_stack.done(), 1);
    paste("5");
    EXPECT_EQ(m_probe->vector.getValue(), SbVec3f(7, 5, 9));
    paste("1 2");
    EXPECT_TRUE(editor.box("y")->isIllegal());
}

TEST_F(NumbersWidgetTest, FollowsTheFieldUnlessTheUserIsTyping)
{
    Editor editor(m_probe->vector, makeNumbersWidget);
    m_probe->vector.setValue(SbVec3f(5, 6, 7));
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"5", "6", "7"}));

    typeInto(editor.box("x"), "12");
    pass();
    EXPECT_FALSE(editor.widget->isOutdated()) << "by its own changes";
    m_probe->vector.setValue(SbVec3f(1, 1, 1));
    pass();
    EXPECT_TRUE(editor.widget->isOutdated());
    EXPECT_EQ(editor.box("x")->text(), "12");
    EXPECT_TRUE(editor.box("x")->lineEdit()->hasFocus());
    QTest::keyClick(editor.box("x")->lineEdit(), Qt::Key_Return);
    EXPECT_FALSE(editor.widget->isOutdated());
    EXPECT_EQ(editor.texts(), QStringList({"1", "1", "1"}));

    typeInto(editor.box("x"), "2*");
    QTest::keyClick(editor.box("x")->lineEdit(), Qt::Key_Return);
    EXPECT_TRUE(editor.widget->isTyping());
    EXPECT_FALSE(editor.widget->isOutdated()) << "illegal, but nothing came from outside";
    QTest::keyClick(editor.box("x")->lineEdit(), Qt::Key_Escape);
    EXPECT_FALSE(editor.widget->isTyping());
}

TEST_F(NumbersWidgetTest, IsReadOnlyForAFieldThatIsDriven)
{
    SoSFFloat master;
    m_probe->number.connectFrom(&master);
    Editor editor(m_probe->number, makeNumbersWidget);
    NumberBox* box = editor.box("number");
    EXPECT_TRUE(box->isReadOnly());
    enter(box, "5");
    QTest::keyClick(box->lineEdit(), Qt::Key_Up);
    EXPECT_EQ(m_stack.done(), 0);
    EXPECT_FALSE(box->isIllegal());
    master.setValue(4);
    pass();
    EXPECT_EQ(editor.texts(), QStringList({"4"}));
    m_probe->number.disconnect();
    pass();
    enter(box, "5");
    EXPECT_EQ(m_probe->number.getValue(), 5);
}

TEST_F(NumbersWidgetTest, TellsTimesAsDatesAndSpans)
{
    Editor editor(m_probe->time, makeNumbersWidget);
    EXPECT_TRUE(editor.box("time")->lineEdit()->toolTip().contains("As a span: 0:01:30"))
        << editor.box("time")->lineEdit()->toolTip().toStdString();
    editor.child<QToolButton>("Set to the present date and time")->click();
    EXPECT_EQ(m_probe->time.getValue(), SbTime::getTimeOfDay());
    EXPECT_TRUE(editor.box("time")->lineEdit()->toolTip().contains("As a date: 20"));
    for (const char* extreme : {"nan", "inf", "-inf", "1e300", "-1e300"}) {
        enter(editor.box("time"), extreme);
        EXPECT_FALSE(editor.box("time")->isIllegal()) << extreme;
    }
}

TEST_F(NumbersWidgetTest, OutlivesItsField)
{
    Editor editor(m_probe->vector, makeNumbersWidget);
    typeInto(editor.box("x"), "3");
    m_probe = nullptr;
    pass();
    QTest::keyClicks(editor.box("x")->lineEdit(), "4");
    QTest::keyClick(editor.box("x")->lineEdit(), Qt::Key_Escape);
    EXPECT_TRUE(editor.box("x")->isReadOnly());
}
