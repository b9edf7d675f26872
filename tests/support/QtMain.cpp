#include "support/ErrorGuard.h"

#include <QApplication>
#include <QByteArray>
#include <QStandardPaths>

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

namespace {

bool isNoise(const QByteArray& text)
{
    // What Qt says about a desktop that a test machine does not have.
    return text.startsWith("This plugin does not support")
           || text.startsWith("QStandardPaths: XDG_RUNTIME_DIR not set")
           // No window manager gives the focus to windows that are on the screen already.
           || (text.startsWith("QXcbConnection: XCB error: 8 (BadMatch)")
               && text.contains("(SetInputFocus)"));
}

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    const QByteArray text = message.toLocal8Bit();
    std::fprintf(stderr, "%s\n", text.constData());
    if (type == QtFatalMsg)
        std::abort();
    if ((type == QtWarningMsg || type == QtCriticalMsg) && !isNoise(text))
        support::report("Qt: " + text.toStdString());
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    support::installErrorGuard();
    qInstallMessageHandler(handleMessage);
    QStandardPaths::setTestModeEnabled(true);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
