#include "mirabo/core/Messages.h"

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

} // namespace

bool isBatch()
{
    return QCoreApplication::instance()
           && QCoreApplication::instance()->property(kBatchProperty).toBool();
}

void showWarning(QWidget* parent, const QString& title, const QString& text)
{
    if (isBatch())
        print(text);
    else
        QMessageBox::warning(parent, title, text);
}

void showCritical(QWidget* parent, const QString& title, const QString& text)
{
    if (isBatch())
        print(text);
    else
        QMessageBox::critical(parent, title, text);
}

} // namespace mirabo
