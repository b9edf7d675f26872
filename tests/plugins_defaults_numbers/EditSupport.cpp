#include "EditSupport.h"

#include "mirabo/extender/MrbCommand.h"
#include "mirabo/plugins/defaults/MarkedLineEdit.h"
#include "support/Passes.h"

#include <kalmyr/io/SoDB.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>

SO_NODE_SOURCE(NumberProbe)

NumberProbe::NumberProbe()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(number, (1.5f));
    SO_ADD_FIELD(fine, (0.1));
    SO_ADD_FIELD(whole, (-7));
    SO_ADD_FIELD(bits, (255u));
    SO_ADD_FIELD(small, (3));
    SO_ADD_FIELD(smallBits, (16));
    SO_ADD_FIELD(time, (SbTime(90)));
    SO_ADD_FIELD(vector, (SbVec3f(1, 2, 4)));
    SO_ADD_FIELD(point, (SbVec2d(0.1, 0.2)));
    SO_ADD_FIELD(quad, (SbVec4s(1, 2, 3, 4)));
    SO_ADD_FIELD(steps, (SbVec3i32(1, 2, 0)));
    SO_ADD_FIELD(plane, (SbPlane(SbVec3f(0, 0, 1), 2)));
    SO_ADD_FIELD(box, (SbBox3f(-1, -2, -3, 1, 2, 3)));
    SO_ADD_FIELD(rotation, (SbRotation(SbVec3f(0, 0, 1), 0.5f)));
    SO_ADD_FIELD(matrix, (SbMatrix()));
    SO_ADD_FIELD(color, (SbColor(0.2f, 0.4f, 0.6f)));
    SO_ADD_FIELD(glass, (SbColorRGBA(1, 0.5f, 0, 0.5f)));
    SO_ADD_EMPTY_FIELD(text);
}

NumberProbe::~NumberProbe() = default;

void NumberProbe::initClass()
{
    if (s_classTypeId.isBad())
        SO_NODE_INIT_CLASS(NumberProbe, SoNode, "NumberProbe");
}

Editor::Editor(SoField& field, MakeWidget make, MrbFieldWidget::Form form) : edit(&field)
{
    auto* layout = new QVBoxLayout(&window);
    widget = make(&edit, form, &window);
    layout->addWidget(widget);
    widget->typingEnded();
    window.show();
    QApplication::setActiveWindow(&window);
    support::flush();
}

void Editor::add(SoField& field)
{
    EXPECT_TRUE(edit.addField(&field));
    widget->typingEnded();
}

NumberBox* Editor::box(const QString& name) const
{
    for (NumberBox* box : widget->findChildren<NumberBox*>())
        if (box->lineEdit()->accessibleName() == name)
            return box;
    ADD_FAILURE() << "there is no box " << name.toStdString();
    return nullptr;
}

QStringList Editor::texts() const
{
    QStringList texts;
    for (const NumberBox* box : widget->findChildren<NumberBox*>())
        if (!box->isHidden())
            texts << box->text();
    return texts;
}

void typeInto(NumberBox* box, const QString& text)
{
    box->lineEdit()->setFocus(Qt::TabFocusReason);
    box->lineEdit()->selectAll();
    QTest::keyClicks(box->lineEdit(), text);
}

void enter(NumberBox* box, const QString& text)
{
    typeInto(box, text);
    QTest::keyClick(box->lineEdit(), Qt::Key_Return);
}

void drag(QWidget* widget, const QPoint& from, const QPoint& by, Qt::KeyboardModifiers modifiers)
{
    const auto send = [&](QEvent::Type type, const QPoint& at, Qt::MouseButton button,
                          Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, widget->mapToGlobal(at), button, buttons, modifiers);
        QApplication::sendEvent(widget, &event);
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    const int moves = std::max(std::abs(by.x()), std::abs(by.y()));
    for (int i = 1; i <= moves; ++i)
        send(QEvent::MouseMove, from + by * i / moves, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, from + by, Qt::LeftButton, Qt::NoButton);
}

EditTest::EditTest() = default;

EditTest::~EditTest() = default;

SoRef<NumberProbe> EditTest::makeProbe()
{
    SoDB::init();
    NumberProbe::initClass();
    return SoRef<NumberProbe>(new NumberProbe);
}

std::string EditTest::text(const SoField& field)
{
    SbString text;
    field.get(text);
    return text.getString();
}

void EditTest::pass()
{
    support::Clock::advance(1); // changes that follow each other faster than the eye are told late
    support::flush();
}
