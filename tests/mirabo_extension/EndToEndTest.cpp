#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

constexpr int kPatienceMs = 120000;

/// The standalone inspector on a scene, with a configuration; gives its picture.
class Inspector {
public:
    explicit Inspector(const QString& configuration)
    {
        const QString file = m_folder.filePath("MrbConfiguration.xml");
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(configuration.toUtf8());
        out.close();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("KMR_MIRABO_CONFIGURATION_FILE", file);
        environment.insert("KMR_MIRABO_PLUGIN_PATH", MIRABO_LIBRARY_DIR "/test-plugins");
        environment.insert("XDG_CONFIG_HOME", m_folder.path());
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        m_process.setProcessEnvironment(environment);
    }

    QImage takePicture()
    {
        const QString picture = m_folder.filePath("window.png");
        m_process.start(MIRABO_RUNTIME_DIR "/mirabo",
                        {"--screenshot", picture, "--size", "900x600",
                         MIRABO_SOURCE_DIR "/examples/scenes/hello.ky"});
        EXPECT_TRUE(m_process.waitForFinished(kPatienceMs));
        EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(m_process.exitCode(), 0);
        m_errors = QString::fromLocal8Bit(m_process.readAllStandardError());
        return QImage(picture);
    }
    const QString& errors() const { return m_errors; }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    QString m_errors;
};

QString configuration(const QString& plugins, const QString& extensions)
{
    QString text = "<configuration><plugins>";
    for (const QString& plugin : plugins.split(' '))
        text += "<loadPlugin file=\"" + plugin + "\"/>";
    return text + "</plugins><profiles default=\"P\"><profile name=\"P\">" + extensions
           + "</profile></profiles></configuration>";
}

TEST(InspectorWithExtensions, ShowsThemAndReportsTheBrokenOnes)
{
    const QString measure = "<activeExtension plugin=\"Example_extension\" extension=\"Measure\"/>";
    Inspector with(
        configuration("TestGarbage Example_extension TestMissing TestThrowing", measure));
    const QImage shown = with.takePicture();
    ASSERT_EQ(shown.size(), QSize(900, 600));
    for (const char* broken : {"TestGarbage", "TestMissing", "TestThrowing"})
        EXPECT_EQ(with.errors().count(QString("plug-in \"%1\" is switched off").arg(broken)), 1)
            << with.errors().toStdString();
    EXPECT_FALSE(with.errors().contains("Measure")) << with.errors().toStdString();

    Inspector without(configuration("Example_extension", ""));
    const QImage plain = without.takePicture();
    EXPECT_FALSE(without.errors().contains("switched off")) << without.errors().toStdString();
    ASSERT_EQ(plain.size(), shown.size());
    EXPECT_NE(plain, shown) << "the view of the extension takes part of the window";
}

TEST(InspectorWithExtensions, RunsOnWhenOneThrowsInTheMiddleOfItsWork)
{
    // The first selection, which the picture waits for, makes it throw.
    qputenv("TEST_PLUGIN_FAIL_AT", "selectedNodeChanged");
    Inspector inspector(configuration(
        "TestEverything", "<activeExtension plugin=\"TestEverything\" extension=\"Everything\"/>"));
    EXPECT_FALSE(inspector.takePicture().isNull());
    qunsetenv("TEST_PLUGIN_FAIL_AT");
    EXPECT_TRUE(inspector.errors().contains("told to fail at selectedNodeChanged"))
        << inspector.errors().toStdString();
}

} // namespace
