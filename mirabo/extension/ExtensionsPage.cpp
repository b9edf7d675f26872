#include "mirabo/extension/ExtensionsPage.h"

#include "mirabo/preferences/PreferencePage.h"

#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace mirabo {

namespace {

enum Column { Name, Version, State, ColumnCount };
constexpr int kCauseRole = Qt::UserRole;
constexpr int kCauseLines = 3;
constexpr char kAllRun[] = "Select an extension to see more of it.";

MrbPluginsManager& manager()
{
    return *MrbPluginsManager::getInstance();
}

QString detailsOf(const MrbPluginsManager::ExtensionState& state)
{
    const QString from = QString("\"%1\" of plug-in \"%2\"").arg(state.extension, state.plugin);
    if (!state.isRunning)
        return from + ": " + state.cause;
    const QString author = state.info.author.isEmpty() ? QString() : " by " + state.info.author;
    return from + author + ": " + state.info.description;
}

} // namespace

ExtensionsPage::ExtensionsPage(QWidget* parent)
    : QWidget(parent),
      m_source(new QLabel(this)),
      m_profiles(new QComboBox(this)),
      m_rows(new QTreeWidget(this)),
      m_cause(new QLabel(this))
{
    m_source->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_source->setWordWrap(true);
    m_profiles->setObjectName("extensionProfiles");
    m_profiles->setToolTip(tr("Which extensions are switched on, until the inspector ends"));
    m_rows->setObjectName("extensionRows");
    m_rows->setAccessibleName(tr("Extensions"));
    m_rows->setColumnCount(ColumnCount);
    m_rows->setHeaderLabels({tr("Extension"), tr("Version"), tr("State")});
    m_rows->setRootIsDecorated(false);
    m_rows->setUniformRowHeights(true);
    m_rows->header()->setSectionResizeMode(Name, QHeaderView::ResizeToContents);
    m_cause->setObjectName("extensionCause");
    m_cause->setWordWrap(true);
    m_cause->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_cause->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_cause->setMinimumHeight(fontMetrics().lineSpacing() * kCauseLines);

    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    form->addRow(tr("Configuration:"), m_source);
    form->addRow(tr("&Profile:"), m_profiles);
    layout->addLayout(form);
    layout->addWidget(m_rows, 1);
    layout->addWidget(m_cause);
    connect(m_rows, &QTreeWidget::currentItemChanged, this, &ExtensionsPage::showCause);
}

MrbPluginsManager::PreferencePage ExtensionsPage::asPage()
{
    return preferencePage(tr("Extensions"), this, &ExtensionsPage::load, &ExtensionsPage::save);
}

void ExtensionsPage::load()
{
    const QString& file = manager().getConfigurationFile();
    m_source->setText(file.isEmpty() ? tr("built in; no file was found")
                                     : QDir::toNativeSeparators(file));
    m_source->setToolTip(tr("Plug-ins are looked for in:") + '\n'
                         + manager().getSearchPath().join('\n'));
    fillProfiles();
    fillRows();
}

void ExtensionsPage::fillProfiles()
{
    m_profiles->clear();
    for (const MrbPluginsManager::Profile& profile : manager().getProfiles())
        m_profiles->addItem(profile.name);
    const MrbPluginsManager::Profile* active = manager().getActiveProfile();
    m_profiles->setCurrentText(active ? active->name : QString());
    m_profiles->setEnabled(m_profiles->count() > 1);
}

QTreeWidgetItem* ExtensionsPage::makeRow(const MrbPluginsManager::ExtensionState& state) const
{
    auto* row = new QTreeWidgetItem(
        {state.extension, state.info.version, state.isRunning ? tr("running") : tr("off")});
    row->setData(Name, kCauseRole, detailsOf(state));
    row->setToolTip(State, state.cause);
    const auto icon = state.isRunning ? QStyle::SP_DialogApplyButton : QStyle::SP_MessageBoxWarning;
    row->setIcon(State, style()->standardIcon(icon));
    return row;
}

void ExtensionsPage::fillRows()
{
    m_rows->clear();
    std::vector<QTreeWidgetItem*> above{m_rows->invisibleRootItem()};
    for (const MrbPluginsManager::ExtensionState& state : manager().getExtensionStates()) {
        above.resize(std::min(above.size(), static_cast<std::size_t>(state.depth) + 1));
        QTreeWidgetItem* row = makeRow(state);
        above.back()->addChild(row);
        above.push_back(row);
        m_rows->setRootIsDecorated(m_rows->rootIsDecorated() || state.depth > 0);
    }
    addProblems();
    if (m_rows->topLevelItemCount() > 0)
        m_rows->setCurrentItem(m_rows->topLevelItem(0));
    else
        m_cause->setText(tr("The profile switches no extension on."));
}

/// Plug-ins that could not be loaded and that no extension of the profile tells of.
void ExtensionsPage::addProblems()
{
    const auto states = manager().getExtensionStates();
    for (const MrbPluginsManager::Problem& problem : manager().getProblems()) {
        const bool isTold =
            std::any_of(states.begin(), states.end(),
                        [&problem](const auto& state) { return state.plugin == problem.plugin; });
        if (isTold || !problem.extension.isEmpty())
            continue;
        auto* row = new QTreeWidgetItem(m_rows, {problem.plugin, QString(), tr("not loaded")});
        row->setIcon(State, style()->standardIcon(QStyle::SP_MessageBoxWarning));
        row->setData(Name, kCauseRole,
                     QString("plug-in \"%1\": %2").arg(problem.plugin, problem.cause));
    }
}

void ExtensionsPage::showCause(const QTreeWidgetItem* row)
{
    m_cause->setText(row ? row->data(Name, kCauseRole).toString() : tr(kAllRun));
}

void ExtensionsPage::save()
{
    const MrbPluginsManager::Profile* active = manager().getActiveProfile();
    const QString wanted = m_profiles->currentText();
    if (wanted.isEmpty() || (active && active->name == wanted))
        return;
    manager().setActiveProfile(wanted);
    load();
}

} // namespace mirabo
