#pragma once

#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/launch/SoMiraboImpl.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/viewer/SoMiraboViewer.h"
#include "support/Passes.h"

#include <QDockWidget>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// The whole window of the standalone program, shown, with preferences of its own.
class StandaloneTest : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setDefaultFormat(QSettings::IniFormat);
        for (const auto format : {QSettings::NativeFormat, QSettings::IniFormat})
            QSettings::setPath(format, QSettings::UserScope, m_settings.path());
        SoMiraboImpl::startStandalone(m_count, m_arguments);
        viewer = SoMiraboViewer::instance();
        window()->show(); // the tree makes a row current when it gets the keyboard
        support::flush();
    }
    void TearDown() override { SoMiraboImpl::stop(); }

    SoMiraboMainFrame* window() const
    {
        return static_cast<SoMiraboMainFrame*>(viewer->getTreeDock()->window());
    }
    SoMiraboTreeView* tree() const { return viewer->getTreeDock()->findChild<SoMiraboTreeView*>(); }

    SoMiraboViewer* viewer = nullptr;

private:
    QTemporaryDir m_settings;
    int m_count = 1;
    char m_name[7] = "mirabo";
    char* m_arguments[2] = {m_name, nullptr};
};
