#include "mirabo/tree/SoMiraboAddDialog.h"

#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/NodeCategory.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoType.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <algorithm>

using mirabo::NodeCategory;

namespace {

struct CategoryEntry {
    NodeCategory category;
    const char* text;
    const char* icon;
};

constexpr CategoryEntry kCategories[] = {
    {NodeCategory::Appearance, QT_TR_NOOP("Appearance"), "appearance"},
    {NodeCategory::Callback, QT_TR_NOOP("Callback"), "callback"},
    {NodeCategory::Camera, QT_TR_NOOP("Camera"), "camera"},
    {NodeCategory::Dragger, QT_TR_NOOP("Dragger"), "manipulator"},
    {NodeCategory::Group, QT_TR_NOOP("Group"), "group"},
    {NodeCategory::Light, QT_TR_NOOP("Light"), "light"},
    {NodeCategory::Manipulator, QT_TR_NOOP("Manipulator"), "manipulator"},
    {NodeCategory::Nodekit, QT_TR_NOOP("NodeKit"), "nodekit"},
    {NodeCategory::Property, QT_TR_NOOP("Property"), "property"},
    {NodeCategory::Selection, QT_TR_NOOP("Selection"), "selection"},
    {NodeCategory::Separator, QT_TR_NOOP("Separator"), "separator"},
    {NodeCategory::Shape, QT_TR_NOOP("Shape"), "shape"},
    {NodeCategory::Switch, QT_TR_NOOP("Switch"), "switch"},
    {NodeCategory::Topology, QT_TR_NOOP("Topology"), "topology"},
    {NodeCategory::Transform, QT_TR_NOOP("Transform"), "transform"},
};

constexpr char kLastTypeKey[] = "/AddDialog/LastType";
constexpr int kIsType = Qt::UserRole; ///< data of entries that stand for a type
constexpr char kPrefix[] = "So";
constexpr int kShortestPrefixed = 3; ///< length of a text from which the prefix is dropped
constexpr int kLongestValue = 200;   ///< characters of a default that are shown
constexpr int kWidth = 84;           ///< characters
constexpr int kHeight = 32;          ///< lines

QString toQString(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

bool isListed(SoType type)
{
    return type.isDerivedFrom(SoNode::getClassTypeId()) && type.canCreateInstance()
           && !type.getName().view().starts_with("Unknown");
}

bool isType(const QTreeWidgetItem* item)
{
    return item && item->data(0, kIsType).toBool();
}

SoRef<SoNode> makeNode(SoType type)
{
    return SoRef<SoNode>(type.isBad() ? nullptr : static_cast<SoNode*>(type.createInstance()));
}

QString defaultText(const SoField* field)
{
    SbString text;
    field->get(text);
    const QString shown = toQString(text.getString()).simplified();
    return shown.size() > kLongestValue ? shown.left(kLongestValue) + QChar(0x2026) : shown;
}

/// Type names from `type` up to below the nodes' root.
QString lineage(SoType type)
{
    QStringList names;
    for (; type != SoNode::getClassTypeId() && !type.isBad(); type = type.getParent())
        names << toQString(type.getName().getString());
    return names.join(QString(" %1 ").arg(QChar(0x2192)));
}

} // namespace

SoMiraboAddDialog::SoMiraboAddDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName("AddDialog");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle("Add Nodes");
    setWindowIcon(mirabo::namedIcon("MiraboIcon"));
    createWidgets();
    fillCatalogue();
    chooseLastType();
    selectionChanged();
    connect(m_catalogue, &QTreeWidget::itemSelectionChanged, this,
            &SoMiraboAddDialog::selectionChanged);
    connect(m_catalogue, &QTreeWidget::itemDoubleClicked, this,
            &SoMiraboAddDialog::itemDoubleClick);
    connect(m_search, &QLineEdit::textChanged, this, &SoMiraboAddDialog::findNode);
}

SoMiraboAddDialog::~SoMiraboAddDialog() = default;

void SoMiraboAddDialog::createWidgets()
{
    m_catalogue = new QTreeWidget;
    m_catalogue->setHeaderLabel(tr("Type"));
    m_catalogue->setUniformRowHeights(true);
    m_catalogue->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_catalogue->setAccessibleName(tr("Node types by category"));
    m_fields = new QTreeWidget;
    m_fields->setHeaderLabels({tr("Field"), tr("Default")});
    m_fields->setRootIsDecorated(false);
    m_fields->setUniformRowHeights(true);
    m_fields->setAccessibleName(tr("Fields of the chosen type"));
    m_fieldsTitle = new QLabel;
    m_fieldsTitle->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_target = new QLabel;
    m_target->setWordWrap(true);
    m_target->hide();

    auto* right = new QWidget;
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(m_fieldsTitle);
    rightLayout->addWidget(m_fields);
    auto* splitter = new QSplitter;
    splitter->addWidget(m_catalogue);
    splitter->addWidget(right);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);

    m_search = new QLineEdit;
    m_search->setAccessibleName(tr("Name of the type to find"));
    m_search->setPlaceholderText(tr("Find a type"));
    m_search->setClearButtonEnabled(true);
    auto* icon = new QLabel;
    icon->setPixmap(mirabo::namedIcon("find").pixmap(16, 16));
    icon->setBuddy(m_search);
    m_add = new QPushButton(tr("&Add"));
    m_add->setObjectName("AddButton");
    m_add->setDefault(true);
    auto* cancel = new QPushButton(tr("&Cancel"));
    connect(m_add, &QPushButton::clicked, this, &SoMiraboAddDialog::addNode);
    connect(cancel, &QPushButton::clicked, this, &SoMiraboAddDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(m_search, 1);
    row->addWidget(m_add);
    row->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(m_target);
    layout->addLayout(row);

    for (QWidget* widget :
         std::initializer_list<QWidget*>{m_catalogue, m_fields, m_search, m_add, cancel, this})
        widget->installEventFilter(this);
    m_search->setFocus();
    const QFontMetrics metrics = fontMetrics();
    resize(kWidth * metrics.averageCharWidth(), kHeight * metrics.height());
    splitter->setSizes({width() / 2, width() / 2});
}

void SoMiraboAddDialog::fillCatalogue()
{
    QList<QTreeWidgetItem*> tops;
    for (const CategoryEntry& entry : kCategories) {
        tops << new QTreeWidgetItem({tr(entry.text)});
        tops.back()->setIcon(0, mirabo::namedIcon(entry.icon));
    }
    for (const SoType type : SoType::getAllDerivedFrom(SoNode::getClassTypeId())) {
        if (!isListed(type))
            continue;
        const NodeCategory category = mirabo::categoryOf(type);
        const auto* place =
            std::find_if(std::begin(kCategories), std::end(kCategories),
                         [category](const auto& e) { return e.category == category; });
        auto* item = new QTreeWidgetItem({toQString(type.getName().getString())});
        item->setData(0, kIsType, true);
        if (place == std::end(kCategories))
            tops << item;
        else
            tops[static_cast<int>(place - kCategories)]->addChild(item);
    }
    m_catalogue->addTopLevelItems(tops);
    m_catalogue->sortItems(0, Qt::AscendingOrder);
}

void SoMiraboAddDialog::chooseLastType()
{
    const QString name = mirabo::readText(kLastTypeKey);
    for (QTreeWidgetItemIterator at(m_catalogue); *at; ++at)
        if (isType(*at) && (*at)->text(0) == name)
            m_catalogue->setCurrentItem(*at);
}

SoType SoMiraboAddDialog::selectedType() const
{
    const QList<QTreeWidgetItem*> selected = m_catalogue->selectedItems();
    if (selected.isEmpty() || !isType(selected.front()))
        return SoType::badType();
    return SoType::fromName(selected.front()->text(0).toUtf8().constData());
}

void SoMiraboAddDialog::setTarget(const QString& text, bool canAdd)
{
    m_target->setText(text);
    m_target->setVisible(!text.isEmpty());
    m_canAdd = canAdd;
    updateAddButton();
}

void SoMiraboAddDialog::updateAddButton()
{
    m_add->setEnabled(m_canAdd && !selectedType().isBad());
}

void SoMiraboAddDialog::selectionChanged()
{
    const SoType type = selectedType();
    updateAddButton();
    if (type.getIndex() != m_shownType)
        showFieldsOf(type);
}

void SoMiraboAddDialog::showFieldsOf(SoType type)
{
    m_shownType = type.getIndex();
    m_fields->clear();
    m_fieldsTitle->setText(type.isBad() ? tr("Choose a type to see its fields.") : lineage(type));
    const SoRef<SoNode> node = makeNode(type);
    const SoFieldData* data = node ? node->getFieldData() : nullptr;
    QList<QTreeWidgetItem*> rows;
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* field = data->getField(node.get(), i);
        if (field->getFieldType() == SoField::INTERNAL)
            continue;
        const QString value = defaultText(field);
        rows << new QTreeWidgetItem({toQString(data->getFieldName(i).getString()), value});
        rows.back()->setToolTip(0, toQString(field->getTypeId().getName().getString()));
        rows.back()->setToolTip(1, value);
    }
    m_fields->addTopLevelItems(rows);
    m_fields->resizeColumnToContents(0);
}

void SoMiraboAddDialog::addNode()
{
    const SoType type = selectedType();
    const SoRef<SoNode> node = m_canAdd ? makeNode(type) : SoRef<SoNode>();
    if (!node)
        return;
    mirabo::writeSetting(kLastTypeKey, toQString(type.getName().getString()));
    Q_EMIT addRequested(node.get()); // last: the dialog may be gone
}

void SoMiraboAddDialog::itemDoubleClick(QTreeWidgetItem* item)
{
    if (isType(item))
        addNode();
}

QTreeWidgetItem* SoMiraboAddDialog::find(const QString& text, QTreeWidgetItem* start) const
{
    if (text.isEmpty() || m_catalogue->topLevelItemCount() == 0)
        return nullptr;
    const auto matches = [&text](const QTreeWidgetItem* item) {
        return isType(item) && item->text(0).contains(text, Qt::CaseInsensitive);
    };
    if (!start)
        start = m_catalogue->currentItem();
    constexpr auto kFlags = QTreeWidgetItemIterator::Selectable;
    for (QTreeWidgetItem* from : {start, m_catalogue->topLevelItem(0)})
        if (from)
            for (QTreeWidgetItemIterator at(from, kFlags); *at; ++at)
                if (matches(*at))
                    return *at;
    if (text.size() >= kShortestPrefixed && text.startsWith(kPrefix))
        return find(text.mid(int(qstrlen(kPrefix))), start);
    return nullptr;
}

void SoMiraboAddDialog::findNode()
{
    if (!m_search->text().isEmpty())
        m_catalogue->setCurrentItem(find(m_search->text(), m_catalogue->topLevelItem(0)));
}

void SoMiraboAddDialog::findAgain()
{
    QTreeWidgetItem* start = m_catalogue->topLevelItem(0);
    if (QTreeWidgetItem* current = m_catalogue->currentItem()) {
        QTreeWidgetItemIterator at(current);
        start = *++at ? *at : start;
    }
    if (QTreeWidgetItem* found = find(m_search->text(), start))
        m_catalogue->setCurrentItem(found);
}

bool SoMiraboAddDialog::isKeyHandled(QObject* watched, QKeyEvent* event)
{
    if (event->key() == Qt::Key_F && event->modifiers() == Qt::ControlModifier) {
        m_search->clear();
        m_search->setFocus();
        return true;
    }
    if (event->key() == Qt::Key_F3) {
        findAgain();
        return true;
    }
    if (watched == m_search) {
        // The choice can be moved without leaving the field.
        const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down
                           || event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
        return moves && QApplication::sendEvent(m_catalogue, event);
    }
    const QString text = event->text();
    const bool isCommand =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (isCommand || text.isEmpty()
        || !std::all_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); }))
        return false;
    m_search->setText(m_search->text() + text);
    m_search->setFocus();
    return true;
}

bool SoMiraboAddDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && isKeyHandled(watched, static_cast<QKeyEvent*>(event)))
        return true;
    return QDialog::eventFilter(watched, event);
}
