#include "InputMark.h"

#include "Looks.h"

#include <QVariant>
#include <QWidget>

void markInput(QWidget* input, const QString& problem, const QString& toolTip)
{
    const bool isBad = !problem.isEmpty();
    if (input->property("bad").toBool() != isBad) {
        input->setProperty("bad", isBad);
        // The class is named: the tool tip would inherit the frame.
        input->setStyleSheet(
            isBad
                ? QString("%1 { border: 1px solid #d0342c; }").arg(input->metaObject()->className())
                : QString());
    }
    input->setToolTip(isBad ? problem : toolTip);
    input->setAccessibleDescription(problem);
}
