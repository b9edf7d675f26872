// The parts of the viewer window by themselves: document, outline, settings of the window.
#include "mirabo/viewer/Document.h"
#include "mirabo/viewer/SceneHighlighter.h"
#include "mirabo/viewer/ViewerDocks.h"
#include "mirabo/viewer/WindowSettings.h"
#include "support/DialogAnswers.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QDockWidget>
#include <QFile>
#include <QMainWindow>
#include <QMessageBox>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

SoRef<SoPath> pathOf(std::initializer_list<SoNode*> nodes, std::initializer_list<int> indices)
{
    SoRef<SoPath> path(new SoPath(*nodes.begin()));
    auto index = indices.begin();
    for (auto node = nodes.begin() + 1; node != nodes.end(); ++node)
        path->append(*node, *index++);
    return path;
}

TEST(SceneHighlighter, SelectsTheOccurrenceAndTellsOnlyWhatOthersSelect)
{
    SoRef<SoSelection> selection;
    int numPicked = 0;
    {
        mirabo::SceneHighlighter highlighter([&](const SoPath*) { ++numPicked; });
        selection = SoRef<SoSelection>(highlighter.getSelection());
        const SoRef<SoSeparator> root(new SoSeparator);
        auto* cube = new SoCube;
        root->addChild(cube);
        root->addChild(cube);
        highlighter.setScene(root.get());
        const SoRef<SoPath> second = pathOf({root.get(), cube}, {1});
        highlighter.highlight(second.get());
        ASSERT_EQ(selection->getNumSelected(), 1);
        EXPECT_EQ(selection->getPath(0)->getIndex(2), 1);
        EXPECT_EQ(numPicked, 0);

        const SoRef<SoPath> foreign = pathOf({cube}, {});
        highlighter.highlight(foreign.get());
        EXPECT_EQ(selection->getNumSelected(), 0) << "an occurrence that is not in the scene";
        const SoRef<SoPath> inside = pathOf({selection.get(), root.get()}, {0});
        selection->select(inside.get());
        EXPECT_EQ(numPicked, 1);

        highlighter.setOn(false);
        highlighter.highlight(second.get());
        EXPECT_EQ(selection->getNumSelected(), 0) << "switched off";
        highlighter.setOn(true);
        highlighter.highlight(second.get());
        EXPECT_EQ(selection->getNumSelected(), 1);
    }
    EXPECT_EQ(selection->getNumChildren(), 0) << "the selection node may live on, the scene not";
    EXPECT_EQ(selection->getNumSelected(), 0);
}

class WithSettings : public testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        QSettings::setDefaultFormat(QSettings::IniFormat);
        for (const auto format : {QSettings::NativeFormat, QSettings::IniFormat})
            QSettings::setPath(format, QSettings::UserScope, m_folder.path());
    }
    QString write(const QString& name, const QByteArray& text) const
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }
    QTemporaryDir m_folder;
};

TEST_F(WithSettings, GiveTheWindowItsPlaceAndDocksBack)
{
    {
        QMainWindow first;
        mirabo::readWindowSettings(first);
        EXPECT_TRUE(first.windowState() & Qt::WindowMaximized) << "nothing is stored yet";
    }
    {
        QMainWindow window;
        const mirabo::ViewerDocks docks(&window);
        window.setGeometry(30, 40, 700, 500);
        window.addDockWidget(Qt::RightDockWidgetArea, docks.watch);
        docks.overview->hide();
        mirabo::writeWindowSettings(window);
    }
    QMainWindow again;
    const mirabo::ViewerDocks docks(&again);
    mirabo::readWindowSettings(again);
    EXPECT_FALSE(again.windowState() & Qt::WindowMaximized);
    EXPECT_EQ(again.geometry(), QRect(30, 40, 700, 500));
    EXPECT_EQ(again.dockWidgetArea(docks.watch), Qt::RightDockWidgetArea);
    EXPECT_TRUE(docks.overview->isHidden());
}

class DocumentTest : public WithSettings {
protected:
    struct Shown {
        int numNodes;
        bool isReload;
        QString file;
    };
    std::unique_ptr<QMainWindow> window = std::make_unique<QMainWindow>();
    bool mayReplace = true;
    std::function<void()> whenAsked;
    std::vector<Shown> shown;
    QStringList recent;
    mirabo::ReadMessages messages;
    mirabo::Document document{
        {[this] {
             if (whenAsked)
                 whenAsked();
             return mayReplace;
         },
         [this](SoNode* root, bool isReload) {
             shown.push_back({root->getChildren()->getLength(), isReload, document.getFile()});
         },
         [] {}, [this](const mirabo::ReadMessages& told) { messages = told; },
         [this](const QStringList& paths) { recent = paths; }}};

    void SetUp() override
    {
        WithSettings::SetUp();
        document.setWindow(window.get());
    }
};

TEST_F(DocumentTest, TakesTheFileOnlyWhenItCouldBeRead)
{
    const QString good = write("good.ky", "#Kalmyr V1.0 ascii\nCube { } Cube { }\n");
    const QString bad =
        write("bad.ky", "#Kalmyr V1.0 ascii\nSeparator {\n  Cube { width wide }\n}\n");
    ASSERT_TRUE(document.open(good));
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].numNodes, 2);
    EXPECT_FALSE(shown[0].isReload);
    EXPECT_EQ(shown[0].file, good) << "known before the scene is shown";
    EXPECT_EQ(window->windowTitle(), "Mirabo -- " + good);
    EXPECT_EQ(recent, QStringList{good});

    QString text;
    support::DialogAnswers answers({[&](QDialog* box) {
        text = static_cast<QMessageBox*>(box)->text();
        box->accept();
    }});
    EXPECT_FALSE(document.open(bad));
    EXPECT_EQ(answers.count(), 1);
    EXPECT_TRUE(text.startsWith(bad + ":3:")) << text.toStdString();
    EXPECT_EQ(messages.count(mirabo::ReadMessage::Error), 1);
    EXPECT_EQ(document.getFile(), good) << "the present scene stays";
    EXPECT_EQ(shown.size(), 1u);

    document.reopen(0);
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_TRUE(shown[1].isReload);

    mayReplace = false;
    document.reopen(0);
    EXPECT_FALSE(document.close());
    EXPECT_EQ(shown.size(), 2u);
    EXPECT_EQ(document.getFile(), good);
}

TEST_F(DocumentTest, EndsWithItsWindow)
{
    const QString good = write("good.ky", "#Kalmyr V1.0 ascii\nCube { }\n");
    document.addRecentFile(good);
    whenAsked = [this] { window.reset(); };
    document.reopen(0);
    EXPECT_FALSE(document.openDropped(good));
    EXPECT_FALSE(document.close());
    EXPECT_TRUE(shown.empty());
}

} // namespace
