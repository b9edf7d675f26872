#pragma once

#include <QString>

class QWidget;

/// Messages to the user: modal boxes, or lines on stderr when the application runs unattended
/// (its property kBatchProperty is true).
namespace mirabo {

inline constexpr char kBatchProperty[] = "miraboBatch";

bool isBatch();
void showInformation(QWidget* parent, const QString& title, const QString& text);
void showWarning(QWidget* parent, const QString& title, const QString& text);
void showCritical(QWidget* parent, const QString& title, const QString& text);
/// False as well when the parent died or the tool ended while the question was open.
bool ask(QWidget* parent, const QString& title, const QString& question);

} // namespace mirabo
