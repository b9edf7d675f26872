#include "mirabo/launch/CriticalError.h"

#include "mirabo/core/ErrorScope.h"
#include "mirabo/core/Messages.h"
#include "mirabo/core/Modal.h"

#include <kalmyr/base/SoErrorStack.h>

#include <QApplication>
#include <QDialog>
#include <QFontDatabase>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QTextEdit>
#include <QThread>
#include <QVBoxLayout>

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace mirabo {

namespace {

constexpr char kQuestion[] =
    "The application produced a critical error, click the ignore button to debug the "
    "application, ok to exit and help to view the callstack.";
constexpr char kNoStack[] = "------- No callstack information -------";
constexpr int kReportWidth = 500;
constexpr int kReportHeight = 800;
constexpr int kExitStatus = 1;

std::optional<ErrorScope<SoErrorStack>> s_handler;
bool s_showing = false;

[[noreturn]] void endProcess()
{
    std::fflush(nullptr);
    std::_Exit(kExitStatus);
}

/// False when it was closed because the tool ends.
bool showReport(const QString& report)
{
    auto* dialog = new QDialog;
    Modal modal(dialog);
    dialog->setObjectName("errorReport");
    dialog->setWindowTitle("Error report");
    dialog->resize(kReportWidth, kReportHeight);
    auto* text = new QTextEdit(dialog);
    text->setReadOnly(true);
    text->setAccessibleName("Call stack");
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setLineWrapMode(QTextEdit::NoWrap);
    text->setPlainText(report);
    (new QVBoxLayout(dialog))->addWidget(text);
    return modal.run().has_value();
}

void ask(const QString& message, const QString& report)
{
    if (s_showing)
        return; // printed; one question at a time
    const QScopedValueRollback<bool> showing(s_showing, true);
    Modal box(new QMessageBox(QMessageBox::Critical, "Critical error", kQuestion,
                              QMessageBox::Ok | QMessageBox::Ignore | QMessageBox::Help));
    box->setObjectName("criticalError");
    box->setInformativeText(message);
    box->setDefaultButton(QMessageBox::Ok);
    const std::optional<int> answer = box.run();
    // In all other cases the program goes on, under a debugger perhaps.
    if (answer == QMessageBox::Ok || (answer == QMessageBox::Help && showReport(report)))
        endProcess();
}

void handle(const SoError* error, void*)
{
    std::fprintf(stderr, "%s\n", error->getPrintedText().getString());
    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application)
        return;
    if (isBatch())
        endProcess();
    const QString message = QString::fromUtf8(error->getDebugString().getString());
    const QString report = criticalErrorText(*error);
    if (QThread::currentThread() == application->thread())
        ask(message, report);
    else
        // Not waited for: the GUI thread may be waiting for a lock that this one holds.
        QMetaObject::invokeMethod(
            application, [message, report] { ask(message, report); }, Qt::QueuedConnection);
}

} // namespace

QString criticalErrorText(const SoError& error)
{
    const auto* withStack = dynamic_cast<const SoErrorStack*>(&error);
    return withStack && !withStack->getStack().isEmpty()
               ? QString::fromUtf8(withStack->getStack().getString())
               : QString(kNoStack);
}

void installCriticalErrorReport()
{
    if (!s_handler)
        s_handler.emplace(&handle, nullptr);
}

void removeCriticalErrorReport()
{
    s_handler.reset();
}

} // namespace mirabo
