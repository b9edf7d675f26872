#pragma once

#include <QStyledItemDelegate>

class SoMiraboList;

/// Paints the cells of a field list: values in the style of default or changed values, places
/// with their end in view.
class FieldDelegate final : public QStyledItemDelegate {
public:
    explicit FieldDelegate(SoMiraboList* list);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    void paintPlain(QPainter* painter, const QStyleOptionViewItem& option,
                    const QModelIndex& index) const;
    void styleValue(QStyleOptionViewItem* option, bool changed) const;

    SoMiraboList* m_list; // Not owned; it is our parent.
};
