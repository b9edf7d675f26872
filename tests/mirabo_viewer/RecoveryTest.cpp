// Unsaved work outlives the program.
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/viewer/RecoveryCopy.h"
#include "mirabo/viewer/RecoveryPlace.h"
#include "StandaloneSupport.h"
#include "support/DialogAnswers.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAbstractButton>
#include <QFile>
#include <QMessageBox>
#include <QTimer>

#include <memory>

namespace {

using mirabo::RecoveryCopy;
using mirabo::RecoveryPlace;

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

SoRef<SoGroup> readScene(const QString& path)
{
    SoInput in;
    return in.openFile(path.toUtf8().constData()) ? SoRef<SoGroup>(SoDB::readAll(&in)) : nullptr;
}

class Recovery : public testing::Test {
protected:
    Recovery()
    {
        SoDB::init();
        for (int i = 0; i < 20'000; ++i)
            scene->addChild(new SoTranslation);
        copy->findChild<QTimer*>("recoveryIdle")->setInterval(0);
        copy->findChild<QTimer*>("recoverySlices")->setInterval(0);
    }
    int numFiles(const QString& filter) const
    {
        return static_cast<int>(QDir(folder.path()).entryList({filter}, QDir::Files).size());
    }

    QTemporaryDir folder;
    SoRef<SoSeparator> scene{new SoSeparator};
    bool unsaved = true;
    std::unique_ptr<RecoveryCopy> copy = std::make_unique<RecoveryCopy>(
        RecoveryCopy::Document{[this] { return mirabo::SceneWriter::Content{scene}; },
                               [] { return "/tmp/a.ky"; }, [this] { return unsaved; }},
        folder.path());
};

TEST_F(Recovery, KeepsACopyWhileTheWorkIsUnsaved)
{
    copy->documentChanged();
    // Edits come in between, again and again; none is lost.
    for (int edit = 0; edit < 5; ++edit) {
        support::flush();
        scene->removeChild(edit);
        scene->insertChild(new SoCone, edit);
        copy->documentChanged();
    }
    ASSERT_TRUE(support::passUntil([this] { return copy->isUpToDate(); }));
    ASSERT_EQ(numFiles("*.ky"), 1);
    EXPECT_FALSE(RecoveryPlace::takeAbandoned(folder.path())) << "we still run";
    const QStringList found = QDir(folder.path()).entryList({"*.ky"});
    const SoRef<SoGroup> read = readScene(folder.filePath(found.value(0)));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->getNumChildren(), 20'000);
    EXPECT_EQ(read->getChild(4)->getTypeId(), SoCone::getClassTypeId());

    unsaved = false;
    copy->documentChanged();
    EXPECT_EQ(numFiles("*.ky") + numFiles("*.ini"), 0) << "saved";
    unsaved = true;
    copy->documentChanged();
    ASSERT_TRUE(support::passUntil([this] { return copy->isUpToDate(); }));
    copy.reset();
    EXPECT_EQ(numFiles("*"), 0) << "a clean end leaves nothing";
}

TEST_F(Recovery, TellsOnceThatItCannotWrite)
{
    int numFailed = 0;
    write(folder.filePath("file"), "no folder");
    RecoveryCopy hopeless({[this] { return mirabo::SceneWriter::Content{scene}; },
                           [] { return QString(); }, [this] { return unsaved; }},
                          folder.filePath("file"));
    hopeless.findChild<QTimer*>("recoveryIdle")->setInterval(0);
    QObject::connect(&hopeless, &RecoveryCopy::failed, [&] { ++numFailed; });
    hopeless.documentChanged();
    ASSERT_TRUE(support::passUntil([&] { return numFailed > 0; }));
    hopeless.documentChanged();
    support::flush();
    EXPECT_EQ(numFailed, 1);
}

/// A program that begins where another has left a copy behind.
class AfterACrash : public StandaloneTest {
protected:
    void SetUp() override
    {
        file = m_folder.filePath("scene.ky");
        write(file, "#Kalmyr V1.0 ascii\nSeparator { Cube { } }\n");
        SoDB::init();
        const auto place = RecoveryPlace::create(RecoveryPlace::folder());
        ASSERT_TRUE(place);
        write(place->scenePath(), "#Kalmyr V1.0 ascii\nSeparator { Cube { } Cone { } }\n");
        place->setDescription(file);
    }
    void start(const char* button)
    {
        support::DialogAnswers answers({[&](QDialog* box) {
            text = static_cast<QMessageBox*>(box)->text();
            for (QAbstractButton* one : static_cast<QMessageBox*>(box)->buttons())
                if (one->text() == button)
                    one->click();
        }});
        StandaloneTest::SetUp();
        ASSERT_TRUE(support::passUntil([&] { return answers.count() > 0 && !text.isEmpty(); }));
        support::flush();
    }
    static bool isOffered()
    {
        return RecoveryPlace::takeAbandoned(RecoveryPlace::folder()) != nullptr;
    }
    static SoCommandManager* hub() { return MrbServicesImpl::getInstance()->getCommandManager(); }

    QString file;
    QString text;

private:
    QTemporaryDir m_folder;
};

TEST_F(AfterACrash, RecoversTheDocumentWithItsFile)
{
    start("&Recover");
    EXPECT_TRUE(text.contains("unsaved changes to '" + file)) << text.toStdString();
    const auto* top = static_cast<SoGroup*>(viewer->getScene());
    EXPECT_EQ(viewer->getCurrentFile(), file);
    ASSERT_EQ(top->getNumChildren(), 2);
    EXPECT_FALSE(isOffered()) << "this run has it now";
    // Still unsaved: closing asks, and saving goes to the document's file.
    support::DialogAnswers answers({[](QDialog* box) { box->reject(); }});
    EXPECT_TRUE(hub()->isModified());
    hub()->saveFile();
    EXPECT_EQ(answers.count(), 0);
    const SoRef<SoGroup> saved = readScene(file);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->getNumChildren(), 2);
    hub()->closeFile();
    EXPECT_EQ(answers.count(), 0) << "saved";
    EXPECT_FALSE(isOffered());
}

TEST_F(AfterACrash, KeepsEditsThatCannotBeUndoneAnyMore)
{
    start("&Discard");
    window()->findChild<QTimer*>("recoveryIdle")->setInterval(0);
    auto* copy = window()->findChild<RecoveryCopy*>();
    const auto shownScene = [this] { return static_cast<SoGroup*>(viewer->getScene()); };
    ASSERT_TRUE(tree()->revealNode(shownScene()->getChild(0)));
    hub()->treeDeleteNode();
    ASSERT_TRUE(support::passUntil([&] { return copy->isUpToDate(); }));
    shownScene()->addChild(new SoCone); // by somebody else
    support::flush();
    EXPECT_FALSE(hub()->isModified());
    ASSERT_TRUE(support::passUntil([&] { return copy->isUpToDate(); }));
    const QDir folder(RecoveryPlace::folder());
    EXPECT_EQ(folder.entryList({"*.ky"}).size(), 1);
    hub()->closeFile();
    support::flush();
    EXPECT_EQ(folder.entryList({"*.ky"}).size(), 0) << "given up";
}

TEST_F(AfterACrash, LeavesWhatIsPutOffAndRemovesWhatIsDiscarded)
{
    start("&Later");
    EXPECT_EQ(viewer->getCurrentFile(), "");
    SoMiraboImpl::stop();
    text.clear();
    start("&Discard");
    EXPECT_FALSE(isOffered());
}

} // namespace
