#include "support/ErrorGuard.h"
#include "support/TestExtension.h"

#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/extension/MrbShellImpl.h"
#include "mirabo/launch/SoMiraboImpl.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeContextMenu.h"

#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoSphere.h>

#include <QAction>
#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// The tool, started on a scene of the host with the fixture's extension.
class RunningTool : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
        m_root->addChild(new SoSphere);
        SoMiraboImpl::startNode(m_root.get(), nullptr);
    }

    void TearDown() override { SoMiraboImpl::stop(); }

    static SoMiraboMainFrame* frame() { return MrbShellImpl::getInstance()->getMainFrame(); }
    static QStringList log() { return qApp->property("log").toStringList(); }

    QTemporaryDir m_folder;
    const support::TestExtension m_extension{m_folder};
    const SoRef<SoSeparator> m_root{new SoSeparator};
};

TEST_F(RunningTool, OffersContextMenusInTheTree)
{
    TreeContextMenu& menu = frame()->findChild<SoMiraboTreeView*>()->contextMenu();
    menu.prepare(SoSeparator::getClassTypeId());
    EXPECT_TRUE(menu.entry("contextMenu"));
    menu.prepare(SoSphere::getClassTypeId());
    EXPECT_FALSE(menu.entry("contextMenu"));
    menu.prepare(SoSeparator::getClassTypeId());
    MrbPluginsManager::releaseInstance();
    menu.prepare(SoSeparator::getClassTypeId());
    EXPECT_FALSE(menu.entry("contextMenu"));
}

TEST_F(RunningTool, EndsExtensionsWhenItStopsAndStartsThemAnew)
{
    EXPECT_TRUE(log().contains("activate"));
    EXPECT_TRUE(frame()->action(mirabo::ActionId::Preferences)->isEnabled());
    SoMiraboImpl::stop();
    EXPECT_EQ(log().mid(log().indexOf("deactivate")), (QStringList{"deactivate", "~Everything"}));
    SoMiraboImpl::startNode(m_root.get(), nullptr);
    EXPECT_EQ(log().count("activate"), 2);
    EXPECT_TRUE(frame()->findChild<QWidget*>("view:Everything"));
}

TEST_F(RunningTool, EndsExtensionsBeforeTheHostsWindowTakesTheirWidgets)
{
    delete frame();
    EXPECT_TRUE(log().contains("~Everything"));
    EXPECT_FALSE(SoMiraboImpl::isRunning());
}

} // namespace
