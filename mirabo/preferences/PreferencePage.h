#pragma once

#include "mirabo/extender/MrbPluginsManager.h"

#include <QPointer>
#include <QString>

namespace mirabo {

/// A widget as a page of the preferences; what is called once the widget is gone does nothing.
template <class Page>
MrbPluginsManager::PreferencePage preferencePage(const QString& name, Page* page,
                                                 void (Page::*load)(), void (Page::*save)())
{
    const auto call = [self = QPointer<Page>(page)](void (Page::*operation)()) {
        if (self)
            (self->*operation)();
    };
    return {name, page, [call, load] { call(load); }, [call, save] { call(save); }};
}

} // namespace mirabo
