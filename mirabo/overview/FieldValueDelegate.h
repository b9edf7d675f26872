#pragma once

#include <QStyledItemDelegate>

class SoMiraboList;

/// Paints the value column in the style of default or changed values.
class FieldValueDelegate final : public QStyledItemDelegate {
public:
    explicit FieldValueDelegate(SoMiraboList* list);

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    SoMiraboList* m_list; // Not owned; it is our parent.
};
