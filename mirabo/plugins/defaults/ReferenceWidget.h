#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

class SoType;

/// Whether a single-value field of that type holds an object: a node, a path, an engine, a
/// container or a buffer.
bool isReferenceType(SoType type);

/// The object that the field holds: nodes and paths can be chosen in the scene, dropped from the
/// tree, or taken away; the others are only shown.
MrbFieldWidget* makeReferenceWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent);
