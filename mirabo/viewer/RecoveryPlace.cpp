#include "mirabo/viewer/RecoveryPlace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace mirabo {

namespace {

constexpr char kFileKey[] = "file";
constexpr char kTimeKey[] = "time";

} // namespace

QString RecoveryPlace::folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
           + "/Mirabo/recovery";
}

RecoveryPlace::RecoveryPlace(const QString& base) : m_base(base), m_lock(base + ".lock")
{
    m_lock.setStaleLockTime(0); // a run may take days; one that has died is recognised all the same
}

std::unique_ptr<RecoveryPlace> RecoveryPlace::create(const QString& folder)
{
    constexpr int kMaxTries = 1000;
    if (!QDir().mkpath(folder))
        return nullptr;
    const QString name =
        QString("%1/%2-%3-")
            .arg(folder, QDateTime::currentDateTimeUtc().toString("yyyyMMddHHmmss"))
            .arg(QCoreApplication::applicationPid());
    for (int number = 0; number < kMaxTries; ++number) {
        std::unique_ptr<RecoveryPlace> place(new RecoveryPlace(name + QString::number(number)));
        if (!QFileInfo::exists(place->scenePath()) && place->m_lock.tryLock(0))
            return place;
    }
    return nullptr;
}

std::unique_ptr<RecoveryPlace> RecoveryPlace::takeAbandoned(const QString& folder)
{
    // The description comes last: without one the copy is not complete.
    const QFileInfoList found = QDir(folder).entryInfoList({"*.ini"}, QDir::Files, QDir::Time);
    for (const QFileInfo& info : found) {
        std::unique_ptr<RecoveryPlace> place(
            new RecoveryPlace(folder + '/' + info.completeBaseName()));
        if (!place->m_lock.tryLock(0))
            continue; // its program runs
        if (!QFileInfo::exists(place->scenePath())) {
            place->clear();
            continue;
        }
        const QSettings description(place->descriptionPath(), QSettings::IniFormat);
        place->m_file = description.value(kFileKey).toString();
        place->m_time = description.value(kTimeKey).toDateTime();
        return place;
    }
    return nullptr;
}

void RecoveryPlace::setDescription(const QString& file)
{
    m_file = file.isEmpty() ? QString() : QFileInfo(file).absoluteFilePath();
    m_time = QDateTime::currentDateTime();
    QSettings description(descriptionPath(), QSettings::IniFormat);
    description.setValue(kFileKey, m_file);
    description.setValue(kTimeKey, m_time);
}

void RecoveryPlace::clear()
{
    QFile::remove(descriptionPath());
    QFile::remove(scenePath());
}

} // namespace mirabo
