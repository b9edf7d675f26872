#pragma once

#include <QString>

class QWidget;

/// Marks an input that cannot be applied: a red frame, and a tool tip that says why. An empty
/// problem takes the mark away and puts `toolTip` back.
void markInput(QWidget* input, const QString& problem, const QString& toolTip = {});
