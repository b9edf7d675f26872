#include "mirabo/preferences/SoMiraboPreferences.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kListChars = 20; ///< width of the list in average characters
constexpr int kPageChars = 60;
constexpr int kPageLines = 18;

} // namespace

SoMiraboPreferences::SoMiraboPreferences(QWidget* parent)
    : QDialog(parent), m_list(new QListWidget), m_stack(new QStackedWidget)
{
    setObjectName("QPreferences");
    setWindowTitle("Preferences");
    m_list->setObjectName("m_preferenceList");
    m_list->setAccessibleName("Pages");
    m_list->setFixedWidth(fontMetrics().averageCharWidth() * kListChars);
    m_stack->setObjectName("m_widgetStack");
    m_stack->setMinimumSize(fontMetrics().averageCharWidth() * kPageChars,
                            fontMetrics().lineSpacing() * kPageLines);
    auto* hint = new QLabel("There are no pages");
    hint->setAlignment(Qt::AlignCenter);
    hint->setEnabled(false);
    m_stack->addWidget(hint);

    auto* pages = new QHBoxLayout;
    pages->addWidget(m_list);
    pages->addWidget(m_stack, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(pages, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    layout->addLayout(buttons);
    QPushButton* ok = addButton("m_okButton", "&OK");
    m_apply = addButton("m_applyButton", "&Apply");
    m_apply->setShortcut(QKeySequence("Alt+A"));
    QPushButton* cancel = addButton("m_cancelButton", "&Cancel");
    for (QPushButton* button : {ok, m_apply, cancel})
        buttons->addWidget(button);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, [this] {
        save();
        accept();
    });
    connect(m_apply, &QPushButton::clicked, this, &SoMiraboPreferences::save);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_list, &QListWidget::currentItemChanged, this, &SoMiraboPreferences::raiseWidget);
}

SoMiraboPreferences::~SoMiraboPreferences()
{
    for (const Page& page : m_pages)
        page.widget->disconnect(this); // they die after the members
}

QPushButton* SoMiraboPreferences::addButton(const char* name, const QString& text)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    return button;
}

void SoMiraboPreferences::addPage(const Page& page)
{
    if (!page.widget)
        return;
    m_pages.push_back(page);
    m_stack->addWidget(page.widget);
    m_list->addItem(page.name);
    connect(page.widget, &QObject::destroyed, this, &SoMiraboPreferences::dropPage);
    page.load();
    if (m_list->count() == 1)
        m_list->setCurrentRow(0);
}

void SoMiraboPreferences::raiseWidget(QListWidgetItem* current, QListWidgetItem*)
{
    const int row = current ? m_list->row(current) : -1;
    if (row >= 0 && row < getPageCount())
        m_stack->setCurrentWidget(m_pages[static_cast<std::size_t>(row)].widget);
    else
        m_stack->setCurrentIndex(0); // the hint
}

void SoMiraboPreferences::save()
{
    // A page that fails may end its extension's other pages: the list is not walked meanwhile.
    const std::vector<Page> pages = m_pages;
    for (const Page& page : pages)
        page.save();
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
    delete m_list->takeItem(row);
}
