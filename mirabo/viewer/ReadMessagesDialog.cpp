#include "mirabo/viewer/ReadMessagesDialog.h"

#include "mirabo/core/Modal.h"
#include "mirabo/viewer/ReadMessagesModel.h"

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace mirabo {

namespace {

constexpr int kFirstColumns = 100; // characters
constexpr int kFirstLines = 20;
constexpr int kFewestColumns = 52;
constexpr int kFileColumns = 24; // at most, until the user makes it wider
constexpr int kNumberColumns = 7;
constexpr int kHintMargin = 12;

/// Makes rows as high as their text needs in the width of its column, which a tree view does not
/// consider by itself.
class WrappingDelegate final : public QStyledItemDelegate {
public:
    explicit WrappingDelegate(QTreeView* view) : QStyledItemDelegate(view), m_view(view) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem sized(option);
        const bool wraps = index.column() == ReadMessagesModel::Text;
        sized.features.setFlag(QStyleOptionViewItem::WrapText, wraps);
        if (wraps)
            sized.rect = QRect(0, 0, m_view->columnWidth(index.column()), 1);
        return QStyledItemDelegate::sizeHint(sized, index);
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->decorationAlignment = Qt::AlignHCenter | Qt::AlignTop; // beside the first line
        option->features.setFlag(QStyleOptionViewItem::WrapText,
                                 index.column() == ReadMessagesModel::Text);
    }

private:
    QTreeView* m_view; // Owns us.
};

class MessagesView final : public QTreeView {
public:
    explicit MessagesView(QWidget* parent) : QTreeView(parent)
    {
        setObjectName("readMessages");
        setRootIsDecorated(false);
        setIndentation(0);
        setAllColumnsShowFocus(true);
        setSelectionMode(ExtendedSelection);
        setEditTriggers(NoEditTriggers);
        setTextElideMode(Qt::ElideMiddle);
        setContextMenuPolicy(Qt::CustomContextMenu);
        setItemDelegate(new WrappingDelegate(this));
        connect(header(), &QHeaderView::sectionResized, this, [this](int section) {
            if (section == ReadMessagesModel::Text)
                scheduleDelayedItemsLayout(); // rows have other heights now
        });
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QTreeView::paintEvent(event);
        if (model()->rowCount() > 0)
            return;
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(
            viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
            Qt::AlignCenter | Qt::TextWordWrap,
            ReadMessagesDialog::tr("Errors and warnings of the file that was read last are listed "
                                   "here. There are none."));
    }
};

void copyText(const QStringList& lines)
{
    if (!lines.isEmpty())
        QGuiApplication::clipboard()->setText(lines.join('\n') + '\n');
}

} // namespace

ReadMessagesDialog::ReadMessagesDialog(QWidget* parent)
    : QDialog(parent),
      m_model(new ReadMessagesModel(this)),
      m_view(new MessagesView(this)),
      m_summary(new QLabel(this)),
      m_copy(new QAction(tr("&Copy"), this)),
      m_copyAll(new QAction(tr("Copy &All"), this))
{
    setObjectName("ReadMessagesDialog");
    setWindowIcon(iconOf(ReadMessage::Warning));
    m_view->setAccessibleName(tr("Messages of the last file that was read"));
    m_view->setModel(m_model);
    m_copy->setShortcut(QKeySequence::Copy);
    m_copy->setIcon(QIcon(":/Mirabo_icons/Icons/editcopy.png"));
    addAction(m_copy);
    connect(m_copy, &QAction::triggered, this, &ReadMessagesDialog::copySelected);
    connect(m_copyAll, &QAction::triggered, this, &ReadMessagesDialog::copyAll);
    connect(m_view, &QWidget::customContextMenuRequested, this, &ReadMessagesDialog::showMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ReadMessagesDialog::updateCopy);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_view);
    m_summary->setWordWrap(true);
    layout->addWidget(m_summary);
    layout->addWidget(createButtons());
    const QFontMetrics metrics(font());
    const int character = metrics.averageCharWidth();
    QHeaderView* header = m_view->header();
    for (const int column : {ReadMessagesModel::Line, ReadMessagesModel::ColumnInLine})
        header->resizeSection(
            column, std::max(kNumberColumns * character, header->sectionSizeHint(column)));
    setMinimumWidth(kFewestColumns * character);
    resize(QSize(kFirstColumns * character, kFirstLines * metrics.lineSpacing())
               .boundedTo(parent->screen()->availableSize()));
    setMessages({});
}

ReadMessagesDialog::~ReadMessagesDialog() = default;

QWidget* ReadMessagesDialog::createButtons()
{
    auto* buttons = new QDialogButtonBox(this);
    const auto add = [buttons](QAction* action) {
        QPushButton* button = buttons->addButton(action->text(), QDialogButtonBox::ActionRole);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, action, &QAction::trigger);
        connect(action, &QAction::changed, button,
                [button, action] { button->setEnabled(action->isEnabled()); });
    };
    add(m_copy);
    add(m_copyAll);
    buttons->addButton(QDialogButtonBox::Close)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    return buttons;
}

void ReadMessagesDialog::setMessages(const ReadMessages& messages)
{
    m_model->setMessages(messages);
    const int widest = kFileColumns * fontMetrics().averageCharWidth();
    if (!messages.isEmpty())
        m_view->resizeColumnToContents(ReadMessagesModel::File);
    if (m_view->columnWidth(ReadMessagesModel::File) > widest)
        m_view->setColumnWidth(ReadMessagesModel::File, widest);
    const QString name = QFileInfo(messages.fileName()).fileName();
    setWindowTitle(name.isEmpty() ? tr("Messages") : tr("Messages of %1").arg(name));
    QString summary = messages.summary();
    if (messages.numLeftOut() > 0)
        summary += tr("; %1 of them are not listed").arg(messages.numLeftOut());
    m_summary->setText(summary);
    m_copyAll->setEnabled(!messages.isEmpty());
    updateCopy();
}

void ReadMessagesDialog::present()
{
    show();
    raise();
    activateWindow();
    m_view->setFocus();
}

void ReadMessagesDialog::updateCopy()
{
    m_copy->setEnabled(m_view->selectionModel()->hasSelection());
}

void ReadMessagesDialog::showMenu(const QPoint& position)
{
    Modal<QMenu> menu(m_view);
    menu->addActions({m_copy, m_copyAll});
    menu.run(m_view->viewport()->mapToGlobal(position));
}

void ReadMessagesDialog::copySelected() const
{
    QModelIndexList rows = m_view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const QModelIndex& row : qAsConst(rows))
        lines << m_model->messages().kept()[row.row()].toText();
    copyText(lines);
}

void ReadMessagesDialog::copyAll() const
{
    QStringList lines;
    for (const ReadMessage& message : m_model->messages().kept())
        lines << message.toText();
    copyText(lines);
}

} // namespace mirabo
