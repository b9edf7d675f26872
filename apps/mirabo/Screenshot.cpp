#include "Screenshot.h"

#include "Options.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QPixmap>
#include <QWidget>

#include <cstdio>

namespace {

constexpr int kSizeWithoutChoice[] = {1440, 900};
constexpr int kSettleMs = 400; ///< layouts, sensors and the first frame
constexpr int kPatienceMs = 60000;

void settle(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

bool ask(QObject* automation, const char* question)
{
    bool answer = false;
    QMetaObject::invokeMethod(automation, question, Q_RETURN_ARG(bool, answer));
    return answer;
}

bool waitUntilDrawn(QObject* automation)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kPatienceMs) {
        settle(20);
        if (ask(automation, "drawScene"))
            return true;
    }
    return false;
}

} // namespace

int takeScreenshot(QWidget& window, const Options& options)
{
    if (options.width == 0) {
        window.setWindowState(Qt::WindowNoState);
        window.resize(kSizeWithoutChoice[0], kSizeWithoutChoice[1]);
    }
    window.show();
    auto* automation = window.findChild<QObject*>("automation");
    QString file;
    QMetaObject::invokeMethod(automation, "sceneFile", Q_RETURN_ARG(QString, file));
    if (!options.file.empty() && file.isEmpty())
        return 1; // the tool has said why
    settle(kSettleMs);
    ask(automation, "selectFirstShape");
    settle(kSettleMs);
    if (!waitUntilDrawn(automation))
        std::fputs("mirabo: warning: the scene was not drawn\n", stderr);
    if (window.grab().save(QString::fromStdString(options.screenshot)))
        return 0;
    std::fprintf(stderr, "mirabo: error: cannot write %s\n", options.screenshot.c_str());
    return 1;
}
