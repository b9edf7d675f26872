#pragma once

#include <memory>

class QWidget;

namespace mirabo {

/// Where the widgets of a dying window go that may still be on the stack; hidden.
struct RescuedDeleter {
    void operator()(QWidget* holder) const;
};
using Rescued = std::unique_ptr<QWidget, RescuedDeleter>;

/// Takes all widgets and actions out of a window whose destructor runs, so that they outlive it.
/// Events that they still get open frames, as before.
Rescued rescueChildren(QWidget& dying);

} // namespace mirabo
