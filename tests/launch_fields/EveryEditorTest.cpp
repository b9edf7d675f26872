#include "EditorTool.h"
#include "ProbeNode.h"

#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <QDir>

#include <random>

namespace {

/// All editors of the built-in configuration, on fields of all types.
class EveryEditorTest : public EditorTool {
protected:
    void SetUp() override
    {
        EditorTool::SetUp();
        probe = makeProbe();
        ASSERT_TRUE(probe);
        scene->addChild(probe.get());
        scene->addChild(style);
        scene->addChild(cone);
        scene->addChild(shape);
        if (qEnvironmentVariableIsSet("MIRABO_DARK_PICTURES"))
            darken();
        start();
    }
    std::vector<SoField*> fields() const
    {
        std::vector<SoField*> all = probe->getFields();
        all.push_back(&style->style);
        all.push_back(&cone->parts);
        all.push_back(&shape->geometry);
        return all;
    }
    static const std::vector<std::string>& samples(const SoField& field)
    {
        return samplesOf(std::string(field.getTypeId().getName().getString()).substr(2));
    }
    static bool isList(const SoField& field) { return field.isOfType(SoMField::getClassTypeId()); }
    static std::string typeOf(const SoField& field)
    {
        return field.getTypeId().getName().getString();
    }
    static void darken()
    {
        QApplication::setStyle("Fusion");
        QPalette dark(QColor(53, 53, 53), QColor(45, 45, 45));
        dark.setColor(QPalette::Base, QColor(35, 35, 35));
        dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
        QApplication::setPalette(dark);
    }
    /// Pictures of the editors, for people, where MIRABO_FIELD_PICTURES says.
    static void takePicture(const std::string& name)
    {
        const QString folder = qEnvironmentVariable("MIRABO_FIELD_PICTURES");
        if (!folder.isEmpty())
            panel()->grab().save(QDir(folder).filePath(QString::fromStdString(name) + ".png"));
    }

    SoRef<SoNode> probe;
    SoDrawStyle* style = new SoDrawStyle;
    SoCone* cone = new SoCone;
    SoVRMLShape* shape = new SoVRMLShape;
};

TEST_F(EveryEditorTest, ShowsEveryTypeAndLeavesTheValueAlone)
{
    window()->findChild<QDockWidget*>("view:Field Editor")->setFloating(true);
    auto* dock = window()->findChild<QDockWidget*>("view:Field Editor");
    dock->resize(420, 560);
    for (SoField* field : fields()) {
        SCOPED_TRACE(typeOf(*field));
        choose(*field);
        ASSERT_TRUE(widget());
        EXPECT_TRUE(field->isDefault());
        for (const std::string& sample : samples(*field)) {
            ASSERT_TRUE(field->set(sample.c_str()));
            if (isList(*field)) {
                ASSERT_TRUE(static_cast<SoMField*>(field)->set1(2, sample.c_str()));
            }
            const std::string before = textOf(*field);
            support::flush();
            if (&sample == &samples(*field).front())
                takePicture(typeOf(*field));
            widget()->setFocus();
            widget()->commit();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            EXPECT_EQ(textOf(*field), before);
        }
        if (samples(*field).empty())
            takePicture(typeOf(*field));
        EXPECT_FALSE(canUndo());
    }
}

TEST_F(EveryEditorTest, HasACompactFormOrNone)
{
    for (SoField* field : fields()) {
        SCOPED_TRACE(typeOf(*field));
        const bool hasSample = !samples(*field).empty();
        if (hasSample) {
            ASSERT_TRUE(field->set(samples(*field).front().c_str()));
        }
        const std::string before = textOf(*field);
        MrbFieldEdit edit(field);
        MrbFieldWidget* compact =
            MrbFieldEditors::getInstance()->create(&edit, MrbFieldWidget::Form::Compact, panel());
        if (!compact)
            continue;
        EXPECT_LE(compact->minimumSizeHint().height(), 3 * panel()->fontMetrics().height());
        compact->commit();
        EXPECT_EQ(textOf(*field), before);
        delete compact;
    }
}

/// What a field is, to be compared.
struct State {
    std::string text;
    bool isDefault;
    bool isIgnored;
    const SoField* master;
    bool operator==(const State&) const = default;
};

class FieldStorm : public EveryEditorTest {
protected:
    std::vector<State> states() const
    {
        std::vector<State> all;
        for (const SoField* field : fields())
            all.push_back({textOf(*field), field->isDefault(), field->isIgnored(),
                           field->getConnectedField()});
        return all;
    }
    unsigned number(unsigned below) { return m_random() % below; }
    std::string sample(const SoField& field)
    {
        const auto& all = samples(field);
        return all.empty() ? textOf(field) : all[number(static_cast<unsigned>(all.size()))];
    }
    void changeText(MrbFieldEdit& edit, const SoField& field)
    {
        if (&field == &shape->geometry) {
            edit.change([this](SoField& value) {
                static_cast<SoSFNode&>(value).setValue(number(2) ? cone : nullptr);
                return true;
            });
            return;
        }
        QString problem;
        edit.setText(QString::fromStdString(sample(field)), &problem);
        EXPECT_TRUE(problem.isEmpty()) << problem.toStdString();
    }
    void changeRange(MrbFieldEdit& edit, const SoMField& list)
    {
        const std::unique_ptr<SoField> scratch = edit.makeValue();
        auto& values = static_cast<SoMField&>(*scratch);
        const auto count = number(4);
        values.setNum(0);
        for (unsigned i = 0; i < count; ++i)
            values.set1(static_cast<int>(i), sample(list).c_str());
        const auto num = static_cast<unsigned>(list.getNum());
        const unsigned start = number(num + 1);
        edit.replaceValues(static_cast<int>(start), static_cast<int>(number(num - start + 1)),
                           values);
    }
    void step()
    {
        const std::vector<SoField*> all = fields();
        SoField* field = all[number(static_cast<unsigned>(all.size()))];
        MrbFieldEdit edit(field);
        const unsigned burst = number(4) == 0 ? 3 : 1;
        if (burst > 1)
            edit.beginGesture();
        for (unsigned i = 0; i < burst; ++i) {
            if (isList(*field) && number(2))
                changeRange(edit, static_cast<const SoMField&>(*field));
            else
                changeText(edit, *field);
        }
        edit.endGesture();
        switch (number(12)) {
        case 0:
            edit.setIgnored(!field->isIgnored());
            break;
        case 1:
            edit.disconnectFields();
            break;
        case 2:
            edit.connectFields(all[number(static_cast<unsigned>(all.size()))]);
            break;
        case 3:
            edit.resetToDefault();
            break;
        case 4:
            choose(*field); // the editors follow
            break;
        default:
            break;
        }
    }

private:
    std::mt19937 m_random{20261122};
};

TEST_F(FieldStorm, IsUndoneToTheBitAndMadeAgain)
{
    constexpr int kSteps = 1500;
    const std::vector<State> before = states();
    const auto refusals = support::expectErrors(); // connections that are none
    for (int i = 0; i < kSteps; ++i)
        step();
    const std::vector<State> after = states();
    EXPECT_NE(after, before);
    int steps = 0;
    for (; canUndo(); ++steps)
        action("&Undo")->trigger();
    EXPECT_GT(steps, kSteps / 2);
    const std::vector<State> undone = states();
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(undone[i].text, before[i].text) << typeOf(*fields()[i]);
        EXPECT_EQ(undone[i], before[i]) << typeOf(*fields()[i]);
    }
    for (int i = 0; i < steps; ++i)
        MrbServices::getInstance()->redo();
    const std::vector<State> redone = states();
    for (std::size_t i = 0; i < after.size(); ++i)
        EXPECT_EQ(redone[i], after[i])
            << typeOf(*fields()[i]) << ' ' << redone[i].text << " for " << after[i].text;
}

} // namespace
