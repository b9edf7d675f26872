#include "mirabo/core/Messages.h"

#include "mirabo/core/Modal.h"

#include <QCoreApplication>
#include <QMessageBox>
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

} // namespace mirabo
