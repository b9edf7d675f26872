#include "mirabo/core/Messages.h"

#include "mirabo/core/Modal.h"

#include <QCoreApplication>
#include <QDir>
#include <QPushButton>
#include <QVariant>

#include <cstdio>

namespace mirabo {

namespace {

void print(const QString& text)
{
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

void show(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text)
{
    if (isBatch())
        print(text);
    else
        Modal(new QMessageBox(icon, title, text, QMessageBox::Ok, parent)).run();
}

} // namespace

bool isBatch()
{
    return QCoreApplication::instance()
           && QCoreApplication::instance()->property(kBatchProperty).toBool();
}

void showInformation(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Information, parent, title, text);
}

void showWarning(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Warning, parent, title, text);
}

void showCritical(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Critical, parent, title, text);
}

bool ask(QWidget* parent, const QString& title, const QString& question)
{
    const auto buttons = QMessageBox::Yes | QMessageBox::No;
    Modal box(new QMessageBox(QMessageBox::Question, title, question, buttons, parent));
    return box.run() == QMessageBox::Yes;
}

int choose(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
           std::initializer_list<MessageButton> buttons, int preferred, int escape)
{
    if (isBatch())
        return escape;
    Modal box(new QMessageBox(icon, title, text, QMessageBox::NoButton, parent));
    QList<QAbstractButton*> added;
    for (const MessageButton& button : buttons)
        added.append(box->addButton(button.text, button.role));
    box->setDefaultButton(static_cast<QPushButton*>(added[preferred]));
    box->setEscapeButton(added[escape]);
    return box.run() ? added.indexOf(box->clickedButton()) : -1;
}

bool askToOverwrite(QWidget* parent, const QString& fileName)
{
    return choose(QMessageBox::Warning, parent, "Mirabo -- Overwrite File",
                  QString("Overwrite\n'%1'?").arg(QDir(fileName).absolutePath()),
                  {{"&Yes", QMessageBox::YesRole}, {"&No", QMessageBox::NoRole}}, 1, 1)
           == 0;
}

} // namespace mirabo
