#pragma once

#include <QIcon>

/// The drawings on a viewer's buttons, sharp at any size and resolution.
enum class ViewerIcon {
    ARROW,
    HAND,
    HOME,
    SET_HOME,
    VIEW_ALL,
    SEEK,
    PERSPECTIVE,
    ORTHOGRAPHIC,
    HEADLIGHT,
    CHOSEN,
    SIDES,
    STYLE,
    COUNT
};

QIcon viewerIcon(ViewerIcon which);
