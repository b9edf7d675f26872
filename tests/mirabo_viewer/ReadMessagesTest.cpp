// The list of what the last read gave, as a user opens it from the status bar.
#include "mirabo/core/ReadMessages.h"
#include "mirabo/core/InlineFetcher.h"
#include "mirabo/core/LiveInput.h"
#include "mirabo/viewer/ReadMessagesButton.h"
#include "mirabo/viewer/ReadMessagesDialog.h"
#include "StandaloneSupport.h"
#include "support/DialogAnswers.h"
#include "support/ErrorGuard.h"

#include <kalmyr/vrml/SoVRMLInline.h>

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QStatusBar>
#include <QTest>
#include <QTreeView>
#include <QUrl>

#include <thread>

namespace {

using mirabo::ReadMessage;
using mirabo::ReadMessages;
using support::DialogAnswers;

constexpr char kSeveral[] = R"(#VRML V2.0 utf8
Plumbus { }
Inline { url "broken.wrl" }
Inline { url "part.wrl" }
Shape { geometry Box { depth 3 } }
)";
constexpr char kBroken[] = "#VRML V2.0 utf8\nShape { geometry Sphere { radius x } }\n";
constexpr char kPart[] = "#VRML V2.0 utf8\n\n  Gizmo { }\n";

class ReadingWithMessages : public StandaloneTest {
protected:
    void SetUp() override
    {
        StandaloneTest::SetUp();
        write("several.wrl", kSeveral);
        write("broken.wrl", kBroken);
        write("part.wrl", kPart);
        write("good.ky", "#Kalmyr V1.0 ascii\nSeparator { Sphere { } }\n");
    }

    QString at(const QString& name) const { return m_folder.filePath(name); }
    QString write(const QString& name, const QByteArray& text) const
    {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return at(name);
    }
    mirabo::ReadMessagesButton* button() const
    {
        return window()->statusBar()->findChild<mirabo::ReadMessagesButton*>();
    }
    mirabo::ReadMessagesDialog* dialog() const
    {
        return window()->findChild<mirabo::ReadMessagesDialog*>();
    }
    QTreeView* list() const { return dialog()->findChild<QTreeView*>(); }
    QStringList row(int number) const
    {
        QStringList texts;
        const QAbstractItemModel* model = list()->model();
        for (int column = 0; column < model->columnCount(); ++column)
            texts << model->index(number, column).data().toString();
        return texts;
    }
    /// Reads the file with messages, and answers the box that tells the first error.
    QString openSeveral() { return openBad("several.wrl", true); }
    QString openBad(const QString& name, bool isReadAllTheSame)
    {
        auto warnings = support::expectErrors(); // which are still printed
        warnings.mayStayEmpty();
        QString told;
        const DialogAnswers answers({[&told](QDialog* box) {
            EXPECT_EQ(box->windowTitle(), "MiraboReadFile");
            told = static_cast<QMessageBox*>(box)->text();
            box->accept();
        }});
        EXPECT_EQ(viewer->openSceneFile(at(name)), isReadAllTheSame);
        EXPECT_EQ(answers.count(), 1);
        support::flush();
        return told;
    }
    void openList() const
    {
        QTest::mouseClick(button(), Qt::LeftButton);
        support::flush();
        ASSERT_TRUE(dialog());
        ASSERT_TRUE(dialog()->isVisible());
    }
    void press(const QString& text) const
    {
        for (QAbstractButton* candidate : dialog()->findChildren<QAbstractButton*>())
            if (candidate->text().remove('&') == text)
                return candidate->click();
        FAIL() << "no button " << text.toStdString();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ReadingWithMessages, ListsThemInTheirOrderFromAllFiles)
{
    EXPECT_TRUE(button()->isHidden());
    EXPECT_EQ(openSeveral(), at("broken.wrl") + ":2:34: error: expected a number");
    EXPECT_TRUE(button()->isVisible());
    EXPECT_EQ(button()->text().remove('&'), "4 messages");
    EXPECT_EQ(button()->accessibleName(), "Messages of several.wrl: 1 error, 3 warnings");
    openList();
    EXPECT_FALSE(dialog()->isModal());
    EXPECT_EQ(dialog()->windowTitle(), "Messages of several.wrl");
    const QAbstractItemModelTester tester(list()->model(),
                                          QAbstractItemModelTester::FailureReportingMode::Warning);
    ASSERT_EQ(list()->model()->rowCount(), 4);
    EXPECT_EQ(row(0), QStringList({"several.wrl", "2", "1",
                                   "node type 'Plumbus' is unknown; it is kept as text"}));
    EXPECT_EQ(row(1), QStringList({"broken.wrl", "2", "34", "expected a number"}));
    EXPECT_EQ(row(2).mid(0, 3), QStringList({"part.wrl", "3", "3"}));
    EXPECT_EQ(row(3).mid(0, 3), QStringList({"several.wrl", "5", "24"}));
    const auto iconOf = [this](int row) {
        return list()->model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>().cacheKey();
    };
    EXPECT_EQ(iconOf(0), iconOf(2));
    EXPECT_NE(iconOf(0), iconOf(1));
    QTest::keyClick(list(), Qt::Key_Escape);
    EXPECT_FALSE(dialog()->isVisible());
}

TEST_F(ReadingWithMessages, CopiesWhatIsSelectedOrEverything)
{
    openSeveral();
    openList();
    QClipboard* clipboard = QApplication::clipboard();
    clipboard->setText("before");
    QTest::keyClick(list(), Qt::Key_C, Qt::ControlModifier);
    list()->selectionModel()->clear();
    // Chosen from below, copied from above.
    for (const int row : {2, 1})
        list()->selectionModel()->select(list()->model()->index(row, 0),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(list(), Qt::Key_C, Qt::ControlModifier);
    const QString broken = at("broken.wrl") + ":2:34: expected a number\n";
    const QString part =
        at("part.wrl") + ":3:3: node type 'Gizmo' is unknown; it is kept as text\n";
    EXPECT_EQ(clipboard->text(), broken + part);
    press("Copy All");
    EXPECT_EQ(clipboard->text().count('\n'), 4);
    EXPECT_TRUE(clipboard->text().startsWith(at("several.wrl") + ":2:1: "));
    EXPECT_TRUE(clipboard->text().contains(broken + part));
    const ReadMessage odd(ReadMessage::Error, "two\nlines %1.ky", 3, 4, "x");
    EXPECT_EQ(odd.toText(), "two lines %1.ky:3:4: x") << "one line each";
    EXPECT_EQ(ReadMessage(ReadMessage::Error, "", 0, 0, "x").toText(), "<memory>: x");
}

TEST_F(ReadingWithMessages, AreReplacedByTheNextReadAndEmptiedByClosing)
{
    openSeveral();
    openList();
    ASSERT_TRUE(viewer->openSceneFile(at("good.ky")));
    support::flush();
    EXPECT_TRUE(button()->isHidden());
    EXPECT_TRUE(dialog()->isVisible()) << "it says that there are none";
    EXPECT_EQ(list()->model()->rowCount(), 0);
    EXPECT_EQ(dialog()->windowTitle(), "Messages of good.ky");
    // A read that fails shows its own.
    openBad("broken.wrl", false);
    EXPECT_EQ(row(0), QStringList({"broken.wrl", "2", "34", "expected a number"}));
    openBad("missing.wrl", false);
    EXPECT_EQ(list()->model()->rowCount(), 1);
    EXPECT_EQ(row(0).mid(0, 3), QStringList({"missing.wrl", "", ""}));
    EXPECT_EQ(button()->text().remove('&'), "1 message");
    EXPECT_FALSE(viewer->openDroppedFile(at("missing.too")));
    EXPECT_EQ(row(0)[0], "missing.wrl") << "a drop that cannot be opened changes nothing";
    EXPECT_TRUE(viewer->closeScene());
    EXPECT_EQ(list()->model()->rowCount(), 0);
    EXPECT_TRUE(button()->isHidden());
    // Reload and dropped files are read in the same way.
    openSeveral();
    {
        const DialogAnswers answers({[](QDialog* box) { box->accept(); }});
        auto warnings = support::expectErrors();
        viewer->reopenRecentFile(0);
        EXPECT_EQ(list()->model()->rowCount(), 4);
    }
    EXPECT_TRUE(viewer->openDroppedFile(at("good.ky")));
    EXPECT_EQ(list()->model()->rowCount(), 0);
}

TEST_F(ReadingWithMessages, TellOfInlinesThatAreFetchedLater)
{
    ASSERT_TRUE(viewer->openSceneFile(at("good.ky")));
    const SoRef<SoVRMLInline> node(new SoVRMLInline);
    SoVRMLInline::fetch(SbString("http://localhost/far.wrl"), node.get());
    const QByteArray broken = QUrl::fromLocalFile(at("broken.wrl")).toEncoded();
    SoVRMLInline::fetch(SbString(broken.constData()), node.get());
    openList();
    ASSERT_EQ(list()->model()->rowCount(), 2);
    EXPECT_EQ(row(0), QStringList({"far.wrl", "", "", "not loaded; its inline is left empty"}));
    EXPECT_EQ(row(1), QStringList({"broken.wrl", "2", "34", "expected a number"}));
    // From another thread of an extension: in the next pass.
    std::thread([&node] {
        SoVRMLInline::fetch(SbString("http://localhost/farther.wrl"), node.get());
    }).join();
    support::flush();
    ASSERT_EQ(list()->model()->rowCount(), 3);
    EXPECT_EQ(row(2)[0], "farther.wrl");
    // While a file is read they stand where they came in.
    write("links.wrl", "#VRML V2.0 utf8\nFoo { }\nInline { url \"" + broken + "\" }\nBar { }\n");
    EXPECT_TRUE(openBad("links.wrl", true).contains("broken.wrl:2:34: error: "));
    ASSERT_EQ(list()->model()->rowCount(), 3);
    EXPECT_EQ(row(1)[0], "broken.wrl");
    EXPECT_EQ(row(2).mid(0, 2), QStringList({"links.wrl", "4"}));
}

TEST_F(ReadingWithMessages, KeepErrorsBehindTooManyWarnings)
{
    constexpr int kTooMany = ReadMessages::kMaxKept + 5;
    ReadMessages messages(at("many.wrl"));
    for (int i = 1; i <= kTooMany; ++i)
        messages.add({ReadMessage::Warning, "many.wrl", i, 1, "left out"});
    messages.add({ReadMessage::Error, "many.wrl", kTooMany, 7, "expected a node"});
    EXPECT_EQ(messages.kept().size(), ReadMessages::kMaxKept + 1);
    EXPECT_EQ(messages.count(), kTooMany + 1);
    ASSERT_TRUE(messages.first(ReadMessage::Error));
    EXPECT_EQ(messages.first(ReadMessage::Error)->column, 7);
    ReadMessages sum = messages;
    sum.add(messages);
    EXPECT_EQ(sum.count(), 2 * messages.count());
    EXPECT_EQ(sum.numLeftOut(), 2 * kTooMany - ReadMessages::kMaxKept);

    viewer->addReadMessages(messages);
    EXPECT_EQ(button()->text().remove('&'), "10006 messages");
    openList();
    EXPECT_EQ(list()->model()->rowCount(), ReadMessages::kMaxKept + 1);
    bool isTold = false;
    for (const auto* label : dialog()->findChildren<QLabel*>())
        isTold |= label->text() == "1 error, 10005 warnings; 5 of them are not listed";
    EXPECT_TRUE(isTold);
}

// A message that needs several lines is shown whole.
TEST_F(ReadingWithMessages, WrapLongTexts)
{
    ReadMessages messages("long.wrl");
    messages.add({ReadMessage::Warning, "long.wrl", 1, 1, "short"});
    const std::string text = "a rather long sentence of many words ";
    messages.add({ReadMessage::Warning, "long.wrl", 2, 1, SbString(text + text + text + text)});
    viewer->addReadMessages(messages);
    openList();
    const auto height = [this](int row) {
        return list()->visualRect(list()->model()->index(row, 3)).height();
    };
    dialog()->resize(dialog()->minimumWidth(), dialog()->height());
    support::flush();
    const int narrow = height(1);
    EXPECT_GE(narrow, 3 * height(0));
    dialog()->resize(3 * dialog()->minimumWidth(), dialog()->height());
    support::flush();
    EXPECT_LT(height(1), narrow);
}

// A host deletes windows whenever it likes.
TEST_F(ReadingWithMessages, GoWithTheWindow)
{
    openSeveral();
    openList();
    const QPointer<QWidget> shown(dialog());
    delete window();
    EXPECT_FALSE(shown);
    support::flush();
}
