#include "mirabo/viewer/ReadMessagesModel.h"

#include <QFileInfo>

namespace mirabo {

namespace {

QString numberOrNothing(int number)
{
    return number > 0 ? QString::number(number) : QString();
}

QString textOf(const ReadMessage& message, int column)
{
    switch (column) {
    case ReadMessagesModel::File: {
        const QString name = QFileInfo(message.file).fileName();
        return name.isEmpty() ? message.file : name;
    }
    case ReadMessagesModel::Line:
        return numberOrNothing(message.line);
    case ReadMessagesModel::ColumnInLine:
        return numberOrNothing(message.column);
    default:
        return message.text;
    }
}

/// Line and column meet, as in "LINE:COLUMN".
Qt::Alignment sideOf(int column)
{
    return column == ReadMessagesModel::Line ? Qt::AlignRight : Qt::AlignLeft;
}

} // namespace

QIcon iconOf(ReadMessage::Severity severity)
{
    return QIcon(severity == ReadMessage::Error ? ":/Mirabo_icons/Icons/error.png"
                                                : ":/Mirabo_icons/Icons/warning.png");
}

void ReadMessagesModel::setMessages(const ReadMessages& messages)
{
    beginResetModel();
    m_messages = messages;
    endResetModel();
}

int ReadMessagesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_messages.kept().size();
}

int ReadMessagesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ReadMessagesModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ReadMessage& message = m_messages.kept()[index.row()];
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return textOf(message, column);
    case Qt::ToolTipRole:
        return column == Text ? message.text : message.place();
    case Qt::DecorationRole:
        return column == File ? QVariant(m_icons[message.severity]) : QVariant();
    case Qt::AccessibleTextRole:
        if (column == File)
            return (message.severity == ReadMessage::Error ? tr("Error: ") : tr("Warning: "))
                   + textOf(message, column);
        return textOf(message, column);
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignTop | sideOf(column));
    default:
        return {};
    }
}

QVariant ReadMessagesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignVCenter | sideOf(section));
    if (role != Qt::DisplayRole)
        return {};
    const QString titles[ColumnCount] = {tr("File"), tr("Line"), tr("Column"), tr("Message")};
    return section >= 0 && section < ColumnCount ? titles[section] : QVariant();
}

} // namespace mirabo
