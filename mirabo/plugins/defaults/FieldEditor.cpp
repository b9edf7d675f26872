#include "FieldEditor.h"

#include "EditorPage.h"
#include "FieldEditorPanel.h"

#include <mirabo/extender/MrbFieldEditor.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/extender/MrbShell.h>

FieldEditor::FieldEditor() = default;

FieldEditor::~FieldEditor() = default;

MrbExtensionInfo FieldEditor::getInfo() const
{
    return {"Field Editor", "Field Editor", "Mirabo", "1.0"};
}

bool FieldEditor::activate()
{
    shell()->addView(this, Qt::RightDockWidgetArea);
    if (!m_panel)
        return false;
    connect(services(), &MrbServices::selectedFieldChanged, m_panel,
            &FieldEditorPanel::fieldSelected);
    connect(services(), &MrbServices::sceneGraphChanged, m_panel, &FieldEditorPanel::sceneChanged);
    connect(MrbFieldEditors::getInstance(), &MrbFieldEditors::editorsChanged, m_panel,
            &FieldEditorPanel::editorsChanged);
    return true;
}

void FieldEditor::deactivate()
{
    if (m_panel)
        m_panel->sceneChanged();
}

QWidget* FieldEditor::createView(QWidget* parent)
{
    m_panel = new FieldEditorPanel(this, parent);
    return m_panel;
}

MrbPreferencePage* FieldEditor::createPreferencePage(QWidget* parent)
{
    auto* page = new EditorPage(parent);
    if (m_panel)
        connect(page, &EditorPage::saved, m_panel, &FieldEditorPanel::showAnew);
    return page;
}
