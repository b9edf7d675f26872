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

QMap<QString, QString> StoreTest::valuesOnDisk() const
{
    // Under a name of its own: stores of one name share what they know.
    static int number = 0;
    const QString copy = m_folder.path() + "/copy" + QString::number(++number);
    QFile::copy(place(), copy);
    const QSettings store(copy, QSettings::IniFormat);
    QMap<QString, QString> values;
    for (const QString& key : store.allKeys())
        values[key] = store.value(key).toString();
    EXPECT_EQ(store.status(), QSettings::NoError);
    return values;
}

QString StoreTest::valueOnDisk(const QString& key) const
{
    return valuesOnDisk().value(key.split('/', Qt::SkipEmptyParts).join('/'));
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
