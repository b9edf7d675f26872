#include "mirabo/preferences/ShortcutsPage.h"

#include "mirabo/preferences/Settings.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace mirabo {

namespace {

enum Column { Action, Shortcut, ColumnCount };

} // namespace

ShortcutsPage::ShortcutsPage(ShortcutEntries entries, std::function<void()> saved, QWidget* parent)
    : QWidget(parent),
      m_entries(std::move(entries)),
      m_saved(std::move(saved)),
      m_rows(new QTreeWidget(this)),
      m_edit(new QKeySequenceEdit(this)),
      m_clear(new QPushButton(tr("&No Shortcut"), this)),
      m_reset(new QPushButton(tr("&Standard"), this)),
      m_conflict(new QLabel(this))
{
    build();
    connect(m_rows, &QTreeWidget::currentItemChanged, this, &ShortcutsPage::showCurrent);
    connect(m_edit, &QKeySequenceEdit::editingFinished, this,
            [this] { change(m_edit->keySequence()); });
    connect(m_clear, &QPushButton::clicked, this, [this] { change({}); });
    connect(m_reset, &QPushButton::clicked, this, [this] {
        if (currentRow() >= 0)
            change(m_entries[static_cast<std::size_t>(currentRow())].standard);
    });
}

void ShortcutsPage::build()
{
    m_rows->setObjectName("m_shortcuts");
    m_rows->setAccessibleName(tr("Shortcuts"));
    m_rows->setColumnCount(ColumnCount);
    m_rows->setHeaderLabels({tr("Action"), tr("Shortcut")});
    m_rows->setRootIsDecorated(false);
    m_rows->setUniformRowHeights(true);
    m_rows->header()->setSectionResizeMode(Action, QHeaderView::Stretch);
    m_edit->setObjectName("m_shortcutEdit");
    m_edit->setAccessibleName(tr("New shortcut"));
    m_conflict->setObjectName("m_shortcutConflict");
    m_conflict->setWordWrap(true);
    auto* all = new QPushButton(tr("A&ll Standard"), this);
    all->setObjectName("m_shortcutsReset");
    connect(all, &QPushButton::clicked, this, &ShortcutsPage::resetAll);

    auto* line = new QHBoxLayout;
    auto* label = new QLabel(tr("Shortc&ut:"), this);
    label->setBuddy(m_edit);
    line->addWidget(label);
    line->addWidget(m_edit, 1);
    line->addWidget(m_clear);
    line->addWidget(m_reset);
    auto* foot = new QHBoxLayout;
    foot->addWidget(m_conflict, 1);
    foot->addWidget(all);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_rows, 1);
    layout->addLayout(line);
    layout->addLayout(foot);
}

void ShortcutsPage::load()
{
    m_shown.clear();
    for (const ShortcutEntry& entry : m_entries)
        m_shown.push_back(readShortcut(entry));
    m_loaded = m_shown;
    fill();
}

void ShortcutsPage::fill()
{
    m_rows->clear();
    for (const ShortcutEntry& entry : m_entries)
        new QTreeWidgetItem(m_rows, {entry.text}); // the list owns it
    for (int row = 0; row < m_rows->topLevelItemCount(); ++row)
        showRow(row);
    m_rows->resizeColumnToContents(Shortcut);
    m_rows->setCurrentItem(m_rows->topLevelItem(0));
}

void ShortcutsPage::showRow(int row)
{
    const auto at = static_cast<std::size_t>(row);
    QTreeWidgetItem* item = m_rows->topLevelItem(row);
    item->setText(Shortcut, m_shown[at].toString(QKeySequence::NativeText));
    QFont font = m_rows->font();
    font.setBold(m_shown[at] != m_entries[at].standard);
    item->setFont(Shortcut, font);
}

int ShortcutsPage::currentRow() const
{
    return m_rows->indexOfTopLevelItem(m_rows->currentItem());
}

void ShortcutsPage::showCurrent()
{
    const int row = currentRow();
    const QSignalBlocker blocker(m_edit);
    m_edit->setKeySequence(row < 0 ? QKeySequence() : m_shown[static_cast<std::size_t>(row)]);
    for (QWidget* control : std::initializer_list<QWidget*>{m_edit, m_clear, m_reset})
        control->setEnabled(row >= 0);
    const QString others = row < 0 ? QString() : conflictsOf(row);
    m_conflict->setText(others.isEmpty() ? QString()
                                         : tr("This is the shortcut of %1, too: neither of them "
                                              "answers to it while both can be used.")
                                               .arg(others));
}

QString ShortcutsPage::conflictsOf(int row) const
{
    const auto at = static_cast<std::size_t>(row);
    if (m_shown[at].isEmpty())
        return {};
    QStringList others;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const bool isChosen =
            m_shown[i] != m_entries[i].standard || m_shown[at] != m_entries[at].standard;
        if (i != at && isChosen && m_shown[i] == m_shown[at])
            others << '"' + m_entries[i].text + '"';
    }
    return others.join(", ");
}

void ShortcutsPage::change(const QKeySequence& shortcut)
{
    const int row = currentRow();
    if (row < 0)
        return;
    // One stroke: a window's actions have no longer ones.
    m_shown[static_cast<std::size_t>(row)] =
        shortcut.isEmpty() ? QKeySequence() : QKeySequence(shortcut[0]);
    showRow(row);
    showCurrent();
}

void ShortcutsPage::resetAll()
{
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        m_shown[i] = m_entries[i].standard;
    for (int row = 0; row < m_rows->topLevelItemCount(); ++row)
        showRow(row);
    showCurrent();
}

void ShortcutsPage::save()
{
    {
        const SettingsChange change;
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            if (m_shown[i] != m_loaded[i]) // another tool may have changed the others
                writeShortcut(m_entries[i], m_shown[i]);
    }
    m_loaded = m_shown;
    m_saved();
}

MrbPluginsManager::PreferencePage ShortcutsPage::asPage()
{
    return {tr("Shortcuts"), this, [this] { load(); }, [this] { save(); }};
}

} // namespace mirabo
