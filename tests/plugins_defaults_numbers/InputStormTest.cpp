#include "EditSupport.h"
#include "mirabo/plugins/defaults/ColorBar.h"
#include "mirabo/plugins/defaults/ColorWidget.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "mirabo/plugins/defaults/MatrixWidget.h"
#include "mirabo/plugins/defaults/NumbersWidget.h"
#include "mirabo/plugins/defaults/RotationWidget.h"
#include "mirabo/plugins/defaults/Trackball.h"

#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <QToolButton>

#include <random>

using Form = MrbFieldWidget::Form;

namespace {

/// Random input, as of somebody who leans on the keyboard.
class InputStormTest : public EditTest {
protected:
    int below(int limit) { return std::uniform_int_distribution<>(0, limit - 1)(m_random); }

    void key()
    {
        static constexpr Qt::Key s_keys[] = {
            Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Backspace,
            Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Left,  Qt::Key_Right,   Qt::Key_PageUp,
            Qt::Key_Home,   Qt::Key_End,    Qt::Key_Delete};
        static constexpr char s_characters[] = "0123456789.-+*/^()e#abf=,x";
        constexpr Qt::KeyboardModifier modifiers[] = {Qt::NoModifier, Qt::ShiftModifier,
                                                      Qt::NoModifier};
        QWidget* focus = QApplication::focusWidget();
        if (!focus)
            return;
        if (below(3) == 0)
            QTest::keyClick(focus, s_keys[below(std::size(s_keys))], modifiers[below(3)]);
        else
            QTest::keyClick(focus, s_characters[below(sizeof s_characters - 1)]);
    }
    void press(const Editor& editor)
    {
        const auto pick = [this](const auto& list) {
            return list.isEmpty() ? nullptr : list[below(list.size())];
        };
        const QPoint by(below(80) - 40, below(80) - 40);
        switch (below(6)) {
        case 0:
            if (auto* ball = editor.widget->findChild<Trackball*>())
                drag(ball, QPoint(below(ball->width()), below(ball->height())), by);
            break;
        case 1:
            if (auto* bar = pick(editor.widget->findChildren<ColorBar*>()))
                drag(bar, QPoint(below(bar->width()), 4), by);
            break;
        case 2:
            if (auto* button = pick(editor.widget->findChildren<QToolButton*>()))
                if (!button->accessibleName().startsWith("Take"))
                    button->click();
            break;
        case 3:
            if (auto* box = pick(editor.widget->findChildren<NumberBox*>()))
                box->lineEdit()->setFocus();
            break;
        case 4:
            if (auto* combo = pick(editor.widget->findChildren<QComboBox*>())) {
                combo->setCurrentIndex(below(combo->count()));
                Q_EMIT combo->activated(combo->currentIndex());
            }
            break;
        default:
            support::Clock::advance(0.3);
            pass();
        }
    }
    /// A storm, then everything back, and there again.
    void rage(SoField& field, MakeWidget make, Form form)
    {
        const std::string before = text(field);
        Editor editor(field, make, form);
        constexpr int kInputs = 600;
        for (int i = 0; i < kInputs; ++i)
            below(5) ? key() : press(editor);
        editor.widget->commit();
        const std::string after = text(field);
        const int count = m_stack.done();
        m_stack.undoAll();
        m_commands += count;
        EXPECT_EQ(text(field), before);
        EXPECT_TRUE(field.isDefault());
        for (int i = 0; i < count; ++i)
            m_stack.redo();
        EXPECT_EQ(text(field), after);
        m_stack.undoAll();
    }

    std::mt19937 m_random{11};
    int m_commands = 0; // of all storms
};

} // namespace

TEST_F(InputStormTest, IsUndoneToTheBit)
{
    for (const Form form : {Form::Full, Form::Compact}) {
        for (SoField* field : std::initializer_list<SoField*>{
                 &m_probe->number, &m_probe->fine, &m_probe->whole, &m_probe->bits,
                 &m_probe->vector, &m_probe->quad, &m_probe->plane, &m_probe->box})
            rage(*field, makeNumbersWidget, form);
        rage(m_probe->rotation, makeRotationWidget, form);
        rage(m_probe->color, makeColorWidget, form);
        rage(m_probe->glass, makeColorWidget, form);
    }
    rage(m_probe->matrix, makeMatrixWidget, Form::Full);
    EXPECT_GT(m_commands, 200) << "the input reached little";
}
