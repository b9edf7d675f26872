// Opens a VRML97 mesh in the inspector, from the file to the tree and the first frame.
//
//     bench_mirabo_open [TRIANGLES [FILE]]
//
// Prints one "name value unit" line per figure. Without FILE the mesh is written into the
// temporary folder first. The start of the program and of its window is a figure of its own.

#include "mirabo/launch/SoMirabo.h"
#include "mirabo/launch/SoMiraboImpl.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/qt/SoQtExaminerViewer.h>

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

double now()
{
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void print(const char* name, double value)
{
    std::printf("%s %.4g ms\n", name, value);
    std::fflush(stdout);
}

/// A wavy square of about so many triangles, without normals.
bool writeMesh(const char* path, int triangles)
{
    std::FILE* out = std::fopen(path, "w");
    if (!out)
        return false;
    const int side = static_cast<int>(std::sqrt(triangles / 2)) + 1;
    std::fputs("#VRML V2.0 utf8\nShape { appearance Appearance { material Material { } }\n"
               "geometry IndexedFaceSet { creaseAngle 1 coord Coordinate { point [\n",
               out);
    for (int i = 0; i < side * side; ++i) {
        const double x = 100.0 * (i % side) / (side - 1) - 50;
        const double z = 100.0 * (i / side) / (side - 1) - 50;
        std::fprintf(out, "%.5f %.5f %.5f,\n", x, 4 * std::sin(x * 0.21) * std::cos(z * 0.17), z);
    }
    std::fputs("] }\ncoordIndex [\n", out);
    for (int i = 0; i < (side - 1) * (side - 1); ++i) {
        const int a = i / (side - 1) * side + i % (side - 1);
        std::fprintf(out, "%d, %d, %d, -1, %d, %d, %d, -1,\n", a, a + side, a + 1, a + 1, a + side,
                     a + side + 1);
    }
    std::fputs("] } }\n", out);
    return std::fclose(out) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    const int triangles = argc > 1 ? std::max(2, std::atoi(argv[1])) : 1000000;
    const std::string file =
        argc > 2 ? argv[2] : folder.filePath(QStringLiteral("mesh.wrl")).toStdString();
    if (argc <= 2 && !writeMesh(file.c_str(), triangles)) {
        std::fprintf(stderr, "cannot write %s\n", file.c_str());
        return 1;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);

    int count = 1;
    const double begin = now();
    QApplication application(count, argv);
    SoMiraboImpl::startStandalone(count, argv);
    SoQtExaminerViewer* viewer = SoMiraboViewer::instance()->getExaminerViewer();
    const auto draw = [&] {
        QCoreApplication::processEvents();
        while (!viewer->redraw())
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    };
    draw();
    print("open.start_of_the_program", now() - begin);

    const double opening = now();
    if (!SoMiraboViewer::instance()->openSceneFile(QString::fromStdString(file)))
        return 1;
    print("open.file_and_tree", now() - opening);
    draw();
    print("open.with_first_frame", now() - opening);
    const double again = now();
    viewer->redraw();
    print("open.next_frame", now() - again);
    SoMirabo::stop();
    return 0;
}
