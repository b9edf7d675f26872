#include "mirabo/preferences/PageSearch.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QFontComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QStackedWidget>
#include <QStyle>
#include <QStyleOptionGroupBox>
#include <QTabBar>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <algorithm>

namespace mirabo {

namespace {

constexpr int kMaxRows = 1000; ///< of a list that is looked through
constexpr int kMarkAlpha = 90; ///< of 255
constexpr int kMarkRadius = 3;

/// As it is read: without the mark of a shortcut and without formats.
QString plain(QString text)
{
    if (Qt::mightBeRichText(text))
        text = QTextDocumentFragment::fromHtml(text).toPlainText();
    return text.remove('&');
}

/// A tint over a control, or over a part of it.
class SearchMark final : public QWidget {
public:
    explicit SearchMark(QWidget* control) : QWidget(control)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        control->installEventFilter(this);
        place();
        raise();
        show();
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Resize)
            place();
        return false;
    }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor tint = palette().color(QPalette::Highlight);
        tint.setAlpha(kMarkAlpha);
        // The rows of a list stay as they are.
        const bool isFrame = qobject_cast<const QAbstractItemView*>(parentWidget());
        painter.setPen(isFrame ? QPen(tint, 2 * kMarkRadius) : QPen(Qt::NoPen));
        painter.setBrush(isFrame ? QBrush(Qt::NoBrush) : QBrush(tint));
        painter.drawRoundedRect(rect(), kMarkRadius, kMarkRadius);
    }

private:
    void place()
    {
        const QWidget* control = parentWidget();
        QRect area = control->rect();
        if (qobject_cast<const QAbstractButton*>(control) || qobject_cast<const QLabel*>(control))
            area.setWidth(std::min(area.width(), control->sizeHint().width())); // of its text
        area = QStyle::visualRect(layoutDirection(), control->rect(), area);
        if (const auto* box = qobject_cast<const QGroupBox*>(control))
            area = titleOf(*box);
        setGeometry(area);
    }
    static QRect titleOf(const QGroupBox& box)
    {
        QStyleOptionGroupBox option;
        option.initFrom(&box);
        option.text = plain(box.title());
        option.textAlignment = Qt::Alignment(box.alignment());
        option.subControls = QStyle::SC_GroupBoxLabel;
        return box.style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel,
                                           &box);
    }
};

void addRows(const QAbstractItemModel& model, const QModelIndex& parent, QStringList& texts)
{
    const int rows = std::min(model.rowCount(parent), kMaxRows);
    const int columns = model.columnCount(parent);
    for (int row = 0; row < rows && texts.size() < kMaxRows; ++row) {
        for (int column = 0; column < columns; ++column)
            texts << model.index(row, column, parent).data().toString();
        addRows(model, model.index(row, 0, parent), texts);
    }
}

QStringList rowsOf(const QAbstractItemModel* model)
{
    QStringList texts;
    if (model)
        addRows(*model, {}, texts);
    return texts;
}

/// Returns the texts shown on a control itself, without those of its children.
QStringList textsOf(const QWidget& control)
{
    if (const auto* label = qobject_cast<const QLabel*>(&control))
        return {plain(label->text())};
    if (const auto* button = qobject_cast<const QAbstractButton*>(&control))
        return {plain(button->text())};
    if (const auto* box = qobject_cast<const QGroupBox*>(&control))
        return {plain(box->title())};
    if (qobject_cast<const QFontComboBox*>(&control) || qobject_cast<const QHeaderView*>(&control))
        return {}; // the fonts of the system are nothing of the page
    if (const auto* combo = qobject_cast<const QComboBox*>(&control))
        return rowsOf(combo->model());
    if (const auto* view = qobject_cast<const QAbstractItemView*>(&control))
        return rowsOf(view->model());
    QStringList texts;
    if (const auto* tabs = qobject_cast<const QTabBar*>(&control))
        for (int tab = 0; tab < tabs->count(); ++tab)
            texts << plain(tabs->tabText(tab));
    return texts;
}

/// Whether a control was hidden, or something on the page that it stands in. What is behind another
/// tab is not.
bool isTakenAway(const QWidget* control, const QWidget& page)
{
    for (; control != &page; control = control->parentWidget())
        if (control->testAttribute(Qt::WA_WState_ExplicitShowHide) && control->isHidden()
            && !qobject_cast<const QStackedWidget*>(control->parentWidget()))
            return true;
    return false;
}

/// The controls of a page, without the lists that open over it.
std::vector<QWidget*> controlsOf(const QWidget& page)
{
    std::vector<QWidget*> controls;
    for (QWidget* control : page.findChildren<QWidget*>())
        if (control->window() == page.window() && !isTakenAway(control, page))
            controls.push_back(control);
    return controls;
}

} // namespace

PageSearch::PageSearch(const QString& text)
    : m_words(text.simplified().split(' ', Qt::SkipEmptyParts))
{
}

bool PageSearch::hasWord(const QString& text) const
{
    return std::any_of(m_words.begin(), m_words.end(), [&text](const QString& word) {
        return text.contains(word, Qt::CaseInsensitive);
    });
}

bool PageSearch::matches(const QString& name, const QWidget& page) const
{
    if (isEmpty())
        return true;
    QStringList texts{name};
    for (const QWidget* control : controlsOf(page))
        texts << textsOf(*control);
    const QString whole = texts.join('\n');
    return std::all_of(m_words.begin(), m_words.end(), [&whole](const QString& word) {
        return whole.contains(word, Qt::CaseInsensitive);
    });
}

void PageSearch::mark(QWidget& page) const
{
    for (QWidget* control : page.findChildren<QWidget*>())
        if (auto* mark = dynamic_cast<SearchMark*>(control))
            delete mark;
    for (QWidget* control : controlsOf(page))
        if (hasWord(textsOf(*control).join('\n')))
            new SearchMark(control); // the control owns it
}

} // namespace mirabo
