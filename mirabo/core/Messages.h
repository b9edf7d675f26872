#pragma once

#include <QMessageBox>
#include <QString>

#include <initializer_list>

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

struct MessageButton {
    const char* text;
    QMessageBox::ButtonRole role;
};
/// Returns the number of the button that was chosen, `escape` for the escape key, the close button
/// and an application that runs unattended, and -1 when the parent died or the tool ended.
int choose(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
           std::initializer_list<MessageButton> buttons, int preferred, int escape);
/// Whether a file that is there may be replaced.
bool askToOverwrite(QWidget* parent, const QString& fileName);

} // namespace mirabo
