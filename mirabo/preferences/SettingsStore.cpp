#include "mirabo/preferences/SettingsStore.h"

#include "mirabo/preferences/SettingKeys.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoError.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <iterator>
#include <utility>

namespace mirabo {

namespace {

constexpr char kVersionKey[] = "Store/Version";
constexpr int kMostKept = 100;  ///< stores that were moved aside
constexpr int kLockMs = 10'000; ///< how long another process may take to move one aside

int versionOf(const QSettings& store)
{
    return checkedSetting(*findSettingKey(kVersionKey), store.value(kVersionKey)).toInt();
}

QStringList asTexts(const QVariant& value)
{
    return value.type() == QVariant::StringList ? value.toStringList()
                                                : QStringList(value.toString());
}

/// Brings every value within the limits of its key, and removes what is of another kind. Keys that
/// are not declared are left alone: another version's, or an administrator's.
void mendValues(QSettings& store)
{
    for (const QString& name : store.allKeys()) {
        const SettingKey* key = findSettingKey(name);
        if (!key)
            continue;
        const QVariant value = store.value(name);
        const QVariant checked = checkedSetting(*key, value);
        if (!checked.isValid())
            store.remove(name);
        else if (asTexts(checked) != asTexts(value))
            store.setValue(name, checked);
    }
}

/// From each version to the next.
constexpr void (*kSteps[])(QSettings& store) = {mendValues};
static_assert(std::size(kSteps) == SettingsStore::kVersion);

QString damageOf(const QSettings& store)
{
    store.allKeys(); // reads all of it
    if (store.status() == QSettings::AccessError)
        return QCoreApplication::translate("SettingsStore", "cannot be read");
    if (store.status() == QSettings::FormatError)
        return QCoreApplication::translate("SettingsStore", "is damaged");
    const int version = versionOf(store);
    if (version <= SettingsStore::kVersion)
        return {};
    return QCoreApplication::translate("SettingsStore", "was written by a newer version (%1)")
        .arg(version);
}

/// Why this version cannot use the store at its place; empty: it can.
QString reasonAgainst(const QString& place, QSettings::Format format)
{
    if (!QFileInfo::exists(place)) // none yet, or the platform has no files for it
        return damageOf(QSettings(place, format));
    QFile file(place);
    if (!file.open(QIODevice::ReadOnly))
        return QCoreApplication::translate("SettingsStore", "cannot be read");
    // Stores of one name share what they have read, and only the first of them learns of damage.
    QTemporaryFile copy;
    if (!copy.open() || copy.write(file.readAll()) < 0 || !copy.flush())
        return damageOf(QSettings(place, format));
    return damageOf(QSettings(copy.fileName(), format));
}

/// The new name; empty when the store cannot be moved, or is no file.
QString moveAside(const QString& place)
{
    for (int i = 1; i <= kMostKept; ++i) {
        const QString kept = place + ".kept-" + QString::number(i);
        if (QDir().exists(kept))
            continue;
        if (QDir().rename(place, kept)) // never onto one that is there
            return kept;
        if (!QDir().exists(kept))
            return {};
    }
    return {};
}

} // namespace

SettingsStore::SettingsStore(Listener listener) : m_listener(std::move(listener))
{
    open();
}

SettingsStore::~SettingsStore() = default;

void SettingsStore::open()
{
    m_settings = std::make_unique<QSettings>("Mirabo", "MiraboViewer");
    if (reasonAgainst(m_settings->fileName(), m_settings->format()).isEmpty())
        bringUpToDate();
    else
        setAside();
}

/// Two processes may come here with the same store: the later one finds it gone, or replaced.
void SettingsStore::setAside()
{
    const QString place = m_settings->fileName();
    const QSettings::Format format = m_settings->format();
    m_settings.reset();
    // The lock that QSettings takes to write.
    QLockFile lock(place + ".lock");
    const bool isLocked = lock.tryLock(kLockMs);
    const QString reason = reasonAgainst(place, format);
    const QString kept = isLocked && !reason.isEmpty() ? moveAside(place) : QString();
    lock.unlock();
    if (reason.isEmpty() || !kept.isEmpty()) {
        m_settings = std::make_unique<QSettings>("Mirabo", "MiraboViewer");
        if (!kept.isEmpty())
            tell(QCoreApplication::translate("SettingsStore",
                                             "%1 %2. It is kept as %3; the settings are the "
                                             "defaults.")
                     .arg(place, reason, kept));
        return;
    }
    useTemporary();
    tell(QCoreApplication::translate("SettingsStore",
                                     "%1 %2. It is left as it is; the settings are the defaults "
                                     "and last until the inspector ends.")
             .arg(place, reason));
}

void SettingsStore::useTemporary()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QString folder = m_folder->isValid() ? m_folder->path() : QDir::tempPath();
    m_settings = std::make_unique<QSettings>(folder + "/MiraboViewer.conf", QSettings::IniFormat);
}

void SettingsStore::bringUpToDate()
{
    m_settings->setFallbacksEnabled(false); // the user's own
    const int version = versionOf(*m_settings);
    if (version < kVersion && !m_settings->allKeys().isEmpty()) {
        for (int i = version; i < kVersion; ++i)
            kSteps[i](*m_settings);
        stampVersion();
    }
    m_settings->setFallbacksEnabled(true);
}

void SettingsStore::stampVersion()
{
    if (versionOf(*m_settings) < kVersion)
        m_settings->setValue(kVersionKey, kVersion);
}

void SettingsStore::set(const QString& key, const QVariant& value)
{
    const SettingKey* declared = findSettingKey(key);
    if (!kalmyr::holds(declared, "the key is declared in SettingKeys.cpp"))
        return;
    const QVariant checked = checkedSetting(*declared, value);
    if (!checked.isValid())
        return;
    stampVersion();
    m_settings->setValue(key, checked);
    m_changed = true;
    syncLater();
}

void SettingsStore::remove(const QString& key)
{
    m_settings->remove(key);
    m_changed = true;
    syncLater();
}

void SettingsStore::syncLater()
{
    if (std::exchange(m_syncPending, true))
        return;
    QMetaObject::invokeMethod(
        m_settings.get(), [this] { sync(); }, Qt::QueuedConnection);
}

void SettingsStore::sync()
{
    m_syncPending = false;
    m_settings->sync();
    if (!std::exchange(m_changed, false) || isTemporary() || m_toldUnwritable)
        return;
    // The status tells the first trouble only, which may lie in the file of the whole system.
    if (m_settings->status() != QSettings::AccessError && m_settings->isWritable())
        return;
    m_toldUnwritable = true;
    tell(QCoreApplication::translate("SettingsStore",
                                     "%1 cannot be written. Changed settings last until the "
                                     "inspector ends.")
             .arg(m_settings->fileName()));
}

void SettingsStore::tell(const QString& message)
{
    const Listener listener = m_listener; // the host's error handler may end the tool, and us
    SoError::post("Mirabo settings: %s", message.toUtf8().constData());
    if (listener)
        listener(message);
}

} // namespace mirabo
