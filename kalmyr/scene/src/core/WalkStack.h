#pragma once

#include <kalmyr/core/SoNotification.h>

#include "core/StackSwitch.h"

namespace kalmyr::detail {

/// Takes a walk one level up by `pass`. From the bottom of a deep graph it goes on with another
/// stack.
template <class Pass>
void passUp(SoNotification& notification, Pass pass)
{
    if (!notification.stackLimit)
        notification.stackLimit = stackLimit();
    if (!isStackLow(notification.stackLimit)) [[likely]] {
        pass();
        return;
    }
    const char* before = notification.stackLimit;
    callOnNewStack([&](const char* limit) {
        notification.stackLimit = limit;
        pass();
    });
    notification.stackLimit = before;
}

} // namespace kalmyr::detail
