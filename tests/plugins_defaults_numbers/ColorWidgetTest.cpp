#include "mirabo/plugins/defaults/ColorWidget.h"

#include "EditSupport.h"
#include "mirabo/plugins/defaults/ColorBar.h"
#include "mirabo/plugins/defaults/ColorParts.h"
#include "mirabo/plugins/defaults/ColorSwatch.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "support/Passes.h"

#include <QApplication>
#include <QColorDialog>
#include <QPointer>
#include <QTest>
#include <QToolButton>

#include <random>

using Form = MrbFieldWidget::Form;

namespace {

class ColorWidgetTest : public EditTest {
protected:
    static MarkedLineEdit* hex(const Editor& editor)
    {
        return editor.child<MarkedLineEdit>("Hexadecimal colour");
    }
    static void typeHex(const Editor& editor, const QString& text)
    {
        hex(editor)->setFocus();
        hex(editor)->selectAll();
        QTest::keyClicks(hex(editor), text);
    }
    static QToolButton* eye(const Editor& editor)
    {
        return editor.child<QToolButton>(
            "Take a colour from a window: click on it (Escape: leave)");
    }
    /// A window of one colour.
    static std::unique_ptr<QWidget> paint(const QColor& color)
    {
        auto window = std::make_unique<QWidget>();
        QPalette palette;
        palette.setColor(QPalette::Window, color);
        window->setPalette(palette);
        window->setGeometry(600, 500, 50, 50); // away from the editor
        window->show();
        pass();
        return window;
    }
    const SbColor& value() const { return m_probe->color.getValue(); }
};

} // namespace

TEST(ColorPartsTest, ConvertsToHueAndBack)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> number(0, 2);
    for (int i = 0; i < 1000; ++i) {
        const double rgb[] = {number(random), number(random), i % 3 ? number(random) : 0};
        double hsv[3], made[3];
        colors::toHsv(rgb, hsv);
        colors::fromHsv(hsv, made);
        for (int c = 0; c < 3; ++c)
            ASSERT_NEAR(made[c], rgb[c], 1e-12) << i;
    }
    const double blue[] = {0, 0, 1};
    double hsv[3];
    colors::toHsv(blue, hsv);
    EXPECT_EQ(hsv[0], 240);
}

TEST(ColorPartsTest, ReadsHexadecimalAndNames)
{
    const struct {
        const char* text;
        int count;
        const char* shown; // null: no colour
    } cases[] = {{"#f80", 3, "#ff8800"},
                 {"ff8800", 3, "#ff8800"},
                 {" #FF8800 ", 3, "#ff8800"},
                 {"red", 3, "#ff0000"},
                 {"#ff880040", 4, "#ff880040"},
                 {"#f804", 4, "#ff880044"},
                 {"#ff8800", 4, "#ff880080"},
                 {"#ff88", 3, nullptr},
                 {"#ff8800ff", 3, nullptr},
                 {"", 3, nullptr},
                 {"#", 3, nullptr},
                 {"#ggg", 3, nullptr},
                 {"reddish", 3, nullptr}};
    for (const auto& [text, count, shown] : cases) {
        double numbers[] = {0, 0, 0, 128 / 255.0};
        EXPECT_EQ(colors::readHex(text, numbers, count), shown != nullptr) << text;
        if (shown) {
            EXPECT_EQ(colors::hexText(numbers, count), shown) << text;
        }
    }
}

TEST_F(ColorWidgetTest, ReadsHexadecimalText)
{
    for (const Form form : {Form::Full, Form::Compact}) {
        Editor editor(m_probe->color, makeColorWidget, form);
        EXPECT_EQ(hex(editor)->text(), "#336699");
        QTest::keyClick(hex(editor), Qt::Key_Return);
        typeHex(editor, "#336699"); // a rounded text is not written back
        EXPECT_EQ(value()[0], 0.2f);
        QTest::keyClick(hex(editor), Qt::Key_Escape);
        EXPECT_TRUE(m_probe->color.isDefault());
        EXPECT_EQ(m_stack.done(), 0);

        typeHex(editor, "#ff8000");
        QTest::keyClick(hex(editor), Qt::Key_Return);
        EXPECT_EQ(value(), SbColor(1, 128 / 255.f, 0));
        EXPECT_EQ(m_stack.done(), 1);
        typeHex(editor, "#ff80zz");
        EXPECT_TRUE(hex(editor)->isIllegal());
        EXPECT_TRUE(editor.widget->isTyping());
        editor.widget->commit();
        EXPECT_EQ(hex(editor)->text(), "#ff80zz") << "never lost";
        QTest::keyClick(hex(editor), Qt::Key_Escape);
        EXPECT_FALSE(hex(editor)->isIllegal());
        m_stack.undoAll();
        EXPECT_EQ(value(), SbColor(0.2f, 0.4f, 0.6f));
        EXPECT_TRUE(m_probe->color.isDefault());
    }
}

TEST_F(ColorWidgetTest, SetsComponentsByBoxesAndBars)
{
    Editor editor(m_probe->color, makeColorWidget);
    EXPECT_EQ(editor.texts(), QStringList({"0.2", "0.4", "0.6", "210", "0.6666667", "0.6"}));
    auto* red = editor.child<ColorBar>("Red");
    drag(red, QPoint(red->width() / 4, red->height() / 2), QPoint(red->width() / 2, 0));
    EXPECT_EQ(m_stack.done(), 1);
    EXPECT_NEAR(value()[0], 0.75, 0.05);
    EXPECT_EQ(value()[1], 0.4f);
    red->setFocus();
    QTest::keyClick(red, Qt::Key_End);
    QTest::keyClick(red, Qt::Key_Left);
    QTest::keyClick(red, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(value()[0], 0.89f);
    EXPECT_EQ(m_stack.done(), 2);
    QTest::keyClick(red, Qt::Key_Escape);
    EXPECT_NEAR(value()[0], 0.75, 0.05);
    EXPECT_EQ(m_stack.done(), 1);

    enter(editor.box("Green"), "2.5");
    EXPECT_EQ(value()[1], 2.5f);
    EXPECT_EQ(editor.child<ColorBar>("Green")->position(), 2.5);
    EXPECT_TRUE(hex(editor)->toolTip().contains("Beyond 0 to 1"));
    typeInto(editor.box("Green"), "nan");
    EXPECT_FALSE(editor.box("Green")->isIllegal());
    QTest::keyClick(editor.box("Green")->lineEdit(), Qt::Key_Escape);
    m_stack.undoAll();
    EXPECT_TRUE(m_probe->color.isDefault());
}

TEST_F(ColorWidgetTest, KeepsTheHueOfGrey)
{
    Editor editor(m_probe->color, makeColorWidget);
    enter(editor.box("Saturation"), "0");
    EXPECT_EQ(value(), SbColor(0.6f, 0.6f, 0.6f));
    pass();
    enter(editor.box("Value"), "0");
    pass();
    enter(editor.box("Value"), "1");
    enter(editor.box("Saturation"), "1");
    EXPECT_EQ(value(), SbColor(0, 0.5f, 1));
    enter(editor.box("Hue"), "-120"); // is 240
    EXPECT_EQ(value(), SbColor(0, 0, 1));
    EXPECT_EQ(editor.box("Hue")->text(), "-120");
    auto* hue = editor.child<ColorBar>("Hue");
    hue->setFocus();
    QTest::keyClick(hue, Qt::Key_Home);
    EXPECT_EQ(value(), SbColor(1, 0, 0));
    EXPECT_EQ(editor.box("Hue")->text(), "0");
    typeInto(editor.box("Hue"), "inf");
    EXPECT_TRUE(editor.box("Hue")->isIllegal());
}

TEST_F(ColorWidgetTest, KeepsAlphaUnlessItIsMeant)
{
    Editor editor(m_probe->glass, makeColorWidget);
    EXPECT_EQ(hex(editor)->text(), "#ff800080");
    typeHex(editor, "#00ff00");
    QTest::keyClick(hex(editor), Qt::Key_Return);
    EXPECT_EQ(m_probe->glass.getValue(), SbColorRGBA(0, 1, 0, 0.5f));
    enter(editor.box("Hue"), "0");
    EXPECT_EQ(m_probe->glass.getValue(), SbColorRGBA(1, 0, 0, 0.5f));
    enter(editor.box("Alpha"), "0.25");
    EXPECT_EQ(m_probe->glass.getValue(), SbColorRGBA(1, 0, 0, 0.25f));
}

TEST_F(ColorWidgetTest, FollowsTheDialogAsOneGesture)
{
    auto editor = std::make_unique<Editor>(m_probe->color, makeColorWidget);
    const auto open = [&editor] {
        editor->child<ColorSwatch>("Choose a colour")->click();
        pass();
        return QPointer(editor->widget->findChild<QColorDialog*>());
    };
    QPointer<QColorDialog> dialog = open();
    ASSERT_TRUE(dialog);
    EXPECT_FALSE(dialog->isModal());
    dialog->accept();
    pass();
    EXPECT_TRUE(m_probe->color.isDefault()) << "confirmed unchanged";

    dialog = open();
    dialog->setCurrentColor(Qt::red);
    EXPECT_EQ(value(), SbColor(1, 0, 0));
    dialog->setCurrentColor(Qt::green);
    dialog->reject();
    pass();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(m_probe->color.isDefault());

    dialog = open();
    EXPECT_EQ(open(), dialog) << "one at a time";
    dialog->setCurrentColor(Qt::red);
    dialog->setCurrentColor(Qt::blue);
    dialog->accept();
    EXPECT_EQ(value(), SbColor(0, 0, 1));
    EXPECT_EQ(m_stack.done(), 1);

    pass();
    dialog = open();
    dialog->setCurrentColor(Qt::white);
    editor.reset();
    EXPECT_TRUE(dialog.isNull()) << "it closes with the editor";
    EXPECT_EQ(value(), SbColor(1, 1, 1));
}

TEST_F(ColorWidgetTest, TakesAColorFromAnyWindow)
{
    Editor editor(m_probe->color, makeColorWidget);
    const std::unique_ptr<QWidget> window = paint(QColor(10, 20, 30));
    auto* swatch = editor.child<ColorSwatch>("Choose a colour");
    const QColor before = swatch->color();
    const auto move = [&window] {
        const QPoint at(20, 20);
        QMouseEvent event(QEvent::MouseMove, at, window->mapToGlobal(at), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &event);
    };

    eye(editor)->click();
    EXPECT_TRUE(QApplication::overrideCursor());
    move();
    EXPECT_EQ(swatch->color(), QColor(10, 20, 30));
    EXPECT_EQ(hex(editor)->text(), "#0a141e");
    EXPECT_TRUE(m_probe->color.isDefault());
    QTest::keyClick(window.get(), Qt::Key_Escape);
    pass();
    EXPECT_EQ(swatch->color(), before);
    EXPECT_FALSE(QApplication::overrideCursor());
    EXPECT_FALSE(eye(editor)->isChecked());

    eye(editor)->click();
    move();
    QTest::mouseClick(window.get(), Qt::RightButton, {}, QPoint(20, 20));
    pass();
    EXPECT_TRUE(m_probe->color.isDefault());

    eye(editor)->click();
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, QPoint(20, 20));
    pass();
    EXPECT_EQ(value(), SbColor(10 / 255.f, 20 / 255.f, 30 / 255.f));
    EXPECT_FALSE(QApplication::overrideCursor());
    EXPECT_EQ(m_stack.done(), 1);
    move(); // the mouse is the windows' again
    EXPECT_EQ(hex(editor)->text(), "#0a141e");
    m_stack.undo();
    EXPECT_TRUE(m_probe->color.isDefault());
}

TEST_F(ColorWidgetTest, GivesTheMouseBackWhenItGoes)
{
    {
        Editor editor(m_probe->color, makeColorWidget);
        eye(editor)->click();
        EXPECT_TRUE(QApplication::overrideCursor());
    }
    EXPECT_FALSE(QApplication::overrideCursor());
}

TEST_F(ColorWidgetTest, ChangesOneComponentInAllColors)
{
    const SoRef<NumberProbe> other = makeProbe();
    other->color.setValue(SbColor(1, 0, 0));
    Editor editor(m_probe->color, makeColorWidget);
    editor.add(other->color);
    enter(editor.box("Blue"), "1");
    EXPECT_EQ(other->color.getValue(), SbColor(1, 0, 1));
    enter(editor.box("Value"), "0.5");
    EXPECT_EQ(other->color.getValue(), SbColor(0.5f, 0, 0.5f));
    typeHex(editor, "#fff");
    QTest::keyClick(hex(editor), Qt::Key_Return);
    EXPECT_EQ(other->color.getValue(), value());
    EXPECT_EQ(m_stack.done(), 3);
}
