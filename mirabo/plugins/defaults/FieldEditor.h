#pragma once

#include <mirabo/extender/MrbExtension.h>

#include <QPointer>

class FieldEditorPanel;

/// The extension "Field Editor": a dock that edits the selected field with the editor of its type.
class FieldEditor final : public MrbExtension {
    Q_OBJECT

public:
    FieldEditor();
    ~FieldEditor() override;

    MrbExtensionInfo getInfo() const override;
    bool activate() override;
    void deactivate() override;
    QWidget* createView(QWidget* parent) override;
    MrbPreferencePage* createPreferencePage(QWidget* parent) override;

private:
    QPointer<FieldEditorPanel> m_panel; // Not owned; the dock's.
};
