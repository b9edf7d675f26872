#include "mirabo/overview/SoFieldItem.h"

#include "mirabo/overview/FieldText.h"
#include "mirabo/overview/SoMiraboList.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QIcon>

namespace {

QString toText(const SbName& name)
{
    return QString::fromUtf8(name.getString());
}

const QIcon& ignoreIcon()
{
    static const QIcon icon(":/Mirabo_icons/Icons/ignore.png");
    return icon;
}

const QIcon& connectionIcon()
{
    static const QIcon icon(":/Mirabo_icons/Icons/connection.png");
    return icon;
}

} // namespace

SoFieldItem::SoFieldItem(SoMiraboList* list, SoNode* node, const SoNode* twin, int index, bool part)
    : m_node(node),
      m_field(node->getFieldData()->getField(node, index)),
      m_defaultField(twin ? twin->getFieldData()->getField(twin, index) : nullptr),
      m_sensor(&SoFieldItem::fieldChanged, this),
      m_part(part)
{
    setText(SoMiraboList::NodeType, toText(node->getTypeId().getName()));
    setText(SoMiraboList::NodeName, toText(node->getName()));
    setText(SoMiraboList::FieldTypeColumn, toText(m_field->getTypeId().getName()));
    setText(SoMiraboList::FieldName, toText(node->getFieldData()->getFieldName(index)));
    if (SoMiraboList::isNetNameMode())
        setText(SoMiraboList::NodeNetName, toText(node->getNetName()));
    watch();
    list->addTopLevelItem(this); // last: a text set on an attached row looks its row up
}

SoFieldItem::SoFieldItem(SoMiraboList* list, const SoFieldItem& other)
    : m_node(other.m_node),
      m_field(other.m_field),
      m_defaultField(other.m_defaultField),
      m_sensor(&SoFieldItem::fieldChanged, this),
      m_part(other.m_part)
{
    for (int column = 0; column < list->columnCount(); ++column)
        setText(column, other.text(column));
    watch();
    list->addTopLevelItem(this);
}

SoFieldItem::~SoFieldItem()
{
    m_sensor.detach();
}

void SoFieldItem::watch()
{
    m_sensor.setDeleteCallback(&SoFieldItem::fieldDied, this);
    if (m_field)
        m_sensor.attach(m_field);
}

SoMiraboList* SoFieldItem::list() const
{
    return static_cast<SoMiraboList*>(treeWidget());
}

void SoFieldItem::fieldChanged(void* data, SoSensor*)
{
    auto* item = static_cast<SoFieldItem*>(data);
    item->invalidate();
    if (SoMiraboList* owner = item->list())
        owner->rowChanged(item);
}

void SoFieldItem::fieldDied(void* data, SoSensor*)
{
    auto* item = static_cast<SoFieldItem*>(data);
    item->m_field = nullptr;
    item->m_node = nullptr;
    item->m_stale = false;
    item->setText(SoMiraboList::NodeName, QStringLiteral("(deleted)"));
    item->setDisabled(true);
}

bool SoFieldItem::isFieldDefault() const
{
    return !m_field || m_field->isDefault();
}

void SoFieldItem::updateNodeName()
{
    if (m_node)
        setText(SoMiraboList::NodeName, toText(m_node->getName()));
}

void SoFieldItem::updateValue()
{
    m_stale = false;
    if (!m_field)
        return;
    const mirabo::FieldText value = mirabo::fieldText(*m_field);
    if (value.isImage)
        setIcon(SoMiraboList::FieldValue, QIcon(QPixmap()));
    else
        setText(SoMiraboList::FieldValue, value.text);
    // A row once disabled stays so: it tells that the value is not edited in place.
    if (!value.editable)
        setDisabled(true);
    setIcon(SoMiraboList::Ignored, m_field->isIgnored() ? ignoreIcon() : QIcon());
    setIcon(SoMiraboList::Connected, m_field->isConnected() ? connectionIcon() : QIcon());
}

QVariant SoFieldItem::data(int column, int role) const
{
    if (m_stale
        && (role == Qt::DisplayRole || role == Qt::DecorationRole || role == Qt::ToolTipRole))
        const_cast<SoFieldItem*>(this)->updateValue(); // a cache of what the field holds
    if (role == Qt::ToolTipRole && column == SoMiraboList::FieldValue)
        return text(column);
    return QTreeWidgetItem::data(column, role);
}
