#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

#include <QStringList>

#include <vector>

/// One of the editors of this plug-in.
struct EditorEntry {
    using Factory = MrbFieldWidget* (*)(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                        QWidget* parent);
    const char* name; ///< of the extension, and of the field type that it edits
    Factory factory;
};

/// All editors, in the order of their names.
const std::vector<EditorEntry>& editorTable();

/// The widget of the type itself, whichever editors are active: what "SField" and "MField" make for
/// the types that have no editor of their own.
MrbFieldWidget* makeWidgetByType(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
