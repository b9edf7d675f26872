#pragma once

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

namespace support {

/// While it lives, tools that start have the extension "Everything" of the plug-in for tests. What
/// it does goes to the property "log" of the application.
class TestExtension {
public:
    /// `folder`: where the configuration is written.
    explicit TestExtension(const QTemporaryDir& folder)
    {
        qApp->setProperty("log", QStringList());
        qApp->setProperty("failAt", QString());
        const QString path = folder.filePath("MrbConfiguration.xml");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no configuration can be written");
        file.write("<configuration><plugins><loadPlugin file=\"TestEverything\"/></plugins>"
                   "<profiles default=\"P\"><profile name=\"P\"><activeExtension "
                   "plugin=\"TestEverything\" extension=\"Everything\"/></profile></profiles>"
                   "</configuration>");
        qputenv("KMR_MIRABO_CONFIGURATION_FILE", path.toUtf8());
        qputenv("KMR_MIRABO_PLUGIN_PATH", MIRABO_LIBRARY_DIR "/test-plugins");
    }
    ~TestExtension()
    {
        qunsetenv("KMR_MIRABO_CONFIGURATION_FILE");
        qunsetenv("KMR_MIRABO_PLUGIN_PATH");
    }
    TestExtension(const TestExtension&) = delete;
    TestExtension& operator=(const TestExtension&) = delete;
};

} // namespace support
