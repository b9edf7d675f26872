#include "StoreSupport.h"

#include "mirabo/core/RecentFiles.h"
#include "mirabo/preferences/SettingKeys.h"
#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/BookmarkStore.h"
#include "support/Passes.h"

#include <QCoreApplication>
#include <QProcess>

#include <iostream>
#include <map>
#include <string>

using namespace mirabo;

namespace {

constexpr char kFolderVariable[] = "MIRABO_TEST_STORE";
constexpr char kAnswer[] = "answer: ";
constexpr char kSeparator = '\t';

QString readAny(const QString& key)
{
    const SettingKey* declared = findSettingKey(key);
    if (!declared || !isSettingStored(key))
        return "none";
    switch (declared->kind) {
    case SettingKey::Flag:
        return readBool(key) ? "true" : "false";
    case SettingKey::Number:
        return QString::number(readInt(key));
    case SettingKey::Text:
        return readText(key);
    case SettingKey::Texts:
        return readTexts(key).join('|');
    }
    return {};
}

/// What a tool does with its store, by name.
class Commands {
public:
    QString run(const QStringList& command)
    {
        const QString value = command.value(2);
        const std::map<QString, std::function<QString()>> all = {
            {"read", [&] { return readAny(command.value(1)); }},
            {"write",
             [&] {
                 writeSetting(command.value(1), value);
                 return QString();
             }},
            {"sync",
             [] {
                 syncSettings();
                 return QString();
             }},
            {"applyStyles",
             [&] {
                 applyStyles(command.value(1), value.toInt());
                 return QString();
             }},
            {"applyStylesOften",
             [&] {
                 for (int i = 0; i < value.toInt(); ++i)
                     applyStyles(command.value(1), 100 + i);
                 return QString();
             }},
            {"addRecentFile",
             [&] {
                 m_recent.add(command.value(1));
                 return QString();
             }},
            {"readRecentFiles",
             [&] {
                 m_recent.read();
                 return m_recent.paths().join('|');
             }},
            {"writeRecentFiles",
             [&] {
                 m_recent.write();
                 return m_recent.paths().join('|');
             }},
            {"readBookmarks",
             [&] {
                 m_marks = readBookmarks("scene");
                 return QString();
             }},
            {"writeBookmarks",
             [&] {
                 writeBookmarks("scene", m_marks, m_marks);
                 return QString();
             }},
        };
        const auto at = all.find(command.value(0));
        return at == all.end() ? QString("unknown") : at->second();
    }

private:
    RecentFiles m_recent;
    std::vector<BookmarkPath> m_marks;
};

} // namespace

/// The other tool's end: run by OtherTool only.
TEST(OtherTool, DISABLED_Serves)
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       qEnvironmentVariable(kFolderVariable));
    Commands commands;
    for (std::string line; std::getline(std::cin, line);) {
        const QString answer = commands.run(QString::fromStdString(line).split(kSeparator));
        std::cout << kAnswer << answer.toStdString() << std::endl;
    }
    releaseSettings();
}

OtherTool::OtherTool(const QString& folder) : m_process(new QProcess)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(kFolderVariable, folder);
    m_process->setProcessEnvironment(environment);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->start(
        QCoreApplication::applicationFilePath(),
        {"--gtest_filter=OtherTool.DISABLED_Serves", "--gtest_also_run_disabled_tests"});
}

OtherTool::~OtherTool()
{
    m_process->closeWriteChannel();
    EXPECT_TRUE(m_process->waitForFinished(support::kHangMs));
    EXPECT_EQ(m_process->exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_process->exitCode(), 0);
}

QString OtherTool::ask(const QStringList& command)
{
    begin(command);
    return answer();
}

void OtherTool::begin(const QStringList& command)
{
    m_process->write(command.join(kSeparator).toUtf8() + '\n');
    EXPECT_TRUE(m_process->bytesToWrite() == 0 || m_process->waitForBytesWritten(support::kHangMs));
}

QString OtherTool::answer()
{
    for (;;) {
        while (m_process->canReadLine()) {
            const QString line = QString::fromUtf8(m_process->readLine()).chopped(1);
            if (line.startsWith(kAnswer))
                return line.mid(static_cast<int>(sizeof(kAnswer)) - 1);
        }
        if (!m_process->waitForReadyRead(support::kHangMs)) {
            ADD_FAILURE() << "the other tool says nothing";
            return {};
        }
    }
}
