#pragma once

#include <QDir>
#include <QFile>
#include <QMap>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

class QProcess;

/// A store of its own for each case, empty at first, and closed.
class StoreTest : public ::testing::Test {
protected:
    StoreTest();
    ~StoreTest() override;

    QString folder() const { return m_folder.path() + "/Mirabo"; }
    QString place() const { return folder() + "/MiraboViewer.conf"; }

    /// Closes the store, and writes the bytes in its place.
    void put(const QByteArray& bytes) const;
    /// What is on the disk.
    QByteArray bytes() const { return bytesOf(place()); }
    static QByteArray bytesOf(const QString& path);
    /// All values on the disk at one time, as any tool finds them.
    QMap<QString, QString> valuesOnDisk() const;
    QString valueOnDisk(const QString& key) const;
    /// Stores that were kept aside.
    QStringList kept() const;

private:
    QTemporaryDir m_folder;
};

/// What a page of the preferences does when it is applied: writes the group's styles, all in one
/// grey.
void applyStyles(const QString& group, int grey);

/// Another tool: this program in a process of its own, with the same store open.
class OtherTool {
public:
    explicit OtherTool(const QString& folder);
    ~OtherTool(); ///< it closes the store and ends
    OtherTool(const OtherTool&) = delete;
    OtherTool& operator=(const OtherTool&) = delete;

    /// Has it carry out one of the commands in OtherTool.cpp; what it answers.
    QString ask(const QStringList& command);
    /// The same in two steps, with something else between them.
    void begin(const QStringList& command);
    QString answer();

private:
    std::unique_ptr<QProcess> m_process;
};
