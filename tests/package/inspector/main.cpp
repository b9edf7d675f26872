// A host that links the installed inspector and opens it on its graph.

#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <mirabo/launch/SoMirabo.h>

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    SoDB::init();
    SoSeparator* root = new SoSeparator;
    root->ref();
    root->addChild(new SoSeparator);

    SoMirabo::start(root);
    const bool ran = SoMirabo::isRunning();
    QApplication::processEvents();
    SoMirabo::stop();
    const bool stopped = !SoMirabo::isRunning();
    root->unref();
    std::printf("consumer: ran %d, stopped %d\n", ran, stopped);
    return ran && stopped ? 0 : 1;
}
