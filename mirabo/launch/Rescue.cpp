#include "mirabo/launch/Rescue.h"

#include "mirabo/extender/private/EventFrames.h"

#include <QAction>
#include <QWidget>

namespace mirabo {

void RescuedDeleter::operator()(QWidget* holder) const
{
    EventFrames::removeRoot(holder);
    delete holder;
}

Rescued rescueChildren(QWidget& dying)
{
    Rescued holder(new QWidget);
    EventFrames::addRoot(holder.get());
    const QObjectList children = dying.children();
    for (QObject* child : children) {
        if (auto* widget = qobject_cast<QWidget*>(child)) {
            widget->hide();
            widget->setParent(holder.get(), widget->windowFlags());
        } else if (qobject_cast<QAction*>(child)) {
            child->setParent(holder.get());
        }
    }
    return holder;
}

} // namespace mirabo
