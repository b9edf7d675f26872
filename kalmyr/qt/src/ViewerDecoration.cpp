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
    {ViewerIcon::CHOSEN, "viewerChosen", QT_TRANSLATE_NOOP("SoQtViewer", "View what is chosen"),
     "F", false, false},
    {ViewerIcon::SEEK, "viewerSeek", QT_TRANSLATE_NOOP("SoQtViewer", "Seek to a point"), "S", true,
     false},
    {ViewerIcon::PERSPECTIVE, "viewerPerspective", QT_TRANSLATE_NOOP("SoQtViewer", "Perspective"),
     "", true, true},
    {ViewerIcon::HEADLIGHT, "viewerHeadlight", QT_TRANSLATE_NOOP("SoQtViewer", "Headlight"), "",
     true, false},
};

SoQtViewer::Decoration::Decoration(SoQtViewer* viewer)
    : m_viewer(viewer->getGuiViewer()),
      m_owner(viewer),
      m_whole(viewer->getWidget()),
      m_settings(viewer, viewer->getWidget())
{
    for (int i = 0; i < COUNT; ++i)
        makeAction(i);
    makeSides();
    refresh();
}

QString SoQtViewer::Decoration::tipOf(const QString& text, const char* key) const
{
    return *key ? text + QLatin1String(" (") + QLatin1String(key) + QLatin1Char(')') : text;
}

void SoQtViewer::Decoration::makeAction(int index)
{
    const Entry& entry = kEntries[index];
    auto* action = new QAction(viewerIcon(entry.icon), translated(entry.text), m_whole);
    action->setObjectName(QLatin1String(entry.objectName));
    action->setCheckable(entry.checkable);
    action->setToolTip(tipOf(action->text(), entry.key));
    QObject::connect(action, &QAction::triggered, action,
                     [this, index](bool on) { run(index, on); });
    m_actions[index] = action;
}

void SoQtViewer::Decoration::makeSides()
{
    constexpr struct {
        const char* name;
        const char* text;
        SoGuiViewer::Side side;
    } kSides[] = {
        {"viewerFront", QT_TRANSLATE_NOOP("SoQtViewer", "&Front"), SoGuiViewer::FRONT},
        {"viewerBack", QT_TRANSLATE_NOOP("SoQtViewer", "&Back"), SoGuiViewer::BACK},
        {"viewerLeft", QT_TRANSLATE_NOOP("SoQtViewer", "&Left"), SoGuiViewer::LEFT},
        {"viewerRight", QT_TRANSLATE_NOOP("SoQtViewer", "&Right"), SoGuiViewer::RIGHT},
        {"viewerTop", QT_TRANSLATE_NOOP("SoQtViewer", "&Top"), SoGuiViewer::TOP},
        {"viewerBottom", QT_TRANSLATE_NOOP("SoQtViewer", "B&ottom"), SoGuiViewer::BOTTOM},
    };
    for (const auto& each : kSides) {
        auto* action = new QAction(translated(each.text), m_whole);
        action->setObjectName(QLatin1String(each.name));
        QObject::connect(action, &QAction::triggered, action,
                         [viewer = m_viewer, side = each.side] { viewer->flyToSide(side); });
        m_sides.append(action);
    }
}

QToolButton* SoQtViewer::Decoration::addButton(QLayout& layout)
{
    const int size = m_column->style()->pixelMetric(QStyle::PM_SmallIconSize) + 4;
    auto* button = new QToolButton(m_column);
    button->setIconSize(QSize(size, size));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys with the scene
    layout.addWidget(button);
    return button;
}

void SoQtViewer::Decoration::addMenuButton(QLayout& layout, const QIcon& icon, const QString& text,
                                           const QList<QAction*>& actions)
{
    QToolButton* button = addButton(layout);
    auto* menu = new QMenu(button);
    menu->addActions(actions);
    button->setIcon(icon);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
}

void SoQtViewer::Decoration::buildColumn()
{
    m_column = new QWidget(m_whole);
    // A low window cuts the column off instead of refusing to become low.
    m_column->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    auto* layout = new QVBoxLayout(m_column);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(1);
    for (int i = 0; i < COUNT; ++i) {
        if (kEntries[i].beginsGroup)
            layout->addSpacing(kGroupGap);
        QToolButton* button = addButton(*layout);
        button->setDefaultAction(m_actions[i]);
        button->setAccessibleName(m_actions[i]->text());
    }
    layout->addSpacing(kGroupGap);
    addMenuButton(*layout, viewerIcon(ViewerIcon::SIDES), translated("Look from a side"), m_sides);
    addMenuButton(*layout, viewerIcon(ViewerIcon::STYLE), translated("Draw style"),
                  m_settings.drawStyles());
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
    m_menu->addSeparator();
    m_menu->addMenu(translated("&Look from"))->addActions(m_sides);
    m_settings.addTo(*m_menu);
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
        m_viewer->flyToAll();
        break;
    case CHOSEN:
        m_viewer->flyToChosen();
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
    if (!m_whole)
        return;
    m_settings.refresh();
    const bool perspective = m_viewer->getCameraType() == SoGuiViewer::PERSPECTIVE;
    m_actions[VIEW]->setChecked(m_viewer->isViewing());
    m_actions[PICK]->setChecked(!m_viewer->isViewing());
    m_actions[SEEK]->setChecked(m_viewer->isSeekMode());
    m_actions[HEADLIGHT]->setChecked(m_viewer->isHeadlight());
    m_actions[CAMERA]->setChecked(perspective);
    m_actions[CAMERA]->setEnabled(m_viewer->hasOwnCamera());
    m_actions[CAMERA]->setIcon(
        viewerIcon(perspective ? ViewerIcon::PERSPECTIVE : ViewerIcon::ORTHOGRAPHIC));
    if (QWidget* surface = m_owner->getRenderWidget())
        surface->setCursor(cursor());
}

Qt::CursorShape SoQtViewer::Decoration::cursor() const
{
    if (m_viewer->isSeekMode())
        return Qt::CrossCursor;
    return m_viewer->isViewing() && !m_viewer->isClickPicking() ? Qt::OpenHandCursor
                                                                : Qt::ArrowCursor;
}
