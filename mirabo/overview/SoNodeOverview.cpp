#include "mirabo/overview/SoNodeOverview.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"
#include "mirabo/overview/KitParts.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoNodeOverviewList.h"

#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/lights/SoLight.h>
#include <kalmyr/nodes/SoTransformation.h>
#include <kalmyr/shapes/SoShape.h>

#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdint>
#include <utility>

namespace {

/// Between two texts of the id while the node changes all the time.
constexpr int kPauseMs = 250;

QString addressText(const SoNode* node)
{
    return "0x" + QString::number(reinterpret_cast<std::uintptr_t>(node), 16);
}

/// Whether a node's properties can hold for what comes after it: its flag says so by a field, or
/// it is a property that traversals keep in their state.
bool canOverride(const SoNode* node)
{
    if (node->getField("override"))
        return true;
    return !node->getInternalChildren() && !node->isOfType(SoShape::getClassTypeId())
           && !node->isOfType(SoTransformation::getClassTypeId())
           && !node->isOfType(SoCamera::getClassTypeId())
           && !node->isOfType(SoLight::getClassTypeId());
}

template <class Widget>
Widget* named(Widget* widget, const char* name)
{
    widget->setObjectName(name);
    return widget;
}

QLabel* selectableLabel(const char* name, QWidget* parent)
{
    QLabel* label = named(new QLabel(parent), name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

SoNodeOverview::SoNodeOverview(QWidget* parent, bool withCloseButton)
    : QWidget(parent), m_follower(this)
{
    setObjectName("SoNodeOverview");
    buildWidgets(withCloseButton);
    connectWidgets();
    languageChange();
    clear();
}

SoNodeOverview::~SoNodeOverview() = default;

void SoNodeOverview::buildWidgets(bool withCloseButton)
{
    auto* layout = named(new QVBoxLayout(this), "m_nodeOverviewLayout");
    layout->setContentsMargins(4, 4, 4, 4);
    m_upperFrame = named(new QFrame(this), "m_upperFrame");
    layout->addWidget(m_upperFrame);
    buildHeader(withCloseButton);
    m_list = new SoNodeOverviewList(this);
    layout->addWidget(m_list, 1);
}

void SoNodeOverview::buildHeader(bool withCloseButton)
{
    auto* upper = named(new QVBoxLayout(m_upperFrame), "m_upperFrameLayout");
    upper->setContentsMargins(2, 2, 2, 2);
    auto* info = named(new QGridLayout, "m_nodeInfoLayout");
    upper->addLayout(info);
    m_nodeNameLabel = named(new QLabel(m_upperFrame), "m_nodeNameLabel");
    m_nodeNameValue = named(new QLineEdit(m_upperFrame), "m_nodeNameValue");
    m_nodeNameValue->setAccessibleName("Node name");
    m_nodeNameLabel->setBuddy(m_nodeNameValue);
    m_nodeIdLabel = selectableLabel("m_nodeIdLabel", m_upperFrame);
    m_addressLabel = selectableLabel("m_adressLabel", m_upperFrame);
    info->addWidget(m_nodeNameLabel, 0, 0);
    info->addWidget(m_nodeNameValue, 0, 1);
    info->addWidget(m_nodeIdLabel, 1, 0);
    info->addWidget(m_addressLabel, 1, 1);
    info->setColumnStretch(1, 1);
    if (SoMiraboList::isNetNameMode()) {
        m_nodeNetNameLabel = selectableLabel("m_nodeNetNameLabel", m_upperFrame);
        info->addWidget(m_nodeNetNameLabel, 2, 0, 1, 2);
    }
    auto* checks = named(new QHBoxLayout, "m_checkLayout");
    upper->addLayout(checks);
    buildChecks(checks, withCloseButton);
}

void SoNodeOverview::buildChecks(QHBoxLayout* checks, bool withCloseButton)
{
    m_overrideCheckBox = named(new QCheckBox(m_upperFrame), "m_overrideCheckBox");
    m_showChangedCheckBox = named(new QCheckBox(m_upperFrame), "m_showChangedCheckBox");
    m_watchButton = named(new QPushButton(m_upperFrame), "m_watchButton");
    m_watchButton->setEnabled(false);
    checks->addWidget(m_overrideCheckBox);
    checks->addWidget(m_showChangedCheckBox);
    checks->addStretch(1);
    checks->addWidget(m_watchButton);
    if (!withCloseButton)
        return;
    m_closeButton = named(new QPushButton(m_upperFrame), "m_closeButton");
    checks->addWidget(m_closeButton);
}

void SoNodeOverview::connectWidgets()
{
    m_pause.setParent(this);
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, [this] {
        if (m_idStale)
            followChange();
    });
    connect(m_showChangedCheckBox, &QCheckBox::toggled, m_list, &SoMiraboList::showChangedValues);
    connect(m_overrideCheckBox, &QCheckBox::released, this,
            &SoNodeOverview::overrideButtonStateChanged);
    connect(m_watchButton, &QPushButton::clicked, this, &SoNodeOverview::watchRequested);
    connect(m_nodeNameValue, &QLineEdit::textEdited, this, &SoNodeOverview::nameEdited);
    if (m_closeButton)
        connect(m_closeButton, &QPushButton::clicked, this, &SoNodeOverview::closeRequested);
}

void SoNodeOverview::languageChange()
{
    setWindowTitle(tr("Node Overview"));
    m_overrideCheckBox->setText(tr("Override"));
    m_overrideCheckBox->setToolTip(tr("Properties set by this node hold for everything below it"));
    m_showChangedCheckBox->setText(tr("Show Changed"));
    m_showChangedCheckBox->setToolTip(tr("Show only the fields that differ from their default"));
    m_watchButton->setText(tr("Watch"));
    m_watchButton->setToolTip(tr("Keep the selected field in the field watch"));
    if (m_closeButton)
        m_closeButton->setText(tr("Close"));
}

void SoNodeOverview::setNode(SoNode* node, SoNode* kit)
{
    if (!node) {
        clear();
        return;
    }
    const mirabo::GraphReading graph;
    forgetNode();
    if (!graph) {
        clear();
        return;
    }
    m_node = node;
    m_follower.follow(node, {.touched = [this] { noteChange(); },
                             .dying = [this] { m_node = nullptr; },
                             .died = [this] { showDeath(); }});
    m_list->setNode(node);
    showName(*node, kit);
    showId(*node);
    m_addressLabel->setText(tr("<b> Node Address </b>: %1").arg(addressText(node)));
    m_list->updateField(nullptr);
    enableWidgets();
    m_overrideCheckBox->setChecked(node->isOverride());
    m_showChangedCheckBox->setChecked(false);
    m_list->showChangedValues(false);
    m_watchButton->setEnabled(false);
}

SoRef<SoNode> SoNodeOverview::holdNode() const
{
    const SoRef<const SoRefCounter> held = m_follower.hold();
    return held ? SoRef<SoNode>(m_node) : SoRef<SoNode>();
}

/// In any thread.
void SoNodeOverview::noteChange()
{
    if (m_inView && !m_changeNoted.exchange(true))
        QMetaObject::invokeMethod(this, &SoNodeOverview::followChange, Qt::QueuedConnection);
}

void SoNodeOverview::showDeath()
{
    m_dead = true;
    m_nodeNameValue->setText((m_nodeNameValue->text() + ' ' + tr("(deleted)")).trimmed());
    enableWidgets();
    Q_EMIT nodeDied();
}

void SoNodeOverview::forgetNode()
{
    m_follower.release();
    m_node = nullptr;
    m_dead = false;
    m_isRenaming = false;
}

void SoNodeOverview::enableWidgets()
{
    const mirabo::GraphReading graph;
    const SoRef<SoNode> node = graph ? holdNode() : nullptr;
    m_nodeNameValue->setEnabled(m_node);
    m_showChangedCheckBox->setEnabled(m_node);
    m_overrideCheckBox->setEnabled(node && canOverride(node.get()));
    if (!m_node)
        m_watchButton->setEnabled(false);
    // The last values of a dead node stay, greyed.
    for (QLabel* label : {m_nodeNameLabel, m_nodeIdLabel, m_addressLabel, m_nodeNetNameLabel})
        if (label)
            label->setEnabled(!m_dead);
}

void SoNodeOverview::showName(const SoNode& node, SoNode* kit)
{
    const QString part = mirabo::partName(kit, &node);
    const bool isPart = !part.isEmpty();
    m_nodeNameLabel->setText(isPart ? tr("<b> Part Name </b>:") : tr("<b> Node Name </b>:"));
    m_nodeNameValue->setReadOnly(isPart);
    m_nodeNameValue->setText(isPart ? part : QString::fromUtf8(node.getName().getString()));
    m_nodeNameValue->setCursorPosition(0);
    showNetName(node);
}

void SoNodeOverview::showNetName(const SoNode& node)
{
    if (!m_nodeNetNameLabel)
        return;
    const SbName net = node.getNetName();
    m_nodeNetNameLabel->setText(tr("<b> Node NetName </b>: %1")
                                    .arg(net.isEmpty()
                                             ? QString("&lt No NetName&gt ")
                                             : QString::fromUtf8(net.getString()).toHtmlEscaped()));
}

void SoNodeOverview::clear()
{
    forgetNode();
    m_list->setNode(nullptr);
    m_nodeNameLabel->setText(tr("<b> Node Name </b>: "));
    m_nodeNameValue->clear();
    m_nodeNameValue->setReadOnly(false);
    if (m_nodeNetNameLabel)
        m_nodeNetNameLabel->setText(tr("<b> Node NetName </b>: "));
    m_nodeIdLabel->setText(tr("<b> Node Id </b>: "));
    m_addressLabel->setText(tr("<b> Node Address </b>: "));
    m_overrideCheckBox->setChecked(false);
    enableWidgets();
}

void SoNodeOverview::setWatchEnabled(bool on)
{
    m_watchButton->setEnabled(on && m_node);
}

void SoNodeOverview::refreshAll()
{
    const mirabo::GraphReading graph;
    const SoRef<SoNode> node = graph ? holdNode() : nullptr;
    if (!node)
        return;
    m_overrideCheckBox->setChecked(node->isOverride());
    showId(*node);
    refreshName();
    m_list->updateField(nullptr);
}

void SoNodeOverview::showId(const SoNode& node)
{
    m_nodeIdLabel->setText(tr("<b> Node Id </b>: ") + QString::number(node.getNodeId()));
}

/// A node that moves has another id with every frame, and each new text lays the panel out anew.
void SoNodeOverview::followChange()
{
    const mirabo::GraphReading graph;
    if (!graph) {
        mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds,
                          [this] { followChange(); });
        return;
    }
    m_changeNoted = false;
    const SoRef<SoNode> node = holdNode();
    if (!node)
        return;
    m_overrideCheckBox->setChecked(node->isOverride());
    m_idStale = m_pause.isActive();
    if (m_idStale)
        return;
    showId(*node);
    m_pause.start(kPauseMs);
}

void SoNodeOverview::showEvent(QShowEvent* event)
{
    m_inView = true;
    mirabo::whenReadable(this, [this] { refreshAll(); });
    QWidget::showEvent(event);
}

void SoNodeOverview::hideEvent(QHideEvent* event)
{
    m_inView = false;
    QWidget::hideEvent(event);
}

void SoNodeOverview::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        languageChange();
    QWidget::changeEvent(event);
}

void SoNodeOverview::nameEdited(QString text)
{
    {
        const mirabo::GraphReading graph; // no other thread edits: the next lock can be had
        if (!graph) {
            renameLater();
            return;
        }
        const SoRef<SoNode> node = holdNode();
        const SoWriteLock lock;
        if (!node || !lock)
            return;
        node->setName(SbName(text.toUtf8().constData()));
    }
    Q_EMIT nodeRenamed(m_node);
    refreshName();
}

void SoNodeOverview::renameLater()
{
    if (std::exchange(m_isRenaming, true))
        return;
    mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds, [this] {
        if (std::exchange(m_isRenaming, false))
            nameEdited(m_nodeNameValue->text());
    });
}

void SoNodeOverview::nodeNameChanged(SoNode* node)
{
    if (m_node && node == m_node)
        refreshName();
}

void SoNodeOverview::refreshName()
{
    const mirabo::GraphReading graph;
    const SoRef<SoNode> node = graph ? holdNode() : nullptr;
    if (!node)
        return;
    const QString accepted = QString::fromUtf8(node->getName().getString());
    const bool isEdited = m_isRenaming; // what was typed is not the name yet
    if (!isEdited && !m_nodeNameValue->isReadOnly() && m_nodeNameValue->text() != accepted) {
        const int cursor = m_nodeNameValue->cursorPosition();
        m_nodeNameValue->setText(accepted);
        m_nodeNameValue->setCursorPosition(cursor);
    }
    showNetName(*node);
    m_list->updateNodeName(node.get());
}

void SoNodeOverview::overrideButtonStateChanged()
{
    Q_EMIT overrideRequested(m_overrideCheckBox->isChecked());
}
