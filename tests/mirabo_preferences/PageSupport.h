#pragma once

#include "mirabo/preferences/Settings.h"
#include "support/Passes.h"

#include <QColorDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <QWidget>

#include <stdexcept>

#include <gtest/gtest.h>

/// Pages of the preferences with a store of their own, empty at first.
class PageTest : public testing::Test {
protected:
    PageTest()
    {
        mirabo::releaseSettings();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    }
    ~PageTest() override { mirabo::releaseSettings(); }

    template <class Control>
    static Control& control(const QWidget& page, const char* name)
    {
        auto* found = page.findChild<Control*>(name);
        if (!found)
            throw std::runtime_error(name);
        return *found;
    }
    static QColorDialog* colorDialog(const QWidget& page)
    {
        return page.findChild<QColorDialog*>("editor_getcolor_dlg");
    }
    /// Chooses a colour in the dialog that is open.
    static void chooseColor(const QWidget& page, const QColor& color)
    {
        QColorDialog* dialog = colorDialog(page);
        ASSERT_NE(dialog, nullptr);
        dialog->setCurrentColor(color);
        dialog->accept();
        support::flush();
        EXPECT_EQ(colorDialog(page), nullptr);
    }
    static QVariant stored(const char* key) { return mirabo::settings().value(key); }

private:
    QTemporaryDir m_folder;
};
