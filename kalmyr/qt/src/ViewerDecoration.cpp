#include "ViewerDecoration.h"

#include "ViewerIcon.h"

#include <kalmyr/gui/SoGuiViewer.h>

#include <QAction>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

struct SoQtViewer::Decoration::Entry {
    ViewerIcon icon;
    const char* objectName;
    const char* text;
    const char* key; ///< shown only; the viewer itself listens to it
    bool checkable;
    bool beginsGroup;
};

namespace {

constexpr int kGroupGap = 6;

QString translated(const char* text)
{
    return QCoreApplication::translate("SoQtViewer", text);
}

} // namespace

const SoQtViewer::Decoration::Entry SoQtViewer::Decoration::kEntries[COUNT] = {
    {ViewerIcon::HAND, "viewerView", QT_TRANSLATE_NOOP("SoQtViewer", "View"), "Esc", true, false},
    {ViewerIcon::ARROW, "viewerPick", QT_TRANSLATE_NOOP("SoQtViewer", "Pick"), "Esc", true, false},
    {ViewerIcon::HOME, "viewerHome", QT_TRANSLATE_NOOP("SoQtViewer", "Home"), "Home", false, true},
    {ViewerIcon::SET_HOME, "viewerSetHome", QT_TRANSLATE_NOOP("SoQtViewer", "Set home"), "", false,
     false},
    {ViewerIcon::VIEW_ALL, "viewerViewAll", QT_TRANSLATE_NOOP("SoQtViewer", "View all"), "V", false,
     false},
    {ViewerIcon::SEEK, "viewerSeek", QT_TRANSLATE_NOOP("SoQtViewer", "Seek to a point"), "S", true,
     false},
    {ViewerIcon::PERSPECTIVE, "viewerPerspective", QT_TRANSLATE_NOOP("SoQtViewer", "Perspective"),
     "", true, true},
    {ViewerIcon::HEADLIGHT, "viewerHeadlight", QT_TRANSLATE_NOOP("SoQtViewer", "Headlight"), "",
     true, false},
};

SoQtViewer::Decoration::Decoration(SoGuiViewer* viewer, QWidget* whole, QWidget* surface)
    : m_viewer(viewer), m_whole(whole), m_surface(surface)
{
    for (int i = 0; i < COUNT; ++i)
        makeAction(i);
    refresh();
}

void SoQtViewer::Decoration::makeAction(int index)
{
    const Entry& entry = kEntries[index];
    auto* action = new QAction(viewerIcon(entry.icon), translated(entry.text), m_whole);
    action->setObjectName(QLatin1String(entry.objectName));
    action->setCheckable(entry.checkable);
    if (*entry.key)
        action->setToolTip(action->text() + QLatin1String(" (") + QLatin1String(entry.key)
                           + QLatin1Char(')'));
    QObject::connect(action, &QAction::triggered, action,
                     [this, index](bool on) { run(index, on); });
    m_actions[index] = action;
}

void SoQtViewer::Decoration::buildColumn()
{
    m_column = new QWidget(m_whole);
    // A low window cuts the column off instead of refusing to become low.
    m_column->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    auto* layout = new QVBoxLayout(m_column);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(1);
    const int size = m_column->style()->pixelMetric(QStyle::PM_SmallIconSize) + 4;
    for (int i = 0; i < COUNT; ++i) {
        if (kEntries[i].beginsGroup)
            layout->addSpacing(kGroupGap);
        auto* button = new QToolButton(m_column);
        button->setDefaultAction(m_actions[i]);
        button->setIconSize(QSize(size, size));
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys with the scene
        button->setAccessibleName(m_actions[i]->text());
        layout->addWidget(button);
    }
    layout->addStretch();
    m_whole->layout()->addWidget(m_column);
}

void SoQtViewer::Decoration::buildMenu()
{
    m_menu = new QMenu(m_whole);
    for (int i = 0; i < COUNT; ++i) {
        if (kEntries[i].beginsGroup)
            m_menu->addSeparator();
        m_menu->addAction(m_actions[i]);
    }
}

void SoQtViewer::Decoration::run(int index, bool on)
{
    switch (index) {
    case VIEW:
        m_viewer->setViewing(true);
        break;
    case PICK:
        m_viewer->setViewing(false);
        break;
    case HOME:
        m_viewer->resetToHomePosition();
        break;
    case SET_HOME:
        m_viewer->saveHomePosition();
        break;
    case VIEW_ALL:
        m_viewer->viewAll();
        break;
    case SEEK:
        m_viewer->setViewing(true);
        m_viewer->setSeekMode(on);
        break;
    case CAMERA:
        m_viewer->setCameraType(on ? SoGuiViewer::PERSPECTIVE : SoGuiViewer::ORTHOGRAPHIC);
        break;
    case HEADLIGHT:
        m_viewer->setHeadlight(on);
        break;
    default:
        break;
    }
    refresh(); // a click on what is on already has unchecked it
}

void SoQtViewer::Decoration::refresh()
{
    if (!m_whole || !m_surface)
        return;
    const bool perspective = m_viewer->getCameraType() == SoGuiViewer::PERSPECTIVE;
    m_actions[VIEW]->setChecked(m_viewer->isViewing());
    m_actions[PICK]->setChecked(!m_viewer->isViewing());
    m_actions[SEEK]->setChecked(m_viewer->isSeekMode());
    m_actions[HEADLIGHT]->setChecked(m_viewer->isHeadlight());
    m_actions[CAMERA]->setChecked(perspective);
    m_actions[CAMERA]->setEnabled(m_viewer->hasOwnCamera());
    m_actions[CAMERA]->setIcon(
        viewerIcon(perspective ? ViewerIcon::PERSPECTIVE : ViewerIcon::ORTHOGRAPHIC));
    if (m_viewer->isSeekMode())
        m_surface->setCursor(Qt::CrossCursor);
    else
        m_surface->setCursor(m_viewer->isViewing() ? Qt::OpenHandCursor : Qt::ArrowCursor);
}
