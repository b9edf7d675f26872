#include "mirabo/overview/SoFieldItem.h"

#include "mirabo/extender/MrbFieldPresentation.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/overview/SoMiraboList.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>

#include <QIcon>
#include <QPixmap>

#include <utility>

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

SoFieldItem::Look::Look(const SoFieldItem& row)
{
    if (!m_graph || !row.m_list)
        return;
    m_held = row.m_list->hold(row.m_node);
    m_node = row.m_node;
    m_field = row.m_field;
}

SoFieldItem::SoFieldItem(SoMiraboList* list, SoNode* node, SoNode* twin, int index, bool part)
    : m_list(list),
      m_node(node),
      m_field(node->getFieldData()->getField(node, index)),
      m_twin(twin),
      m_defaultField(twin ? twin->getFieldData()->getField(twin, index) : nullptr),
      m_part(part),
      m_follower(list)
{
    setText(SoMiraboList::NodeType, toText(node->getTypeId().getName()));
    setText(SoMiraboList::NodeName, toText(node->getName()));
    setText(SoMiraboList::FieldTypeColumn, toText(getField()->getTypeId().getName()));
    setText(SoMiraboList::FieldName, toText(node->getFieldData()->getFieldName(index)));
    if (SoMiraboList::isNetNameMode())
        setText(SoMiraboList::NodeNetName, toText(node->getNetName()));
    startWatching();
}

SoFieldItem::SoFieldItem(SoMiraboList* list, const SoFieldItem& other)
    : m_list(list),
      m_node(other.getNode()),
      m_field(other.getField()),
      m_twin(other.m_twin),
      m_defaultField(other.m_defaultField),
      m_part(other.m_part),
      m_follower(list)
{
    for (int column = 0; column < list->columnCount(); ++column)
        if (column != SoMiraboList::FieldValue)
            setText(column, other.text(column));
    startWatching();
}

SoFieldItem::~SoFieldItem()
{
    m_follower.release();
    if (m_list)
        m_list->forgetRow(this);
}

void SoFieldItem::startWatching()
{
    m_list->lookAfter(this);
    setLive(m_list->isInView());
    updateEnabled();
}

void SoFieldItem::setLive(bool on)
{
    const Look look(*this);
    SoField* field = look.field();
    if (!field)
        return;
    // The fields of a class are members of its nodes and have a twin to compare with. Others may
    // die, and have no value any more then that could be kept.
    const bool mayDie = !m_twin;
    if (mayDie)
        refresh();
    m_stale = true; // nobody told what happened before
    m_isLive = on;
    if (!on && !mayDie)
        m_follower.release();
    else if (!m_follower.isFollowing())
        follow(field);
}

void SoFieldItem::follow(SoField* field)
{
    m_isLive = m_follower.follow(field, {.touched = [list = m_list] { list->noteChange(); },
                                         .dying = [this] { forgetField(false); },
                                         .died =
                                             [this] {
                                                 if (m_list)
                                                     m_list->takeDeaths();
                                             }})
               && m_isLive;
}

void SoFieldItem::leaveList()
{
    refresh(); // from now on nobody tells whether the node lives
    m_stale = false;
    m_follower.release();
    m_list->forgetRow(this);
    m_list = nullptr;
}

void SoFieldItem::forgetField(bool isWhole)
{
    SoField* field = m_field;
    if (!field)
        return;
    if (isWhole)
        m_atDeath = std::make_unique<Shown>(shownOf(*field));
    m_deadField = field;
    m_field = nullptr;
    m_node = nullptr;
    m_isDead = true;
}

const SoField* SoFieldItem::showDeath()
{
    m_showsDeath = true;
    m_follower.release();
    if (m_atDeath)
        m_shown = *std::exchange(m_atDeath, nullptr);
    m_defaultField = nullptr;
    m_stale = false;
    const QString name = text(SoMiraboList::NodeName);
    setText(SoMiraboList::NodeName,
            name.isEmpty() ? QStringLiteral("(deleted)") : name + " (deleted)");
    setDisabled(true);
    return m_deadField;
}

void SoFieldItem::readFlags() const
{
    const Look look(*this);
    const SoField* field = look.field();
    if (!field)
        return; // what was read last, or at its death
    m_shown.isDefault = field->isDefault();
    m_shown.isIgnored = field->isIgnored();
    m_shown.isConnected = field->isConnected();
}

bool SoFieldItem::isFieldDefault() const
{
    readFlags();
    return m_shown.isDefault;
}

void SoFieldItem::updateNodeName()
{
    const Look look(*this);
    if (const SoNode* node = look.node())
        setText(SoMiraboList::NodeName, toText(node->getName()));
}

void SoFieldItem::updateEnabled()
{
    if (isDisabled())
        return;
    const Look look(*this);
    const SoField* field = look.field();
    if (field && !MrbFieldPresentations::of(*field)->isEditable(*field))
        setDisabled(true);
}

void SoFieldItem::updateValue()
{
    if (!m_field)
        return;
    refresh();
    updateEnabled();
    emitDataChanged();
}

SoFieldItem::Shown SoFieldItem::shownOf(const SoField& field)
{
    MrbFieldPresentation::Shown text = MrbFieldPresentations::of(field)->shown(field);
    return {std::move(text.text), text.isImage, field.isDefault(), field.isIgnored(),
            field.isConnected()};
}

void SoFieldItem::refresh() const
{
    const Look look(*this);
    const SoField* field = look.field();
    if (!field)
        return;
    m_shown = shownOf(*field);
    m_stale = !m_isLive; // may change unheard
}

int SoFieldItem::takeChange()
{
    if (m_stale)
        refresh();
    int change = None;
    if (m_shown.value != m_painted.value || m_shown.isImage != m_painted.isImage
        || m_shown.isDefault != m_painted.isDefault)
        change |= Value;
    if (m_shown.isIgnored != m_painted.isIgnored || m_shown.isConnected != m_painted.isConnected)
        change |= Flags;
    m_painted = m_shown;
    return change;
}

QString SoFieldItem::copiedValue() const
{
    const Look look(*this);
    const SoField* field = look.field();
    return field ? MrbFieldPresentations::of(*field)->clipboardText(*field) : m_shown.value;
}

QString SoFieldItem::placeText() const
{
    const Look look(*this);
    const SoNode* node = look.node();
    const QString place = node && m_list ? m_list->placeOf(node) : QString();
    const QString name =
        QString("%1 (%2)").arg(text(SoMiraboList::FieldName), text(SoMiraboList::FieldTypeColumn));
    return place.isEmpty() ? name : place + '.' + name;
}

QString SoFieldItem::valueToolTip() const
{
    const Look look(*this);
    const SoField* field = look.field();
    return plainToolTip(field ? MrbFieldPresentations::of(*field)->toolTip(*field, m_shown.value)
                              : m_shown.value);
}

QVariant SoFieldItem::valueData(int role) const
{
    const bool shows =
        role == Qt::DisplayRole || role == Qt::DecorationRole || role == Qt::ToolTipRole;
    if (shows && m_stale)
        refresh();
    switch (role) {
    case Qt::DisplayRole:
        return m_shown.isImage ? QVariant() : QVariant(m_shown.value);
    case Qt::DecorationRole:
        return m_shown.isImage ? QVariant(QIcon(QPixmap())) : QVariant();
    case Qt::ToolTipRole:
        return valueToolTip();
    default:
        return QTreeWidgetItem::data(SoMiraboList::FieldValue, role);
    }
}

bool SoFieldItem::hasFlag(int column) const
{
    if (column != SoMiraboList::Ignored && column != SoMiraboList::Connected)
        return false;
    readFlags();
    return column == SoMiraboList::Ignored ? m_shown.isIgnored : m_shown.isConnected;
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

MrbSortKey SoFieldItem::sortKey(int column) const
{
    const QString shown = text(column);
    if (column == SoMiraboList::FieldValue) {
        const Look look(*this);
        if (const SoField* field = look.field())
            return MrbFieldPresentations::of(*field)->sortKey(*field, shown);
    }
    return MrbSortKey::ofText(shown);
}

bool SoFieldItem::operator<(const QTreeWidgetItem& other) const
{
    const int column = m_list ? m_list->sortColumn() : 0;
    if (column == SoMiraboList::Ignored || column == SoMiraboList::Connected)
        return hasFlag(column) && !static_cast<const SoFieldItem&>(other).hasFlag(column);
    return column >= 0 && sortKey(column) < static_cast<const SoFieldItem&>(other).sortKey(column);
}
