#include "ListDelegate.h"

#include "Expression.h"
#include "FieldNumbers.h"
#include "ListCells.h"
#include "ListChanges.h"
#include "ListModel.h"
#include "Looks.h"
#include "MarkedLineEdit.h"
#include "NumberText.h"
#include "TextBlock.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/core/SoField.h>

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QPainter>
#include <QTextDocument>
#include <QToolTip>

#include <algorithm>

namespace {

/// A box in the place of a cell.
TextBlock* makeBox(const QString& text, QWidget* parent)
{
    auto* box = new TextBlock(parent);
    box->setLineWrapMode(QPlainTextEdit::NoWrap);
    box->document()->setDocumentMargin(2);
    box->setFrameShape(QFrame::Box);
    box->setFrameShadow(QFrame::Plain);
    box->setPlainText(text);
    return box;
}

/// Texts with other line ends than LF would not come out of a box as they went in.
bool fitsBox(const QString& text)
{
    return std::none_of(text.begin(), text.end(), [](QChar c) {
        return c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator
               || c == QChar(0xfdd0) || c == QChar(0xfdd1);
    });
}

bool isInside(const QWidget* widget, const QWidget* ancestor)
{
    return widget && (widget == ancestor || ancestor->isAncestorOf(widget));
}

} // namespace

ListDelegate::ListDelegate(MrbFieldEdit& edit, const ListCells& cells, ListChanges& changes,
                           const ListModel& model, QObject* parent)
    : QStyledItemDelegate(parent), m_edit(edit), m_cells(cells), m_changes(changes), m_model(model)
{
}

ListDelegate::~ListDelegate() = default;

void ListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    if (m_model.cellColumn(index.column()) >= 0) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const int inset = std::max(2, option.rect.height() / 6);
    const QRect swatch = option.rect.adjusted(inset, inset, -inset, -inset);
    const auto color = index.data(Qt::DecorationRole).value<QColor>();
    if (option.state & QStyle::State_Selected)
        painter->fillRect(option.rect, option.palette.highlight());
    if (color.alpha() < 255) {
        painter->fillRect(swatch, option.palette.base());
        painter->fillRect(swatch, QBrush(option.palette.color(QPalette::Mid), Qt::Dense4Pattern));
    }
    painter->fillRect(swatch, color);
    painter->setPen(option.palette.color(QPalette::Mid));
    painter->drawRect(swatch.adjusted(0, 0, -1, -1));
}

QWidget* ListDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                    const QModelIndex& index) const
{
    // The view makes editors only through this const operation; one at a time.
    auto* self = const_cast<ListDelegate*>(this);
    if (!self->finish())
        return nullptr;
    const QString text = m_model.cellText(index);
    const auto takeTyped = [self] { self->takeTyped(); };
    if (m_cells.input() == ListCells::Input::Box && fitsBox(text)) {
        TextBlock* box = makeBox(text, parent);
        m_editor = box;
        connect(box, &QPlainTextEdit::textChanged, self, takeTyped);
        connect(box, &QPlainTextEdit::textChanged, box,
                [self, box] { self->updateEditorGeometry(box, {}, self->m_cell); });
    } else {
        auto* line = new MarkedLineEdit(parent);
        m_editor = line;
        connect(line, &QLineEdit::textEdited, self, takeTyped);
        line->setHint(hint());
        line->setFrame(false);
        line->setAutoFillBackground(true);
        if (m_cells.input() == ListCells::Input::Choice) {
            auto* box = new QComboBox(parent);
            box->setLineEdit(line);
            box->setInsertPolicy(QComboBox::NoInsert);
            box->addItems(m_cells.choices());
            box->setFrame(false);
            connect(box, QOverload<int>::of(&QComboBox::activated), self, takeTyped);
            m_editor = box;
        }
    }
    m_cell = index;
    m_editor->setAccessibleName(
        QString("%1, row %2")
            .arg(m_model.headerData(index.column(), Qt::Horizontal, Qt::DisplayRole).toString())
            .arg(index.row()));
    return m_editor;
}

MarkedLineEdit* ListDelegate::lineEdit() const
{
    if (auto* box = qobject_cast<QComboBox*>(m_editor))
        return qobject_cast<MarkedLineEdit*>(box->lineEdit());
    return qobject_cast<MarkedLineEdit*>(m_editor);
}

QString ListDelegate::hint() const
{
    const FieldNumbers* numbers = m_cells.numbers();
    return numbers ? kindText(numbers->kind()) + '\n' + expressionHelp() : QString();
}

QString ListDelegate::typedText() const
{
    if (const MarkedLineEdit* line = lineEdit())
        return line->text();
    return static_cast<const TextBlock*>(m_editor.data())->exactText();
}

void ListDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (editor != m_editor || m_isTyped)
        return;
    m_shown = m_model.cellText(index);
    if (auto* combo = qobject_cast<QComboBox*>(editor))
        combo->setCurrentIndex(combo->findText(m_shown));
    if (MarkedLineEdit* line = lineEdit()) {
        if (line->text() != m_shown)
            line->setText(m_shown);
        line->selectAll();
        return;
    }
    auto* box = static_cast<TextBlock*>(editor);
    box->showText(m_shown);
    box->selectAll();
}

void ListDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex&) const
{
    constexpr int kMaxLines = 8;
    constexpr int kLeastCharacters = 12;
    const QWidget* room = editor->parentWidget();
    const QFontMetrics metrics = editor->fontMetrics();
    QRect place = option.rect.isValid() ? option.rect : editor->geometry();
    place.setWidth(std::max(place.width(), metrics.averageCharWidth() * kLeastCharacters));
    if (auto* box = qobject_cast<QPlainTextEdit*>(editor)) {
        const int lines = std::min(box->document()->blockCount(), kMaxLines);
        const int margins =
            2 * (box->frameWidth() + static_cast<int>(box->document()->documentMargin()));
        const int scrollBar = lines > 1 ? metrics.height() : 0;
        box->setVerticalScrollBarPolicy(lines == 1 ? Qt::ScrollBarAlwaysOff
                                                   : Qt::ScrollBarAsNeeded);
        box->setHorizontalScrollBarPolicy(lines == 1 ? Qt::ScrollBarAlwaysOff
                                                     : Qt::ScrollBarAsNeeded);
        place.setHeight(std::max(option.rect.isValid() ? option.rect.height() : metrics.height(),
                                 lines * metrics.lineSpacing() + margins + scrollBar));
    }
    // All of it is to be seen.
    place.moveRight(std::min(place.right(), std::max(room->width(), place.width()) - 1));
    place.moveBottom(std::min(place.bottom(), std::max(room->height(), place.height()) - 1));
    editor->setGeometry(place);
}

void ListDelegate::takeTyped()
{
    if (!m_editor || !m_cell.isValid())
        return;
    const QPointer<QWidget> editor = m_editor;
    const QString text = typedText();
    const int row = m_cell.row();
    if (!m_isTyped) {
        m_isTyped = true;
        m_edit.beginGesture();
        m_edit.read([&](const SoField& field) {
            const auto& list = static_cast<const SoMField&>(field);
            m_before.reset(static_cast<SoMField*>(list.createTwin().release()));
            if (m_before && row < list.getNum())
                m_before->replaceValues(0, m_before->getNum(), list, row, 1);
            else
                m_before.reset();
        });
    }
    QString problem;
    if (text == m_shown) {
        m_edit.cancelGesture(); // the bits from before, which the text may not tell in full
        if (editor)
            m_edit.beginGesture();
    } else if (!m_changes.setCell(row, m_model.cellColumn(m_cell.column()), text, m_before.get())) {
        problem = m_changes.problem();
    }
    if (!editor)
        return; // the change has closed it
    setProblem(problem);
    Q_EMIT applied();
    if (editor)
        m_applied = m_model.cellText(m_cell);
}

void ListDelegate::setProblem(const QString& problem)
{
    const bool wasIllegal = isIllegal();
    m_problem = problem;
    if (MarkedLineEdit* line = lineEdit())
        line->setProblem(problem);
    if (wasIllegal && problem.isEmpty())
        Q_EMIT inputEnded();
}

void ListDelegate::refresh()
{
    if (!m_editor || !m_cell.isValid())
        return;
    if (!m_isTyped) {
        if (m_model.cellText(m_cell) != m_shown)
            setEditorData(m_editor, m_cell);
        return;
    }
    const QString present = m_model.cellText(m_cell);
    const bool isOutdated = present != m_applied;
    m_editor->setProperty("outdated", isOutdated);
    constexpr int kHintLength = 200;
    if (MarkedLineEdit* line = lineEdit())
        line->setHint(isOutdated ? "The value has been changed to " + present.left(kHintLength)
                                 : hint());
}

bool ListDelegate::finish()
{
    if (!m_editor)
        return true;
    if (isIllegal()) {
        m_editor->setFocus();
        QToolTip::showText(m_editor->mapToGlobal(m_editor->rect().bottomLeft()), m_problem,
                           m_editor);
        return false;
    }
    discard();
    return true;
}

void ListDelegate::discard()
{
    if (!m_editor)
        return;
    const QPointer<QWidget> editor = m_editor;
    m_edit.endGesture();
    Q_EMIT closeEditor(editor, NoHint);
}

void ListDelegate::cancel()
{
    const QPointer<QWidget> editor = m_editor;
    if (m_isTyped)
        m_edit.cancelGesture();
    if (!editor)
        return;
    Q_EMIT applied();
    if (editor)
        Q_EMIT closeEditor(editor, NoHint);
}

void ListDelegate::forget()
{
    if (m_isTyped)
        m_edit.endGesture();
    m_editor = nullptr;
    m_cell = QPersistentModelIndex();
    m_isTyped = false;
    m_problem.clear();
    m_before.reset();
    Q_EMIT inputEnded();
}

void ListDelegate::destroyEditor(QWidget* editor, const QModelIndex&) const
{
    if (editor == m_editor)
        const_cast<ListDelegate*>(this)->forget();
    editor->deleteLater();
}

bool ListDelegate::handleKey(int key, Qt::KeyboardModifiers modifiers)
{
    switch (key) {
    case Qt::Key_Escape:
        cancel();
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (finish())
            Q_EMIT movedOn(key == Qt::Key_Tab ? 1 : -1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        auto* box = qobject_cast<QPlainTextEdit*>(m_editor);
        if (box && (modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier)))
            box->insertPlainText("\n");
        else
            finish();
        return true;
    }
    default:
        return false;
    }
}

bool ListDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_editor || watched != m_editor)
        return false;
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        return handleKey(key->key(), key->modifiers());
    }
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        const bool comesBack =
            reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason;
        if (!comesBack && !isIllegal() && !isInside(QApplication::focusWidget(), m_editor))
            discard();
    }
    return false;
}
