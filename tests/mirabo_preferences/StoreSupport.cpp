#include "StoreSupport.h"

#include "mirabo/preferences/Settings.h"

using namespace mirabo;

StoreTest::StoreTest()
{
    releaseSettings();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
}

StoreTest::~StoreTest()
{
    setSettingsListener({});
    releaseSettings();
}

void StoreTest::put(const QByteArray& bytes) const
{
    releaseSettings();
    QDir().mkpath(folder());
    QFile file(place());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray StoreTest::bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString StoreTest::valueOnDisk(const QString& key) const
{
    // Under another name: stores of one name share what they know.
    const QString copy = m_folder.path() + "/copy.conf";
    QFile::remove(copy);
    QFile::copy(place(), copy);
    return QSettings(copy, QSettings::IniFormat).value(key).toString();
}

QStringList StoreTest::kept() const
{
    return QDir(folder()).entryList({"*.kept-*"}, QDir::AllEntries | QDir::NoDotAndDotDot);
}

void applyStyles(const QString& group, int grey)
{
    StyleTable styles = group == kTreeGroup ? defaultTreeStyles() : defaultFieldStyles();
    for (auto& [name, style] : styles.entries())
        style.color = QColor(grey, grey, grey);
    writeStyles(group, styles);
}
