#pragma once

#include "mirabo/extender/MrbFieldEdit.h"
#include "mirabo/plugins/defaults/ListModel.h"
#include "mirabo/plugins/defaults/ListView.h"
#include "mirabo/plugins/defaults/ListWidget.h"
#include "support/Passes.h"
#include "support/TestServices.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/io/SoDB.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// The table of a field on the screen, with a tool that can undo.
class ListTest : public ::testing::Test {
protected:
    ListTest() { SoDB::init(); }

    /// Shows a field's table; it has the focus.
    ListWidget& show(SoField& field, SoField* other = nullptr)
    {
        m_widget.reset();
        m_edit = std::make_unique<MrbFieldEdit>(&field);
        if (other)
            m_edit->addField(other);
        m_widget.reset(static_cast<ListWidget*>(
            makeListWidget(m_edit.get(), MrbFieldWidget::Form::Full, nullptr)));
        m_widget->resize(900, 500);
        m_widget->show();
        QApplication::setActiveWindow(m_widget.get());
        EXPECT_TRUE(support::passUntilExposed(m_widget.get()));
        m_widget->setFocus();
        return *m_widget;
    }
    ListWidget& widget() { return *m_widget; }
    ListView& view() { return *m_widget->view(); }
    MrbFieldEdit& edit() { return *m_edit; }
    QModelIndex index(int row, int column) { return view().model()->index(row, column); }
    QString shown(int row, int column) { return index(row, column).data().toString(); }

    void click(int row, int column, Qt::KeyboardModifiers keys = {})
    {
        view().scrollTo(index(row, column));
        QTest::mouseClick(view().viewport(), Qt::LeftButton, keys,
                          view().visualRect(index(row, column)).center());
    }
    /// Keys, where the focus is.
    void type(const QString& text)
    {
        for (const QChar key : text)
            QTest::keyClick(QApplication::focusWidget(), key.toLatin1());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers keys = {})
    {
        QTest::keyClick(QApplication::focusWidget(), key, keys);
    }
    bool isCellOpen()
    {
        const QWidget* focus = QApplication::focusWidget();
        return focus && focus != &view() && view().isAncestorOf(focus);
    }
    /// Triggers an action and answers what it asks for.
    void answer(ListAction action, const QString& text)
    {
        widget().action(action)->trigger();
        type(text);
        press(Qt::Key_Return);
    }
    static void putOnClipboard(const QString& text) { QGuiApplication::clipboard()->setText(text); }
    static QString clipboard() { return QGuiApplication::clipboard()->text(); }
    static std::string text(const SoField& field)
    {
        SbString text;
        field.get(text);
        return text.toStdString();
    }

    support::TestServices services;

private:
    std::unique_ptr<MrbFieldEdit> m_edit;
    std::unique_ptr<ListWidget> m_widget;
};
