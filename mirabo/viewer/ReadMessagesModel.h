#pragma once

#include "mirabo/core/ReadMessages.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>

namespace mirabo {

/// Tells errors and warnings apart by shape, too.
QIcon iconOf(ReadMessage::Severity severity);

/// The kept messages of a read, one a row, in their order.
class ReadMessagesModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { File, Line, ColumnInLine, Text, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void setMessages(const ReadMessages& messages);
    const ReadMessages& messages() const { return m_messages; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    ReadMessages m_messages;
    std::array<QIcon, 2> m_icons{iconOf(ReadMessage::Error), iconOf(ReadMessage::Warning)};
};

} // namespace mirabo
