#include "mirabo/extender/private/Later.h"

#include "mirabo/extender/private/Frame.h"

#include <QTimer>

#include <utility>

namespace mirabo {

void callLater(QObject* context, int delay, std::function<void()> call)
{
    QTimer::singleShot(delay, Qt::PreciseTimer, context, [call = std::move(call)] {
        const Frame frame;
        call();
    });
}

} // namespace mirabo
