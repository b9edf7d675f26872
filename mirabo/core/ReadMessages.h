#pragma once

#include "mirabo/core/ErrorScope.h"

#include <kalmyr/base/SoReadError.h>

#include <QMetaType>
#include <QString>
#include <QVector>

#include <array>

class SbString;

namespace mirabo {

/// An error or a warning of a read, with its place.
struct ReadMessage {
    enum Severity { Error, Warning };

    /// Converts what the toolkit posts; an empty file name stands for memory.
    ReadMessage(Severity severity, const SbString& fileName, int line, int column,
                const SbString& text);
    /// Needed by containers only.
    ReadMessage() = default;

    /// "FILE:LINE:COLUMN", or "FILE" when the line is unknown.
    QString place() const;
    /// "FILE:LINE:COLUMN: TEXT" without line breaks.
    QString toText() const;

    Severity severity = Error;
    QString file; ///< as it was found, with its folder
    int line = 0; ///< from 1; 0: unknown
    int column = 0;
    QString text;
};

/// The errors and warnings of one read, in the order in which they were posted.
///
/// A value; copies share what they hold.
class ReadMessages {
public:
    /// Of each severity; so many warnings do not push out an error.
    static constexpr int kMaxKept = 10'000;

    /// Of no file.
    ReadMessages() = default;
    /// Of a file, with its folder.
    explicit ReadMessages(QString fileName);

    const QString& fileName() const { return m_fileName; }
    /// Counts a message, and keeps it unless there are too many.
    void add(const ReadMessage& message);
    void add(const ReadMessages& others);

    bool isEmpty() const { return count() == 0; }
    /// With those that were left out.
    int count() const { return count(ReadMessage::Error) + count(ReadMessage::Warning); }
    int count(ReadMessage::Severity severity) const { return m_counts[severity]; }
    int numLeftOut() const { return count() - static_cast<int>(m_kept.size()); }
    const QVector<ReadMessage>& kept() const { return m_kept; }
    /// Null when there is none of that severity.
    const ReadMessage* first(ReadMessage::Severity severity) const;

    /// "1 error, 3 warnings"; empty when there are none.
    QString summary() const;

private:
    QString m_fileName;
    QVector<ReadMessage> m_kept;
    std::array<int, 2> m_counts{};
};

/// Adds the read errors that this thread posts in a scope to a list, which outlives it. They go to
/// no other handler.
class ReadErrorCollector {
public:
    explicit ReadErrorCollector(ReadMessages& messages) : m_scope(&posted, &messages) {}

private:
    static void posted(const SoError* error, void* messages);

    ThreadErrorScope<SoReadError> m_scope;
};

} // namespace mirabo

Q_DECLARE_METATYPE(mirabo::ReadMessages)
