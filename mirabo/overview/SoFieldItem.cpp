#include "mirabo/overview/SoFieldItem.h"

#include "mirabo/overview/FieldText.h"
#include "mirabo/overview/SoMiraboList.h"
#include "mirabo/overview/ValueOrder.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QIcon>
#include <QPixmap>

namespace {

QString toText(const SbName& name)
{
    return QString::fromUtf8(name.getString());
}

/// A tool tip that Qt wraps and does not take for markup.
QString plainToolTip(const QString& text)
{
    QString html = text.toHtmlEscaped();
    return "<qt>" + html.replace('\n', "<br>") + "</qt>";
}

} // namespace

SoFieldItem::SoFieldItem(SoMiraboList* list, SoNode* node, SoNode* twin, int index, bool part)
    : m_list(list),
      m_node(node),
      m_field(node->getFieldData()->getField(node, index)),
      m_twin(twin),
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
    startWatching();
}

SoFieldItem::SoFieldItem(SoMiraboList* list, const SoFieldItem& other)
    : m_list(list),
      m_node(other.m_node),
      m_field(other.m_field),
      m_twin(other.m_twin),
      m_defaultField(other.m_defaultField),
      m_sensor(&SoFieldItem::fieldChanged, this),
      m_part(other.m_part)
{
    for (int column = 0; column < list->columnCount(); ++column)
        if (column != SoMiraboList::FieldValue)
            setText(column, other.text(column));
    startWatching();
}

SoFieldItem::~SoFieldItem()
{
    m_sensor.detach();
    if (m_list)
        m_list->forgetRow(this);
}

void SoFieldItem::startWatching()
{
    m_list->lookAfter(this);
    guardField();
    setLive(m_list->isInView());
    updateEnabled();
}

void SoFieldItem::guardField()
{
    // The fields of a class are members of its nodes and have a twin to compare with.
    if (!m_field || m_twin)
        return;
    m_guard = std::make_unique<mirabo::DeathGuard<SoField>>(m_field, [this] { fieldDied(); });
    refreshText(); // a field that dies has no value any more that could be kept
}

void SoFieldItem::setLive(bool on)
{
    if (!m_field)
        return;
    if (m_guard)
        refreshText();
    m_stale = true; // nobody told what happened before
    m_sensor.attach(on ? m_field : nullptr);
}

void SoFieldItem::fieldChanged(void* data, SoSensor*)
{
    auto* item = static_cast<SoFieldItem*>(data);
    item->letGo();
    if (item->m_list)
        item->m_list->rowChanged(item);
    else
        item->invalidate();
}

void SoFieldItem::letGo()
{
    // A queued sensor keeps the node that it reported alive until it hears of something else; a
    // row must not.
    m_sensor.detach();
    if (m_field)
        m_sensor.attach(m_field);
}

/// The field of a living node.
void SoFieldItem::fieldDied()
{
    const SoField* field = m_field;
    if (m_list)
        m_list->forgetRow(this);
    fieldGone(false);
    if (m_list)
        Q_EMIT m_list->fieldDied(field);
}

void SoFieldItem::fieldGone(bool stillWhole)
{
    if (!m_field)
        return;
    if (stillWhole) {
        m_wasDefault = m_field->isDefault();
        m_wasIgnored = m_field->isIgnored();
        m_wasConnected = m_field->isConnected();
        refreshText();
    }
    m_sensor.detach();
    m_guard.reset();
    m_field = nullptr;
    m_node = nullptr;
    m_defaultField = nullptr;
    m_stale = false;
    const QString name = text(SoMiraboList::NodeName);
    setText(SoMiraboList::NodeName,
            name.isEmpty() ? QStringLiteral("(deleted)") : name + " (deleted)");
    setDisabled(true);
}

bool SoFieldItem::isFieldDefault() const
{
    return m_field ? m_field->isDefault() : m_wasDefault;
}

void SoFieldItem::updateNodeName()
{
    if (m_node)
        setText(SoMiraboList::NodeName, toText(m_node->getName()));
}

void SoFieldItem::updateEnabled()
{
    if (m_field && !isDisabled() && !mirabo::isEditedInPlace(*m_field))
        setDisabled(true);
}

void SoFieldItem::updateValue()
{
    if (!m_field)
        return;
    refreshText();
    updateEnabled();
    emitDataChanged();
}

void SoFieldItem::refreshText() const
{
    mirabo::FieldText value = mirabo::fieldText(*m_field);
    m_value = std::move(value.text);
    m_isImage = value.isImage;
    m_stale = m_sensor.getAttachedField() == nullptr; // unwatched: may change unheard
}

QString SoFieldItem::copiedValue() const
{
    return m_field ? mirabo::copiedText(*m_field) : m_value;
}

QString SoFieldItem::placeText() const
{
    const QString place = m_node && m_list ? m_list->placeOf(m_node) : QString();
    const QString name =
        QString("%1 (%2)").arg(text(SoMiraboList::FieldName), text(SoMiraboList::FieldTypeColumn));
    return place.isEmpty() ? name : place + '.' + name;
}

QVariant SoFieldItem::valueData(int role) const
{
    const bool shows =
        role == Qt::DisplayRole || role == Qt::DecorationRole || role == Qt::ToolTipRole;
    if (shows && m_stale && m_field)
        refreshText();
    switch (role) {
    case Qt::DisplayRole:
        return m_isImage ? QVariant() : QVariant(m_value);
    case Qt::DecorationRole:
        return m_isImage ? QVariant(QIcon(QPixmap())) : QVariant();
    case Qt::ToolTipRole:
        return plainToolTip(m_field ? mirabo::toolTipText(*m_field, m_value) : m_value);
    default:
        return QTreeWidgetItem::data(SoMiraboList::FieldValue, role);
    }
}

bool SoFieldItem::hasFlag(int column) const
{
    if (column == SoMiraboList::Ignored)
        return m_field ? m_field->isIgnored() : m_wasIgnored;
    return column == SoMiraboList::Connected && (m_field ? m_field->isConnected() : m_wasConnected);
}

bool SoFieldItem::takeFlagChange()
{
    const bool ignored = hasFlag(SoMiraboList::Ignored);
    const bool connected = hasFlag(SoMiraboList::Connected);
    const bool changed = ignored != m_wasIgnored || connected != m_wasConnected;
    m_wasIgnored = ignored;
    m_wasConnected = connected;
    return changed;
}

QVariant SoFieldItem::data(int column, int role) const
{
    if (column == SoMiraboList::FieldValue)
        return valueData(role);
    if (role == Qt::ToolTipRole)
        return plainToolTip(placeText());
    if (role == Qt::DecorationRole && m_list && hasFlag(column))
        return m_list->headerItem()->icon(column);
    return QTreeWidgetItem::data(column, role);
}

bool SoFieldItem::operator<(const QTreeWidgetItem& other) const
{
    const int column = m_list ? m_list->sortColumn() : 0;
    if (column == SoMiraboList::Ignored || column == SoMiraboList::Connected)
        return hasFlag(column) && !static_cast<const SoFieldItem&>(other).hasFlag(column);
    return column >= 0 && mirabo::valueLess(text(column), other.text(column));
}
