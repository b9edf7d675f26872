// Scenes are saved from the real window, with its dialogs.
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/MrbCommand.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "StandaloneSupport.h"
#include "support/DialogAnswers.h"

#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>

namespace {

using mirabo::ActionId;
using support::DialogAnswers;

class NoEdit final : public MrbCommand {
public:
    bool execute() override { return true; }
    void undo() override {}
    void redo() override {}
};

class Saving : public StandaloneTest {
protected:
    void TearDown() override
    {
        // Nothing is asked any more: the question is the window's.
        MrbServicesImpl::getInstance()->getCommandManager()->clearUndoCommand();
        StandaloneTest::TearDown();
    }

    QString at(const QString& name) const { return m_folder.filePath(name); }
    static QByteArray textOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    QString write(const QString& name, const QByteArray& text) const
    {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return at(name);
    }
    void trigger(ActionId id) const
    {
        support::flush();
        QAction* action = window()->action(id);
        EXPECT_TRUE(action->isEnabled()) << action->text().toStdString();
        action->trigger();
    }
    void addCube() const
    {
        static_cast<SoGroup*>(viewer->getScene())->addChild(new SoCube);
        support::flush();
    }
    /// Makes the document a changed one.
    void edit() { MrbServicesImpl::getInstance()->getCommandManager()->addCommand(&m_edit); }
    static DialogAnswers::Answer press(const QString& button)
    {
        return [button](QDialog* dialog) {
            auto* box = qobject_cast<QMessageBox*>(dialog);
            ASSERT_TRUE(box) << dialog->windowTitle().toStdString();
            for (QAbstractButton* candidate : box->buttons())
                if (candidate->text() == button)
                    return candidate->click();
            FAIL() << "no button " << button.toStdString();
        };
    }
    static DialogAnswers::Answer name(const QString& path, int filter = 0)
    {
        return [path, filter](QDialog* dialog) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            ASSERT_TRUE(files);
            EXPECT_EQ(files->windowTitle(), "Mirabo -- Save As");
            EXPECT_EQ(files->nameFilters().size(), 2);
            files->selectNameFilter(files->nameFilters().value(filter));
            files->findChild<QLineEdit*>("fileNameEdit")->setText(path);
            dialog->accept();
        };
    }
    static DialogAnswers::Answer reads(const QString& title, QString* text)
    {
        return [title, text](QDialog* dialog) {
            EXPECT_EQ(dialog->windowTitle(), title);
            *text = static_cast<QMessageBox*>(dialog)->text();
            QTest::keyClick(dialog, Qt::Key_Escape);
        };
    }

private:
    NoEdit m_edit;
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(Saving, WritesTheFormatThatTheFileHas)
{
    const struct {
        const char* name;
        const char* text;
        const char* header;
    } files[] = {
        {"scene.ky", "#Kalmyr V1.0 ascii\nSeparator { Sphere { } }\n", "#Kalmyr V1.0 ascii"},
        {"one.wrl", "#VRML V1.0 ascii\nSeparator { Sphere { } }\n", "#VRML V1.0 ascii"},
        {"two.wrl", "#VRML V2.0 utf8\nGroup { children [ Shape { geometry Sphere { } } ] }\n",
         "#VRML V2.0 utf8"},
    };
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        const QString path = write(file.name, file.text);
        ASSERT_TRUE(viewer->openSceneFile(path));
        addCube();
        trigger(ActionId::Save);
        const QByteArray saved = textOf(path);
        EXPECT_TRUE(saved.startsWith(file.header)) << saved.toStdString();
        EXPECT_TRUE(saved.contains("Cube") || saved.contains("Box")) << saved.toStdString();
        EXPECT_EQ(viewer->getCurrentFile(), path);
        ASSERT_TRUE(viewer->openSceneFile(path));
        trigger(ActionId::Save);
        EXPECT_EQ(textOf(path), saved) << "saving what was not changed";
    }
}

TEST_F(Saving, AsksForANameAndAFormat)
{
    ASSERT_TRUE(viewer->openSceneFile(
        write("old.ky", "#Kalmyr V1.0 ascii\nSeparator { DEF part Group { Cone { } } }\n")));
    const SoNode* scene = viewer->getScene();
    {
        DialogAnswers answers({name(at("scene"))});
        trigger(ActionId::SaveAs);
    }
    EXPECT_TRUE(textOf(at("scene.ky")).startsWith("#Kalmyr V1.0 ascii"));
    EXPECT_EQ(viewer->getCurrentFile(), at("scene.ky"));
    EXPECT_EQ(window()->windowTitle(), "Mirabo -- " + at("scene.ky"));
    EXPECT_EQ(viewer->getScene(), scene) << "the tree stays as the user has opened it";
    {
        DialogAnswers answers({name(at("PACKED.KYZ"), 1)});
        trigger(ActionId::SaveAs);
    }
    EXPECT_TRUE(textOf(at("PACKED.KYZ")).startsWith("\x1f\x8b"));
    EXPECT_TRUE(viewer->openSceneFile(at("PACKED.KYZ")));
    // A part changes neither file nor title.
    tree()->setCurrentItem(tree()->topLevelItem(0)->child(0));
    {
        DialogAnswers answers({name(at("part.ky"))});
        MrbServicesImpl::getInstance()->getCommandManager()->saveSubSceneGraph();
    }
    EXPECT_TRUE(textOf(at("part.ky")).contains("DEF part Group"));
    EXPECT_FALSE(textOf(at("part.ky")).contains("Separator"));
    EXPECT_EQ(viewer->getCurrentFile(), at("PACKED.KYZ"));
    // A name that becomes that of an existing file is asked about; so is a cancelled dialog safe.
    const QByteArray before = textOf(at("scene.ky"));
    addCube();
    {
        DialogAnswers answers({name(at("scene")), press("&No")});
        trigger(ActionId::SaveAs);
        EXPECT_EQ(answers.count(), 2);
    }
    EXPECT_EQ(textOf(at("scene.ky")), before);
    EXPECT_EQ(viewer->getCurrentFile(), at("PACKED.KYZ"));
}

TEST_F(Saving, LeavesTheOldFileWhenItCannotSave)
{
    const QString path = write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { }\n");
    ASSERT_TRUE(viewer->openSceneFile(path));
    write("scene.ky", "somebody else's text");
    {
        DialogAnswers answers({});
        trigger(ActionId::Save); // silent; the next one asks for a name
        EXPECT_EQ(answers.count(), 0);
    }
    EXPECT_EQ(textOf(path), "somebody else's text");
    EXPECT_EQ(viewer->getCurrentFile(), "");
    QString text;
    {
        DialogAnswers answers({name("/dev/full/scene.ky"), reads("File Error Dialog", &text)});
        trigger(ActionId::Save);
    }
    EXPECT_EQ(text, "Error creating file: /dev/full/scene.ky");
    {
        QFile::link("/dev/full", at("full.ky"));
        DialogAnswers answers(
            {name(at("full.ky")), press("&Yes"), reads("File Error Dialog", &text)});
        trigger(ActionId::Save);
    }
    EXPECT_TRUE(text.contains("No space left on device")) << text.toStdString();
    EXPECT_EQ(viewer->getCurrentFile(), "");
}

TEST_F(Saving, TakesAnyNameAndRefusesFolders)
{
    const QString odd = at(QString::fromUtf8("two\nlines & \xc3\xa4 %1.ky"));
    addCube();
    ASSERT_TRUE(viewer->writeScene(nullptr, odd, mirabo::SceneFileFormat::KalmyrAscii, false));
    ASSERT_TRUE(viewer->openSceneFile(odd));
    EXPECT_EQ(viewer->getCurrentFile(), odd);
    EXPECT_EQ(window()->windowTitle(), "Mirabo -- " + odd);

    QString text;
    DialogAnswers answers({reads("File Error Dialog", &text)});
    ASSERT_TRUE(QDir(at("")).mkdir("folder.ky"));
    EXPECT_FALSE(
        viewer->writeScene(nullptr, at("folder.ky"), mirabo::SceneFileFormat::KalmyrAscii, true));
    EXPECT_EQ(text, "Error creating file: " + at("folder.ky"));
    EXPECT_EQ(viewer->getCurrentFile(), odd);
}

TEST_F(Saving, AsksBeforeChangesAreLost)
{
    const QString path = write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { }\n");
    const auto answer = [&](DialogAnswers::Answer how, const std::function<void()>& what) {
        edit();
        DialogAnswers answers({std::move(how)});
        what();
        EXPECT_EQ(answers.count(), 1);
    };
    ASSERT_TRUE(viewer->openSceneFile(path));
    const SoRef<SoNode> scene(viewer->getScene());
    QString text;
    answer(press("Cancel"), [&] { trigger(ActionId::Close); });
    EXPECT_EQ(viewer->getScene(), scene.get());
    answer(press("Cancel"), [&] { trigger(ActionId::New); });
    answer(press("Cancel"), [&] { trigger(ActionId::Quit); });
    EXPECT_EQ(viewer->getScene(), scene.get());
    answer(press("Cancel"), [&] { trigger(ActionId::Reload); });
    EXPECT_EQ(viewer->getScene(), scene.get());
    answer(press("Cancel"), [&] { viewer->openDroppedFile(path); });
    EXPECT_EQ(viewer->getScene(), scene.get());
    answer(press("Cancel"), [&] { window()->close(); });
    EXPECT_TRUE(window()->isVisible());
    addCube();
    answer(press("Yes"), [&] { trigger(ActionId::Reload); });
    EXPECT_TRUE(textOf(path).contains("Cube"));
    EXPECT_NE(viewer->getScene(), scene.get());
    // Escape means that the changes are not wanted.
    addCube();
    const QByteArray saved = textOf(path);
    answer(reads("Mirabo -- Unsaved Changes", &text), [&] { trigger(ActionId::Close); });
    EXPECT_EQ(text, "Save changes to " + path);
    EXPECT_EQ(textOf(path), saved);
    EXPECT_EQ(viewer->getCurrentFile(), "");
    EXPECT_EQ(window()->windowTitle(), "Mirabo");
    DialogAnswers none({});
    trigger(ActionId::New); // nothing to lose
    EXPECT_EQ(none.count(), 0);
}

TEST_F(Saving, AsksOnlyForWhatIsNotInTheFile)
{
    ASSERT_TRUE(viewer->openSceneFile(write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { }\n")));
    const auto numAsked = [this] {
        DialogAnswers answers({press("Cancel")});
        trigger(ActionId::Close);
        return answers.count();
    };
    edit();
    EXPECT_EQ(numAsked(), 1);
    {
        DialogAnswers answers({[](QDialog* dialog) { dialog->reject(); }});
        trigger(ActionId::SaveAs);
    }
    EXPECT_EQ(numAsked(), 1) << "nothing was saved";
    trigger(ActionId::Save);
    EXPECT_EQ(numAsked(), 0);
}

TEST_F(Saving, AsksBeforeItRewritesReferencedFiles)
{
    const QString part = write("part.ky", "#Kalmyr V1.0 ascii\nSphere { radius 2 }\n");
    const QString path = write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { File { name \""
                                               + part.toUtf8() + "\" } }\n");
    ASSERT_TRUE(viewer->openSceneFile(path));
    const QByteArray before = textOf(part);
    DialogAnswers answers({press("&No"), press("&Yes")});
    trigger(ActionId::Save);
    EXPECT_EQ(textOf(part), before);
    trigger(ActionId::Save);
    EXPECT_EQ(answers.count(), 2);
    EXPECT_NE(textOf(part), before) << "written anew";
    EXPECT_TRUE(textOf(part).contains("radius 2"));
    QFile::remove(part);
    trigger(ActionId::Save);
    EXPECT_EQ(answers.count(), 2) << "what is not there is never created";
    EXPECT_FALSE(QFileInfo::exists(part));
}

// A host may end everything while a question is open.
TEST_F(Saving, LeavesTheDocumentAloneOnceTheWindowIsGone)
{
    const QString part = write("part.ky", "#Kalmyr V1.0 ascii\nSphere { radius 2 }\n");
    ASSERT_TRUE(
        viewer->openSceneFile(write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { File { name \""
                                                    + part.toUtf8() + "\" } }\n")));
    bool asked = false;
    DialogAnswers answers({name(at("copy.ky")), [&](QDialog*) {
                               asked = true;
                               delete window();
                           }});
    trigger(ActionId::SaveAs);
    EXPECT_TRUE(asked);
    EXPECT_TRUE(textOf(at("copy.ky")).contains("part.ky")) << "what was being saved is saved";
}

TEST_F(Saving, KeepsThePanelsWhenAFileIsReadAnew)
{
    const QByteArray rest = "  DEF wheel Separator { Material { } Group { Cube { width 3 } } }\n"
                            "  DEF closed Group { Cone { } }\n}\n";
    const QString path = write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator {\n" + rest);
    ASSERT_TRUE(viewer->openSceneFile(path));
    const auto row = [this](std::initializer_list<int> way) {
        support::flush();
        QTreeWidgetItem* item = tree()->topLevelItem(0);
        for (const int at : way)
            item = item->child(at);
        return static_cast<SoTreeViewItem*>(item);
    };
    row({0})->setExpanded(true);
    row({0, 1})->setExpanded(true);
    tree()->setCurrentItem(row({0, 1, 0})); // the cube, whose first field is watched
    window()->findChild<QAbstractButton*>("m_watchButton")->click();
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      tree()->visualItemRect(row({1})).center());
    const auto* tabs = window()->findChild<SoTabNodeOverview*>();
    const auto* watch = window()->findChild<SoFieldWatch*>();
    ASSERT_EQ(tabs->count(), 2);
    ASSERT_EQ(watch->topLevelItemCount(), 1);
    const QString field = watch->fieldItem(0)->text(SoMiraboList::FieldName);

    write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator {\n  Sphere { }\n" + rest);
    trigger(ActionId::Reload);
    EXPECT_TRUE(row({1})->isExpanded());
    EXPECT_TRUE(row({1, 1})->isExpanded());
    EXPECT_FALSE(row({2})->isExpanded());
    EXPECT_EQ(tree()->currentItem(), row({2}));
    SoNode* cube = row({1, 1, 0})->getNode();
    ASSERT_EQ(tabs->count(), 2);
    EXPECT_EQ(tabs->overview(0)->getNode(), cube);
    EXPECT_EQ(tabs->overview(1)->getNode(), row({2})->getNode());
    EXPECT_EQ(tabs->currentIndex(), 1);
    ASSERT_EQ(watch->topLevelItemCount(), 1);
    EXPECT_EQ(watch->fieldItem(0)->getNode(), cube);
    EXPECT_EQ(watch->fieldItem(0)->text(SoMiraboList::FieldName), field);

    // Nodes that are gone are left out; the rest stays.
    write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { DEF closed Group { Cone { } } }\n");
    trigger(ActionId::Reload);
    EXPECT_EQ(tree()->currentItem(), row({0}));
    EXPECT_EQ(tabs->count(), 1);
    EXPECT_EQ(watch->topLevelItemCount(), 0);
    // Another file is another scene.
    ASSERT_TRUE(
        viewer->openSceneFile(write("other.ky", "#Kalmyr V1.0 ascii\nSeparator {\n" + rest)));
    EXPECT_FALSE(row({0})->isExpanded());
    EXPECT_EQ(tree()->currentItem(), row({}));
}

TEST_F(Saving, TellsThatAnotherProgramChangedTheFile)
{
    const QString path = write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { }\n");
    ASSERT_TRUE(viewer->openSceneFile(path));
    window()->findChild<QTimer*>("fileSettles")->setInterval(0); // nothing is waited for
    const auto bar = [this] { return window()->findChild<QToolBar*>("ChangedFileBar"); };
    const auto said = [&] {
        QString text;
        for (const QLabel* label : bar()->findChildren<QLabel*>())
            text += label->text();
        return text;
    };
    const auto click = [&](const QString& text) {
        for (QPushButton* button : bar()->findChildren<QPushButton*>())
            if (button->text() == text)
                return button->click();
        ADD_FAILURE() << "no button";
    };
    // Written in place: the scene stays until the user wants the other one.
    const SoNode* scene = viewer->getScene();
    write("scene.ky", "#Kalmyr V1.0 ascii\nSeparator { Cone { } }\n");
    ASSERT_TRUE(support::passUntil(bar));
    EXPECT_EQ(said(), "scene.ky was changed by another program.");
    EXPECT_EQ(viewer->getScene(), scene);
    click("Keep");
    support::flush();
    EXPECT_FALSE(bar());
    EXPECT_EQ(viewer->getScene(), scene);
    // Replaced by another file, as most editors do.
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(
        QFile::rename(write("new.ky", "#Kalmyr V1.0 ascii\nSeparator { Sphere { } }\n"), path));
    ASSERT_TRUE(support::passUntil(bar));
    click("Reload");
    support::flush();
    EXPECT_FALSE(bar());
    EXPECT_EQ(static_cast<SoGroup*>(viewer->getScene())->getChild(0)->getTypeId(),
              SoSphere::getClassTypeId());
    // A save of the tool itself is no news; a deletion afterwards is.
    addCube();
    trigger(ActionId::Save);
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(support::passUntil(bar));
    EXPECT_EQ(said(), "scene.ky was deleted by another program.");
    viewer->closeScene();
    support::flush();
    EXPECT_FALSE(bar());
}
