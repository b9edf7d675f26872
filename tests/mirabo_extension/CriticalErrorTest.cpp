#include "support/ErrorGuard.h"

#include "mirabo/launch/CriticalError.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoErrorStack.h>
#include <kalmyr/base/SoMemoryError.h>
#include <kalmyr/base/SoPreferences.h>

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>

#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

// Not in an unnamed namespace, for a readable name in the report.
[[gnu::noinline]] void breakAnInvariant()
{
    SoErrorStack::post("two and two make %d", 5);
    asm volatile(""); // not the last call: an optimised build keeps this function on the stack
}

namespace {

constexpr int kRetryMs = 5;

/// Answers the question as a user would, and prints what was seen for the parent process.
void answer(QMessageBox::StandardButton button)
{
    QTimer::singleShot(kRetryMs, qApp, [button] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) {
            answer(button);
            return;
        }
        if (box->parent())
            std::_Exit(70);
        std::fprintf(stderr, "[box %s|%s|%s|%s]\n", qPrintable(box->windowTitle()),
                     qPrintable(box->text()), qPrintable(box->informativeText()),
                     qPrintable(box->defaultButton()->text()));
        if (QAbstractButton* clicked = box->button(button))
            clicked->click();
        else
            box->done(0);
    });
}

/// Waits for the report, however long a busy machine needs to read its symbols.
void closeReport()
{
    QTimer::singleShot(kRetryMs, qApp, [] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        const auto* text = dialog ? dialog->findChild<QTextEdit*>() : nullptr;
        if (!text) {
            closeReport();
            return;
        }
        if (dialog->parent())
            std::_Exit(71);
        std::fprintf(stderr, "[report %s|%dx%d|%s|%s]\n", qPrintable(dialog->windowTitle()),
                     dialog->width(), dialog->height(), text->isReadOnly() ? "read only" : "open",
                     qPrintable(text->toPlainText()));
        dialog->close();
    });
}

void start(bool recordStack)
{
    SoPreferences::setBool("KMR_DEBUG_STACKERROR", recordStack);
    mirabo::installCriticalErrorReport();
}

[[noreturn]] void goOn()
{
    std::fprintf(stderr, "[went on]\n");
    std::_Exit(0);
}

class CriticalError : public ::testing::Test {
protected:
    // The child is this program anew, with an application object of its own.
    void SetUp() override { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(CriticalError, OkEndsTheProcess)
{
    EXPECT_EXIT(
        {
            start(true);
            answer(QMessageBox::Ok);
            breakAnInvariant();
            goOn();
        },
        ::testing::ExitedWithCode(1),
        "\\[box Critical error\\|The application produced a critical error, click the ignore "
        "button to debug the application, ok to exit and help to view the callstack\\.\\|two and "
        "two make 5\\|.*OK\\]");
}

TEST_F(CriticalError, IgnoreAndAClosedBoxGoOn)
{
    const auto play = [](QMessageBox::StandardButton button) {
        start(true);
        answer(button);
        breakAnInvariant();
        goOn();
    };
    EXPECT_EXIT(play(QMessageBox::Ignore), ::testing::ExitedWithCode(0), "went on");
    EXPECT_EXIT(play(QMessageBox::NoButton), ::testing::ExitedWithCode(0), "went on");
}

TEST_F(CriticalError, HelpShowsTheCallsAndEndsTheProcess)
{
    const auto play = [](bool recordStack) {
        start(recordStack);
        answer(QMessageBox::Help);
        closeReport();
        breakAnInvariant();
        goOn();
    };
    EXPECT_EXIT(play(true), ::testing::ExitedWithCode(1),
                "\\[report Error report\\|500x800\\|read only\\|#0 breakAnInvariant\\(\\) "
                "\\([^\n]*CriticalErrorTest.cpp:[0-9]+\\)\n#1 ");
    EXPECT_EXIT(play(false), ::testing::ExitedWithCode(1),
                "read only\\|------- No callstack information -------\\]");
}

TEST_F(CriticalError, OtherErrorsDoNotReachIt)
{
    EXPECT_EXIT(
        {
            start(true);
            QTimer::singleShot(0, qApp, [] { std::_Exit(72); }); // only a box would get there
            SoError::post("a failed operation");
            SoDebugError::post("test", "a wrong call");
            SoDebugError::postWarning("test", "a wrong call");
            goOn();
        },
        ::testing::ExitedWithCode(0), "went on");
}

TEST_F(CriticalError, AnUnattendedRunEndsWithTheReportPrinted)
{
    EXPECT_EXIT(
        {
            start(true);
            qApp->setProperty("miraboBatch", true);
            breakAnInvariant();
            goOn();
        },
        ::testing::ExitedWithCode(1), "two and two make 5\n#0 breakAnInvariant");
}

TEST_F(CriticalError, OtherThreadsDoNotWait)
{
    EXPECT_EXIT(
        {
            start(true);
            std::thread(breakAnInvariant).join();
            std::fprintf(stderr, "[thread ended]\n");
            answer(QMessageBox::Ok);
            QApplication::exec();
            goOn();
        },
        ::testing::ExitedWithCode(1), "thread ended\\](.|\n)*\\[box Critical error");
}

TEST_F(CriticalError, GivesTheErrorsBack)
{
    SoErrorCB* const before = SoErrorStack::getHandlerCallback();
    mirabo::installCriticalErrorReport();
    mirabo::installCriticalErrorReport();
    EXPECT_NE(SoErrorStack::getHandlerCallback(), before);
    mirabo::removeCriticalErrorReport();
    EXPECT_EQ(SoErrorStack::getHandlerCallback(), before);
    auto errors = support::expectErrors();
    SoErrorStack::post("to the guard of this test");
    EXPECT_EQ(errors.count(), 1u);
}

} // namespace
