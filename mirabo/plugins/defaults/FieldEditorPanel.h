#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

#include <QPointer>
#include <QWidget>

#include <memory>

class FieldStateLine;
class MrbExtension;
class QLabel;
class QToolButton;
class QVBoxLayout;
class SoField;
class TogetherLine;

/// The content of the field editor's dock: what field it is, its state, and the widget of its type.
///
/// It follows the selected field, unless it is kept ("pin"). While it is out of sight it follows
/// nothing.
class FieldEditorPanel final : public QWidget {
    Q_OBJECT

public:
    FieldEditorPanel(MrbExtension* extension, QWidget* parent);
    ~FieldEditorPanel() override;

    /// Null when no field is shown.
    MrbFieldEdit* edit() const { return m_edit; }
    MrbFieldWidget* widget() const { return m_widget; }

public Q_SLOTS:
    /// Another field was selected; it is shown with the next pass of the event loop.
    void fieldSelected(SoField* field);
    void sceneChanged();
    void editorsChanged();
    /// Makes the widget anew, for other preferences.
    void showAnew();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void buildLayout();
    void showLater();
    void showSelected();
    void makeWidget();
    void clearWidget();
    void clear();
    void takeFields();
    void showTitle();
    void showOutdated();
    void addSelected();

    MrbExtension* m_extension; // Not owned; owns the dock we are in.
    QPointer<MrbFieldEdit> m_edit;
    QPointer<MrbFieldWidget> m_widget;        // Not owned; the scroll area's.
    const MrbFieldEditor* m_editor = nullptr; ///< of the widget; for comparison only
    bool m_isLater = false;
    bool m_isKept = false;
    QLabel* m_name;
    QLabel* m_place;
    QToolButton* m_pin;
    FieldStateLine* m_state;
    QWidget* m_outdated;
    QVBoxLayout* m_body; ///< holds the widget
    QLabel* m_hint;
    TogetherLine* m_together;
};
