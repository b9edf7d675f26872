#include "mirabo/core/ReadMessages.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace mirabo {

namespace {

QString toQString(const SbString& text)
{
    return QString::fromUtf8(text.getString());
}

QString tr(const char* text)
{
    return QCoreApplication::translate("ReadMessages", text);
}

} // namespace

ReadMessage::ReadMessage(Severity s, const SbString& fileName, int l, int c, const SbString& t)
    : severity(s),
      file(fileName.isEmpty() ? QStringLiteral("<memory>") : toQString(fileName)),
      line(l),
      column(c),
      text(toQString(t))
{
}

QString ReadMessage::place() const
{
    return line > 0 ? QStringList{file, QString::number(line), QString::number(column)}.join(':')
                    : file;
}

QString ReadMessage::toText() const
{
    QString shown = place() + ": " + text;
    return shown.replace('\n', ' ').remove('\r');
}

ReadMessages::ReadMessages(QString fileName) : m_fileName(std::move(fileName)) {}

void ReadMessages::add(const ReadMessage& message)
{
    if (m_counts[message.severity]++ < kMaxKept)
        m_kept.append(message);
}

void ReadMessages::add(const ReadMessages& others)
{
    for (const ReadMessage& message : others.m_kept)
        add(message);
    for (const auto severity : {ReadMessage::Error, ReadMessage::Warning})
        m_counts[severity] += std::max(0, others.count(severity) - kMaxKept);
}

const ReadMessage* ReadMessages::first(ReadMessage::Severity severity) const
{
    const auto found = std::find_if(m_kept.begin(), m_kept.end(), [severity](const ReadMessage& m) {
        return m.severity == severity;
    });
    return found == m_kept.end() ? nullptr : &*found;
}

QString ReadMessages::summary() const
{
    QStringList parts;
    const auto tell = [&parts](int number, const QString& one, const QString& several) {
        if (number > 0)
            parts << QStringLiteral("%1 %2").arg(number).arg(number == 1 ? one : several);
    };
    tell(count(ReadMessage::Error), tr("error"), tr("errors"));
    tell(count(ReadMessage::Warning), tr("warning"), tr("warnings"));
    return parts.join(", ");
}

void ReadErrorCollector::posted(const SoError* error, void* messages)
{
    const auto* read = static_cast<const SoReadError*>(error);
    static_cast<ReadMessages*>(messages)->add({ReadMessage::Error, read->getFileName(),
                                               read->getLine(), read->getColumn(),
                                               read->getMessage()});
}

} // namespace mirabo
