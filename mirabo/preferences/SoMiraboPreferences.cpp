#include "mirabo/preferences/SoMiraboPreferences.h"

#include "ui_QPreferences.h"

#include <QKeyEvent>
#include <QPointer>
#include <QScreen>

#include <algorithm>

namespace {

constexpr int kListChars = 16; ///< least width of the list in average characters
constexpr double kScreenShare = 0.9;

} // namespace

SoMiraboPreferences::SoMiraboPreferences(QWidget* parent)
    : QDialog(parent), m_form(std::make_unique<Ui::QPreferences>())
{
    m_form->setupUi(this);
    delete m_form->m_placeholder;
    m_form->m_placeholder = nullptr;
    m_form->m_searchHint->hide();
    m_form->m_searchEdit->installEventFilter(this);
    fitList();
    connect(m_form->m_okButton, &QPushButton::clicked, this, [this] {
        const QPointer<SoMiraboPreferences> self(this);
        save();
        if (self)
            accept();
    });
    connect(m_form->m_applyButton, &QPushButton::clicked, this, &SoMiraboPreferences::save);
    connect(m_form->m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_form->m_preferenceList, &QListWidget::currentItemChanged, this,
            &SoMiraboPreferences::raiseWidget);
    connect(m_form->m_searchEdit, &QLineEdit::textChanged, this, &SoMiraboPreferences::search);
    m_form->m_preferenceList->setFocus();
}

SoMiraboPreferences::~SoMiraboPreferences()
{
    for (const Page& page : m_pages)
        page.widget->disconnect(this); // they die after the members
}

void SoMiraboPreferences::addPage(const Page& page)
{
    if (!page.widget)
        return;
    m_pages.push_back(page);
    m_form->m_widgetStack->addWidget(page.widget);
    m_form->m_preferenceList->addItem(page.name);
    fitList();
    connect(page.widget, &QObject::destroyed, this, &SoMiraboPreferences::dropPage);
    connect(this, &SoMiraboPreferences::emitInit, page.widget, page.load);
    page.load();
    if (getPageCount() == 1)
        m_form->m_preferenceList->setCurrentRow(0);
}

/// The list is as wide as its longest name.
void SoMiraboPreferences::fitList()
{
    QListWidget* list = m_form->m_preferenceList;
    const int least = fontMetrics().averageCharWidth() * kListChars;
    const int needed = list->sizeHintForColumn(0) + 2 * list->frameWidth()
                       + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    list->setFixedWidth(std::max(least, needed));
}

/// As large as its largest page, if the screen is.
void SoMiraboPreferences::fitPages()
{
    // An area in which a widget scrolls asks for less than the widget does, and Qt gives a window
    // that nobody sized no more than two thirds of the screen.
    ensurePolished();
    const QStackedWidget* stack = m_form->m_widgetStack;
    m_form->m_pageArea->setMinimumSize(stack->sizeHint().expandedTo(stack->minimumSizeHint()));
    layout()->activate();
    const QSize wanted = layout()->totalSizeHint();
    m_form->m_pageArea->setMinimumSize(0, 0);
    layout()->activate();
    resize(wanted.boundedTo(screen()->availableSize() * kScreenShare));
}

void SoMiraboPreferences::setVisible(bool visible)
{
    const bool isFirst = visible && !testAttribute(Qt::WA_Resized);
    if (isFirst)
        fitPages();
    QDialog::setVisible(visible);
    if (!isFirst)
        return;
    // Pages that were never shown do not know their size.
    setUpdatesEnabled(false);
    for (int page = 0; page < m_form->m_widgetStack->count(); ++page)
        m_form->m_widgetStack->setCurrentIndex(page);
    raiseWidget(m_form->m_preferenceList->currentItem(), nullptr);
    fitPages();
    setUpdatesEnabled(true);
}

void SoMiraboPreferences::raiseWidget(QListWidgetItem* current, QListWidgetItem*)
{
    const int row = current ? m_form->m_preferenceList->row(current) : -1;
    if (row < 0 || row >= getPageCount())
        return;
    m_form->m_widgetStack->setCurrentWidget(m_pages[static_cast<std::size_t>(row)].widget);
    markCurrent();
}

void SoMiraboPreferences::search(const QString& text)
{
    m_search = mirabo::PageSearch(text);
    QListWidget* list = m_form->m_preferenceList;
    int first = -1;
    for (int row = getPageCount() - 1; row >= 0; --row) {
        const Page& page = m_pages[static_cast<std::size_t>(row)];
        const bool isWanted = m_search.matches(page.name, *page.widget);
        list->setRowHidden(row, !isWanted);
        if (isWanted)
            first = row;
    }
    m_form->m_searchHint->setVisible(first < 0);
    if (first >= 0 && !isListed(list->currentRow()))
        list->setCurrentRow(first);
    markCurrent();
}

bool SoMiraboPreferences::isListed(int row) const
{
    return row >= 0 && !m_form->m_preferenceList->isRowHidden(row);
}

void SoMiraboPreferences::markCurrent()
{
    if (QWidget* page = m_form->m_widgetStack->currentWidget())
        m_search.mark(*page);
}

bool SoMiraboPreferences::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_form->m_searchEdit || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    QListWidget* list = m_form->m_preferenceList;
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Escape: // the next one closes the dialog
        if (m_search.isEmpty())
            return false;
        m_form->m_searchEdit->clear();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter: // of the search, not of the dialog
    case Qt::Key_Down:
        list->setFocus(Qt::TabFocusReason);
        return true;
    default:
        return false;
    }
}

void SoMiraboPreferences::save()
{
    // A page that fails may end its extension's other pages, and the host the dialog.
    const QPointer<SoMiraboPreferences> self(this);
    const std::vector<Page> pages = m_pages;
    for (const Page& page : pages)
        page.save();
    if (self)
        Q_EMIT saved();
}

void SoMiraboPreferences::dropPage(QObject* widget)
{
    const auto at = std::find_if(m_pages.begin(), m_pages.end(),
                                 [widget](const Page& page) { return page.widget == widget; });
    if (at == m_pages.end())
        return;
    const auto row = static_cast<int>(at - m_pages.begin());
    m_pages.erase(at);
    delete m_form->m_preferenceList->takeItem(row);
    raiseWidget(m_form->m_preferenceList->currentItem(), nullptr); // its row is another one now
}
