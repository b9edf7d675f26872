#pragma once

#include "mirabo/extender/MrbFieldEditor.h"

#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>

class QMimeData;
class SoFieldItem;
class SoMiraboList;

namespace mirabo {

/// Edits the value of a field list's row in its cell, pastes values, and puts defaults back. Each is a step that can be undone.
class RowEditor final : public QObject {
    Q_OBJECT

public:
    explicit RowEditor(SoMiraboList* list);
    ~RowEditor() override;

    /// Puts the compact form of the editor of the row's type into the value's cell. Says why when
    /// there is none.
    void open(SoFieldItem* row);
    /// Applies what was typed, and takes the editor away.
    void close();
    bool isOpen() const { return m_widget; }

    /// A row's value for the clipboard, with the name of its type; the caller owns it.
    static QMimeData* copiedValue(const SoFieldItem& row);
    /// Whether the clipboard holds something that may be a value.
    static bool canPaste();
    void paste(SoFieldItem* row);
    void resetToDefault(SoFieldItem* row);

Q_SIGNALS:
    /// Why nothing was done, for the status bar.
    void message(const QString& text);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void focusMoved(const QWidget* now);
    void remove();

    SoMiraboList* m_list;              // Not owned; owns us.
    QPointer<MrbFieldWidget> m_widget; // Not owned; the list's.
    QPersistentModelIndex m_cell;
};

} // namespace mirabo
