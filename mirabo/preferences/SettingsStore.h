#pragma once

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

class QSettings;
class QTemporaryDir;

namespace mirabo {

/// The store of the settings: organisation "Mirabo", application "MiraboViewer", wherever the
/// platform keeps it.
///
/// Several processes may use it at once. What one of them writes together is found together by the
/// others, keys that it has not written are as the others left them, and of two that write one key
/// the later wins.
///
/// A store that cannot be used, because a newer version wrote it or because it cannot be read, is
/// moved aside under a name that is free and a new one begins. Where it cannot be moved it stays as
/// it is, and this object keeps its values for as long as it lives. One of an older version is
/// brought up to date. Threads: that of the user interface.
class SettingsStore {
public:
    /// Version 0, which has no number: the same keys, but nobody checked their values.
    static constexpr int kVersion = 1;
    using Listener = std::function<void(const QString& message)>;

    /// `listener` hears what the user should know; it is told as a toolkit error as well.
    explicit SettingsStore(Listener listener);
    /// Writes what is pending, and tells nobody when that does not work: see sync().
    ~SettingsStore();
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    QSettings& settings() { return *m_settings; }
    /// Whether the values end with this object.
    bool isTemporary() const { return m_folder != nullptr; }

    /// Stores the value within the limits of its key; nothing for a key that is not declared or a
    /// value of another kind. Written with the next sync(), by the event loop at the latest.
    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);
    /// Writes what is pending and takes over what other processes have written. Tells once when
    /// that does not work.
    void sync();

private:
    void open();
    void stampVersion();
    void bringUpToDate();
    void setAside();
    void useTemporary();
    void syncLater();
    /// Last in its callers: this object may be gone afterwards.
    void tell(const QString& message);

    Listener m_listener;
    std::unique_ptr<QTemporaryDir> m_folder; ///< of a store that ends with this object
    std::unique_ptr<QSettings> m_settings;   // after the folder that it may lie in
    bool m_toldUnwritable = false;
    bool m_changed = false; ///< since the last sync()
    bool m_syncPending = false;
};

} // namespace mirabo
