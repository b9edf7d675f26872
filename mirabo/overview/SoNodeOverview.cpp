#include "mirabo/overview/SoNodeOverview.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoNodeOverviewList.h"

#include <kalmyr/core/SoNode.h>

#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdint>

namespace {

QString addressText(const SoNode* node)
{
    return "0x" + QString::number(reinterpret_cast<std::uintptr_t>(node), 16);
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
    : QWidget(parent), m_sensor(&SoNodeOverview::nodeChanged, this)
{
    setObjectName("SoNodeOverview");
    m_sensor.setDeleteCallback(&SoNodeOverview::nodeDied, this);
    buildWidgets(withCloseButton);
    connectWidgets();
    languageChange();
    clear();
}

SoNodeOverview::~SoNodeOverview()
{
    m_sensor.detach();
}

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
    m_sensor.detach();
    m_node = node;
    m_list->setNode(node);
    m_sensor.attach(node);
    showName(kit);
    showIdentity();
    m_list->updateField(nullptr);
    m_nodeNameValue->setEnabled(true);
    m_showChangedCheckBox->setEnabled(true);
    m_overrideCheckBox->setEnabled(node->getField("override") != nullptr);
    m_overrideCheckBox->setChecked(node->isOverride());
    m_showChangedCheckBox->setChecked(false);
    m_list->showChangedValues(false);
    m_watchButton->setEnabled(false);
}

void SoNodeOverview::showName(SoNode*)
{
    m_nodeNameLabel->setText(tr("<b> Node Name </b>:"));
    m_nodeNameValue->setReadOnly(false);
    m_nodeNameValue->setText(QString::fromUtf8(m_node->getName().getString()));
    if (!m_nodeNetNameLabel)
        return;
    const SbName net = m_node->getNetName();
    m_nodeNetNameLabel->setText(tr("<b> Node NetName </b>: %1")
                                    .arg(net.isEmpty() ? QString("&lt No NetName&gt ")
                                                       : QString::fromUtf8(net.getString())));
}

void SoNodeOverview::showIdentity()
{
    m_nodeIdLabel->setText(tr("<b> Node Id </b>: ") + QString::number(m_node->getNodeId()));
    m_addressLabel->setText(tr("<b> Node Address </b>: %1").arg(addressText(m_node)));
}

void SoNodeOverview::clear()
{
    m_sensor.detach();
    m_node = nullptr;
    m_list->clear();
    m_nodeNameLabel->setText(tr("<b> Node Name </b>: "));
    m_nodeNameValue->clear();
    m_nodeNameValue->setEnabled(false);
    if (m_nodeNetNameLabel)
        m_nodeNetNameLabel->setText(tr("<b> Node NetName </b>: "));
    m_nodeIdLabel->setText(tr("<b> Node Id </b>: "));
    m_addressLabel->setText(tr("<b> Node Address </b>: "));
    m_overrideCheckBox->setEnabled(false);
    m_overrideCheckBox->setChecked(false);
    m_showChangedCheckBox->setEnabled(false);
    m_watchButton->setEnabled(false);
}

void SoNodeOverview::setWatchEnabled(bool on)
{
    m_watchButton->setEnabled(on);
}

void SoNodeOverview::refresh()
{
    if (!m_node)
        return;
    m_overrideCheckBox->setChecked(m_node->isOverride());
    m_nodeIdLabel->setText(tr("<b> Node Id </b>: ") + QString::number(m_node->getNodeId()));
}

void SoNodeOverview::nodeChanged(void* data, SoSensor*)
{
    static_cast<SoNodeOverview*>(data)->refresh();
}

void SoNodeOverview::nodeDied(void* data, SoSensor*)
{
    auto* panel = static_cast<SoNodeOverview*>(data);
    panel->m_node = nullptr;
    panel->m_nodeNameValue->setText(tr("(deleted)"));
    panel->m_nodeNameValue->setEnabled(false);
    panel->m_overrideCheckBox->setEnabled(false);
    panel->m_watchButton->setEnabled(false);
}

void SoNodeOverview::nameEdited(QString text)
{
    if (!m_node)
        return;
    m_node->setName(SbName(text.toUtf8().constData()));
    Q_EMIT nodeRenamed(m_node);
    nodeNameChanged(m_node);
}

void SoNodeOverview::nodeNameChanged(SoNode* node)
{
    if (!m_node || node != m_node)
        return;
    const QString accepted = QString::fromUtf8(m_node->getName().getString());
    if (m_nodeNameValue->text() != accepted) {
        const int cursor = m_nodeNameValue->cursorPosition();
        m_nodeNameValue->setText(accepted);
        m_nodeNameValue->setCursorPosition(cursor);
    }
    for (int row = 0; row < m_list->topLevelItemCount(); ++row)
        m_list->fieldItem(row)->updateNodeName();
}

void SoNodeOverview::overrideButtonStateChanged()
{
    Q_EMIT overrideRequested(m_overrideCheckBox->isChecked());
}
