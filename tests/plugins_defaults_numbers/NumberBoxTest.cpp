#include "mirabo/plugins/defaults/NumberBox.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "mirabo/plugins/defaults/NumberText.h"
#include "support/Clock.h"
#include "support/Passes.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cmath>

#include <gtest/gtest.h>

using Kind = FieldNumbers::Kind;

namespace {

/// A box with a label in an active window, and what it told.
class NumberBoxTest : public ::testing::Test {
protected:
    NumberBox* make(Kind kind, double number)
    {
        m_label = new QLabel("x", &m_window);
        m_box = new NumberBox(kind, &m_window);
        m_box->setLabel(m_label);
        m_box->setNumber(number);
        auto* layout = new QVBoxLayout(&m_window);
        layout->addWidget(m_label);
        layout->addWidget(m_box);
        connectLog();
        m_window.show();
        QApplication::setActiveWindow(&m_window);
        m_box->lineEdit()->setFocus();
        support::flush();
        return m_box;
    }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(m_box->lineEdit(), static_cast<Qt::Key>(key), modifiers);
    }
    void wheel(int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        constexpr int kNotch = 120;
        const QPoint at = m_box->lineEdit()->rect().center();
        QWheelEvent event(at, m_box->lineEdit()->mapToGlobal(at), QPoint(),
                          QPoint(0, kNotch * notches), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(m_box->lineEdit(), &event);
    }
    /// What was told since the last call.
    QString log()
    {
        QString log = m_log.join(' ');
        m_log.clear();
        return log;
    }

    QStringList m_log; // before the window, which tells until its end
    QWidget m_window;
    NumberBox* m_box = nullptr;
    QLabel* m_label = nullptr;
    support::Clock m_clock;

private:
    void connectLog()
    {
        const auto note = [this](const char* what) { return [this, what] { m_log << what; }; };
        QObject::connect(m_box, &NumberBox::begun, note("begun"));
        QObject::connect(m_box, &NumberBox::ended, note("ended"));
        QObject::connect(m_box, &NumberBox::cancelled, note("cancelled"));
        QObject::connect(m_box, &NumberBox::finished, note("finished"));
        QObject::connect(m_box, &NumberBox::edited,
                         [this](double n) { m_log << numberText(m_box->kind(), n); });
    }
};

} // namespace

TEST_F(NumberBoxTest, TellsEachNumberThatIsTyped)
{
    NumberBox* box = make(Kind::Float, 1);
    typeInto(box, "2*pi");
    EXPECT_EQ(log(), "begun 2 6.2831855");
    EXPECT_EQ(box->text(), "2*pi");
    EXPECT_FALSE(box->isIllegal());
    key(Qt::Key_Return);
    EXPECT_EQ(log(), "ended finished");
    EXPECT_EQ(box->text(), "6.2831855");

    typeInto(box, "*= 10"); // from the number before, not from what "*= 1" has made
    EXPECT_EQ(box->text(), "*= 10");
    m_label->setFocusPolicy(Qt::StrongFocus);
    m_label->setFocus();
    EXPECT_EQ(log(), "begun 62.831856 ended");
}

TEST_F(NumberBoxTest, MarksAndKeepsWhatItCannotRead)
{
    NumberBox* box = make(Kind::Float, 5);
    typeInto(box, "3*x");
    EXPECT_EQ(log(), "begun 3");
    EXPECT_TRUE(box->isIllegal());
    EXPECT_TRUE(box->problem().startsWith("Column 3: there is no \"x\""))
        << box->problem().toStdString();
    EXPECT_TRUE(box->lineEdit()->toolTip().startsWith(box->problem()));
    EXPECT_TRUE(box->lineEdit()->property("illegal").toBool());
    key(Qt::Key_Return); // neither applied, nor lost, nor done
    EXPECT_EQ(log(), "ended");
    EXPECT_EQ(box->text(), "3*x");
    EXPECT_EQ(box->number(), 3);
    box->setNumber(8);
    EXPECT_EQ(box->text(), "3*x");
    key(Qt::Key_Escape);
    EXPECT_EQ(box->text(), "8");
    EXPECT_FALSE(box->isIllegal());
    key(Qt::Key_Escape);
    EXPECT_EQ(log(), "cancelled finished");
}

TEST_F(NumberBoxTest, GivesBackTheNumberFromBeforeByEscape)
{
    NumberBox* box = make(Kind::Double, 0.1);
    typeInto(box, "12.5");
    EXPECT_EQ(box->number(), 12.5);
    key(Qt::Key_Escape);
    EXPECT_EQ(log(), "begun 1 12 12.5 cancelled");
    EXPECT_EQ(box->number(), 0.1);
    EXPECT_EQ(box->text(), "0.1");
}

TEST_F(NumberBoxTest, TellsNothingWhenTheNumberStays)
{
    const double tail = 0.1f; // no decimal fraction that a double has
    NumberBox* box = make(Kind::Double, tail);
    key(Qt::Key_Return);
    EXPECT_EQ(log(), "finished");
    typeInto(box, numberText(Kind::Double, tail));
    key(Qt::Key_Backspace);
    box->lineEdit()->undo();
    key(Qt::Key_Return);
    EXPECT_EQ(box->number(), tail);
    EXPECT_TRUE(log().endsWith("ended finished"));

    NumberBox single(Kind::Float);
    single.setNumber(0.1f);
    QSignalSpy edited(&single, &NumberBox::edited);
    single.lineEdit()->selectAll();
    QTest::keyClicks(single.lineEdit(), " 0.1"); // each key on the way, then the same number
    EXPECT_EQ(edited.last().first().toDouble(), static_cast<double>(0.1f));
}

TEST_F(NumberBoxTest, HoldsTheLimitsOfItsKind)
{
    const struct {
        Kind kind;
        const char *legal, *illegal;
    } cases[] = {{Kind::Int16, "-32768", "32768"},
                 {Kind::UInt16, "65535", "-1"},
                 {Kind::Int32, "2147483647", "2147483648"},
                 {Kind::UInt32, "0xffffffff", "0x100000000"},
                 {Kind::Int32, "6/2", "7/2"},
                 {Kind::Int32, "0", "nan"},
                 {Kind::UInt32, "1", "inf"},
                 {Kind::Float, "3.4028235e38", "3.5e38"},
                 {Kind::Float, "inf", "1e39"},
                 {Kind::Double, "1e308", "1e309"},
                 {Kind::Double, "-inf", "- x"}};
    for (const auto& [kind, legal, illegal] : cases) {
        NumberBox box(kind);
        box.setNumber(5);
        QTest::keyClicks(box.lineEdit(), ""); // as it is
        box.lineEdit()->selectAll();
        QTest::keyClicks(box.lineEdit(), legal);
        EXPECT_FALSE(box.isIllegal()) << legal << ": " << box.problem().toStdString();
        box.commit();
        const double held = box.number();
        QApplication::clipboard()->setText(illegal);
        box.lineEdit()->selectAll();
        QTest::keySequence(box.lineEdit(), QKeySequence::Paste);
        EXPECT_TRUE(box.isIllegal()) << illegal;
        EXPECT_EQ(box.number(), held) << illegal;
        EXPECT_EQ(box.text(), illegal);
    }
    NumberBox box(Kind::Int16);
    EXPECT_TRUE(box.lineEdit()->toolTip().contains("-32768 to 32767"));
    NumberBox nan(Kind::Float);
    QTest::keyClicks(nan.lineEdit(), "");
    nan.lineEdit()->selectAll();
    QTest::keyClicks(nan.lineEdit(), "nan");
    EXPECT_TRUE(std::isnan(nan.number()));
}

TEST_F(NumberBoxTest, StepsByTheMagnitude)
{
    const struct {
        Kind kind;
        double number;
        Qt::KeyboardModifiers modifiers;
        const char *up, *down;
    } cases[] = {{Kind::Float, 1, Qt::NoModifier, "1.1", "0.9"},
                 {Kind::Float, 0.1f, Qt::NoModifier, "0.11", "0.09"},
                 {Kind::Float, 500, Qt::ShiftModifier, "600", "400"},
                 {Kind::Float, -25, Qt::ControlModifier, "-24.9", "-25.1"},
                 {Kind::Double, 0, Qt::NoModifier, "0.1", "-0.1"},
                 {Kind::Double, 1e300, Qt::NoModifier, "1.1e+300", "9e+299"},
                 {Kind::Int32, 7, Qt::NoModifier, "8", "6"},
                 {Kind::Int32, 7, Qt::ControlModifier, "8", "6"},
                 {Kind::Int32, 1234, Qt::NoModifier, "1334", "1134"},
                 {Kind::UInt16, 65535, Qt::NoModifier, "65535", "64535"},
                 {Kind::UInt16, 0, Qt::ShiftModifier, "10", "0"},
                 {Kind::Float, HUGE_VAL, Qt::NoModifier, "inf", "inf"},
                 {Kind::Float, NAN, Qt::NoModifier, "nan", "nan"}};
    for (const auto& [kind, number, modifiers, up, down] : cases) {
        NumberBox box(kind);
        box.setNumber(number);
        QTest::keyClick(box.lineEdit(), Qt::Key_Up, modifiers);
        EXPECT_EQ(box.text(), up) << number;
        box.commit();
        box.setNumber(number);
        QTest::keyClick(box.lineEdit(), Qt::Key_Down, modifiers);
        EXPECT_EQ(box.text(), down) << number;
    }
}

TEST_F(NumberBoxTest, MakesOneGestureOfStepsThatFollowEachOther)
{
    NumberBox* box = make(Kind::Float, 0.3f);
    for (int i = 0; i < 3; ++i) {
        key(Qt::Key_Down);
        m_clock.advance(0.9);
    }
    EXPECT_EQ(log(), "begun 0.29 0.28 0.27");
    m_clock.advance(0.2);
    key(Qt::Key_Up);
    EXPECT_EQ(log(), "ended begun 0.28");
    key(Qt::Key_Escape); // only what is not over
    EXPECT_EQ(box->text(), "0.27");
    EXPECT_EQ(log(), "cancelled");
    for (int i = 0; i < 4; ++i)
        wheel(-1, Qt::ShiftModifier);
    EXPECT_EQ(box->text(), "-0.13") << "through zero with the step that it began with";
    key(Qt::Key_Return);
    EXPECT_TRUE(log().endsWith("ended finished"));
}

TEST_F(NumberBoxTest, TurnsByTheWheelOnlyWithTheFocus)
{
    NumberBox* box = make(Kind::Int32, 5);
    wheel(2);
    EXPECT_EQ(box->number(), 7);
    box->lineEdit()->clearFocus();
    wheel(2);
    EXPECT_EQ(box->number(), 7);
}

TEST_F(NumberBoxTest, IsDraggedByGripAndLabelAsOneGesture)
{
    NumberBox* box = make(Kind::Float, 1);
    QWidget* grip = nullptr;
    for (QWidget* child : box->findChildren<QWidget*>())
        if (child->cursor().shape() == Qt::SizeHorCursor)
            grip = child;
    ASSERT_TRUE(grip);
    for (QWidget* handle : {grip, static_cast<QWidget*>(m_label)}) {
        box->setNumber(1);
        drag(handle, QPoint(2, 2), QPoint(60, 0));
        const double far = box->number();
        EXPECT_GT(far, 1.1);
        QString told = log();
        EXPECT_TRUE(told.startsWith("begun 1.") && told.endsWith(" ended"));
        EXPECT_EQ(told.count("begun"), 1);
        EXPECT_EQ(told.count("ended"), 1);

        box->setNumber(1);
        drag(handle, QPoint(2, 2), QPoint(60, 0), Qt::ControlModifier);
        EXPECT_NEAR(box->number() - 1, (far - 1) / 10, 0.005) << "finer with Ctrl";
        box->setNumber(1);
        drag(handle, QPoint(2, 2), QPoint(-60, 0), Qt::ShiftModifier);
        EXPECT_NEAR(1 - box->number(), (far - 1) * 10, 0.05) << "faster with Shift";
        log();
        drag(handle, QPoint(2, 2), QPoint(0, 5));
        EXPECT_EQ(log(), "") << "a click changes nothing";
    }
}

TEST_F(NumberBoxTest, EndsADragByEscape)
{
    NumberBox* box = make(Kind::Int32, 100);
    QTest::mousePress(m_label, Qt::LeftButton, {}, QPoint(1, 1));
    QMouseEvent move(QEvent::MouseMove, QPoint(50, 0), m_label->mapToGlobal(QPoint(50, 0)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_label, &move);
    EXPECT_GT(box->number(), 100);
    key(Qt::Key_Escape);
    EXPECT_EQ(box->number(), 100);
    EXPECT_TRUE(log().endsWith("cancelled"));
    QApplication::sendEvent(m_label, &move); // the button is still down
    EXPECT_EQ(box->number(), 100);
    EXPECT_EQ(log(), "");
}

TEST_F(NumberBoxTest, ShowsUnsignedNumbersInHexadecimal)
{
    NumberBox* box = make(Kind::UInt32, 48879);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(1, 1),
                            box->lineEdit()->mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(box->lineEdit(), &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    for (QAction* action : menu->actions())
        if (action->text() == "Hexadecimal")
            action->trigger();
    menu->close();
    EXPECT_EQ(box->text(), "0x0000beef");
    enter(box, "0x10");
    EXPECT_EQ(box->text(), "0x00000010");
    EXPECT_EQ(log(), "begun 0 1 16 ended finished");
    NumberBox isSigned(Kind::Int32);
    isSigned.setHex(true);
    EXPECT_FALSE(isSigned.isHex());
}

TEST_F(NumberBoxTest, KeepsTheTextBeingTyped)
{
    NumberBox* box = make(Kind::Float, 1);
    typeInto(box, "2.5");
    box->setNumber(9); // a change from outside
    EXPECT_EQ(box->text(), "2.5");
    EXPECT_TRUE(box->lineEdit()->hasFocus());
    key(Qt::Key_Return);
    EXPECT_EQ(box->text(), "9");
}

TEST_F(NumberBoxTest, LeavesUndoToTheWindowUnlessTheTextHasSteps)
{
    NumberBox* box = make(Kind::Float, 1);
    const auto isTaken = [box] {
        QKeyEvent event(QEvent::ShortcutOverride, Qt::Key_Z, Qt::ControlModifier);
        event.ignore();
        QApplication::sendEvent(box->lineEdit(), &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(isTaken());
    typeInto(box, "25");
    EXPECT_TRUE(isTaken());
    key(Qt::Key_Return);
    EXPECT_FALSE(isTaken());
}

TEST_F(NumberBoxTest, RefusesWhatItsOwnerCannotTake)
{
    NumberBox* box = make(Kind::Float, 1);
    QObject::connect(box, &NumberBox::edited, box, [box](double number) {
        if (number == 0)
            box->refuse("Not zero");
    });
    typeInto(box, "0");
    EXPECT_TRUE(box->isIllegal());
    QTest::keyClicks(box->lineEdit(), "."); // the same number: still refused
    EXPECT_TRUE(box->isIllegal());
    QTest::keyClicks(box->lineEdit(), "5");
    EXPECT_FALSE(box->isIllegal());
    EXPECT_EQ(box->number(), 0.5);
}
