#include "mirabo/plugins/defaults/MatrixWidget.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "mirabo/plugins/defaults/MatrixParts.h"
#include "support/Passes.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>

#include <cmath>
#include <random>

using Form = MrbFieldWidget::Form;

namespace {

class MatrixWidgetTest : public EditTest {
protected:
    ~MatrixWidgetTest() override
    {
        Editor editor(m_probe->matrix, makeMatrixWidget);
        click(editor, "The sixteen numbers"); // for the widgets to come
    }

    static void click(const Editor& editor, const char* name)
    {
        editor.child<QToolButton>(name)->click();
    }
    static QStringList parts(const Editor& editor)
    {
        QStringList texts;
        for (const NumberBox* box : editor.widget->findChildren<NumberBox*>())
            if (box->isVisible())
                texts << box->text();
        return texts;
    }
    const SbMatrix& value() const { return m_probe->matrix.getValue(); }
};

} // namespace

TEST(MatrixPartsTest, SplitsAndMakesAnyMatrixThatKeepsSpace)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> number(-5, 5);
    for (int i = 0; i < 2000; ++i) {
        SbMatrix matrix;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 3; ++column)
                matrix[row][column] = number(random);
        if (std::fabs(matrix.det3()) < 1)
            continue;
        const MatrixParts parts = MatrixParts::split(matrix);
        ASSERT_TRUE(parts.problem.isEmpty());
        ASSERT_TRUE(MatrixParts::make(parts.numbers).equals(matrix, 1e-5f)) << i;
    }
}

TEST(MatrixPartsTest, AgreesWithTheToolkit)
{
    SbMatrix matrix;
    matrix.setTransform(SbVec3f(1, 2, 3), SbRotation(SbVec3f(0, 0, 1), 0.5f), SbVec3f(2, 3, -4));
    const MatrixParts::Numbers numbers = MatrixParts::split(matrix).numbers;
    const double expected[] = {1, 2, 3, 0, 0, 28.6478898, 2, 3, -4, 0, 0, 0};
    for (std::size_t i = 0; i < numbers.size(); ++i)
        EXPECT_NEAR(numbers[i], expected[i], 1e-4) << i;
}

TEST_F(MatrixWidgetTest, SetsOneNumberAndUndoesIt)
{
    Editor editor(m_probe->matrix, makeMatrixWidget);
    enter(editor.box("row 4, column 1"), "5.5");
    enter(editor.box("row 1, column 4"), "nan");
    EXPECT_EQ(value()[3][0], 5.5f);
    EXPECT_TRUE(std::isnan(value()[0][3]));
    EXPECT_EQ(m_stack.done(), 2);
    enter(editor.box("row 4, column 1"), editor.box("row 4, column 1")->text());
    QTest::keyClick(editor.box("row 1, column 4")->lineEdit(), Qt::Key_Return);
    m_stack.undoAll();
    EXPECT_TRUE(m_probe->matrix.isDefault());
    QApplication::clipboard()->setText("1 2 3 0\n4 5 6 0\n7 8 10 0\n1 1 1 1");
    editor.box("row 2, column 2")->lineEdit()->setFocus();
    QTest::keySequence(editor.box("row 2, column 2")->lineEdit(), QKeySequence::Paste);
    EXPECT_EQ(value(), SbMatrix(1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 10, 0, 1, 1, 1, 1));
    EXPECT_EQ(makeMatrixWidget(&editor.edit, Form::Compact, nullptr), nullptr);
}

TEST_F(MatrixWidgetTest, HasIdentityInverseAndTranspose)
{
    const SbMatrix start(2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 1, 2, 3, 1);
    m_probe->matrix.setValue(start);
    Editor editor(m_probe->matrix, makeMatrixWidget);
    click(editor, "Invert");
    EXPECT_EQ(value(), start.inverse());
    click(editor, "Exchange rows and columns");
    EXPECT_EQ(value(), start.inverse().transpose());
    click(editor, "Set to the identity");
    EXPECT_EQ(value(), SbMatrix());
    click(editor, "Set to the identity");
    EXPECT_EQ(m_stack.done(), 3) << "no command when nothing changes";
    m_stack.undoAll();
    EXPECT_EQ(value(), start);
    enter(editor.box("row 1, column 1"), "0");
    EXPECT_FALSE(editor.child<QToolButton>("Invert")->isEnabled());
}

TEST_F(MatrixWidgetTest, EditsThePartsOfAMatrix)
{
    Editor editor(m_probe->matrix, makeMatrixWidget);
    click(editor, "As scale, shear, rotation and translation");
    EXPECT_EQ(parts(editor),
              QStringList({"0", "0", "0", "0", "0", "0", "1", "1", "1", "0", "0", "0"}));
    enter(editor.box("translation y"), "3");
    enter(editor.box("scale x"), "-2");
    enter(editor.box("rotation about z"), "90");
    enter(editor.box("shear x with y"), "0.5");
    pass();
    EXPECT_EQ(parts(editor),
              QStringList({"0", "3", "0", "0", "0", "90", "-2", "1", "1", "0.5", "0", "0"}))
        << "as they were typed";
    EXPECT_TRUE(value().point(SbVec3f(1, 0, 0)).equals(SbVec3f(0, 1, 0), 1e-6f));
    EXPECT_TRUE(value().point(SbVec3f(0, 1, 0)).equals(SbVec3f(-1, 3.5f, 0), 1e-6f))
        << value().point(SbVec3f(0, 1, 0))[0] << ' ' << value().point(SbVec3f(0, 1, 0))[1];

    // A scale of 0 has no direction, and still it is typed through.
    typeInto(editor.box("scale y"), "0");
    pass();
    QTest::keyClicks(editor.box("scale y")->lineEdit(), ".5");
    QTest::keyClick(editor.box("scale y")->lineEdit(), Qt::Key_Return);
    EXPECT_EQ(parts(editor)[7], "0.5");
    EXPECT_EQ(m_stack.done(), 5);
    typeInto(editor.box("scale z"), "inf");
    EXPECT_TRUE(editor.box("scale z")->isIllegal());
    m_stack.undoAll();
    EXPECT_TRUE(m_probe->matrix.isDefault());
}

TEST_F(MatrixWidgetTest, LeavesTheBitsThatAPartHasNothingToDoWith)
{
    const SbMatrix start(1.1f, 0.3f, -0.7f, 0, 0.2f, 2.3f, 0.9f, 0, -0.4f, 0.8f, 1.7f, 0, 0.1f,
                         0.2f, 0.3f, 1);
    m_probe->matrix.setValue(start);
    Editor editor(m_probe->matrix, makeMatrixWidget);
    click(editor, "As scale, shear, rotation and translation");
    enter(editor.box("translation z"), "9");
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(value()[row][column], start[row][column]);
    enter(editor.box("scale x"), "2");
    EXPECT_EQ(value()[3][1], start[3][1]);
}

TEST_F(MatrixWidgetTest, TellsWhyAMatrixHasNoParts)
{
    Editor editor(m_probe->matrix, makeMatrixWidget);
    click(editor, "As scale, shear, rotation and translation");
    const auto problem = [&editor, this] {
        pass();
        auto* label =
            qobject_cast<QLabel*>(editor.widget->findChild<QStackedWidget*>()->currentWidget());
        return label ? label->text() : QString();
    };
    EXPECT_EQ(problem(), QString());
    m_probe->matrix.setValue(SbMatrix(1, 0, 0, 0.5f, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
    EXPECT_TRUE(problem().contains("projective"));
    m_probe->matrix.setValue(SbMatrix(1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
    EXPECT_TRUE(problem().contains("flattens"));
    SbMatrix broken;
    broken[1][1] = HUGE_VALF;
    m_probe->matrix.setValue(broken);
    EXPECT_TRUE(problem().contains("not finite"));
    m_probe->matrix.setValue(SbMatrix());
    EXPECT_EQ(problem(), QString());
}

TEST_F(MatrixWidgetTest, ChangesOnePartInAllMatrices)
{
    const SoRef<NumberProbe> other = makeProbe();
    SbMatrix scaled;
    scaled.setScale(3);
    other->matrix.setValue(scaled);
    Editor editor(m_probe->matrix, makeMatrixWidget);
    editor.add(other->matrix);
    click(editor, "As scale, shear, rotation and translation");
    enter(editor.box("scale x"), "2");
    EXPECT_EQ(value()[0][0], 2);
    EXPECT_EQ(other->matrix.getValue()[0][0], 2);
    EXPECT_EQ(other->matrix.getValue()[1][1], 3);
}
