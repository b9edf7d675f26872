#pragma once

#include "support/ErrorGuard.h"
#include "support/Passes.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <mirabo/extender/MrbFieldEditor.h>
#include <mirabo/extender/MrbServices.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QLineEdit>
#include <QMainWindow>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

/// A host whose scene is shown by the tool with the built-in configuration, field editors included.
class EditorTool : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static const QTemporaryDir store;
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, store.path());
        QDir::setCurrent(store.path());
    }
    void SetUp() override { SoQt::init(nullptr); }
    void TearDown() override
    {
        SoLibMirabo::instance()->m_mirabo_stop();
        support::flush();
        SoQt::finish();
        QSettings("Mirabo", "MiraboViewer").clear();
    }

    void start()
    {
        SoLibMirabo::instance()->m_mirabo_startNode(scene.get());
        window()->resize(1400, 950);
        QApplication::setActiveWindow(window());
        support::flush();
    }
    static QMainWindow* window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->objectName() == "SoMiraboMainFrame")
                return qobject_cast<QMainWindow*>(widget);
        return nullptr;
    }
    static QWidget* panel() { return window()->findChild<QWidget*>("fieldEditorPanel"); }
    static MrbFieldWidget* widget()
    {
        support::flush();
        return panel()->findChild<MrbFieldWidget*>();
    }
    /// A control of the shown editor.
    template <class Control>
    static Control* control(const QString& name = {})
    {
        MrbFieldWidget* shown = widget();
        return shown ? shown->findChild<Control*>(name) : nullptr;
    }
    /// Of an editor whose first control is a line of text.
    static bool isReadOnly()
    {
        const auto* line = control<QLineEdit>();
        return line && line->isReadOnly();
    }
    /// Lets the editor show a field, as a click on its row does.
    static void choose(SoField& field)
    {
        MrbServices::getInstance()->setSelectedField(&field);
        support::flush();
    }
    static QAction* action(const QString& text)
    {
        for (QAction* action : window()->findChildren<QAction*>())
            if (action->text() == text)
                return action;
        return nullptr;
    }
    static void undo() { press("&Undo"); }
    static void redo() { press("&Redo"); }
    static bool canUndo()
    {
        support::flush();
        return action("&Undo")->isEnabled();
    }
    static std::string textOf(const SoField& field)
    {
        SbString text;
        field.get(text);
        return text.getString();
    }

    const SoRef<SoSeparator> scene{new SoSeparator};

private:
    static void press(const char* text)
    {
        support::flush(); // actions are brought up to date once a pass
        ASSERT_TRUE(action(text)->isEnabled()) << text;
        action(text)->trigger();
        support::flush();
    }
};
