#include "mirabo/tree/MrbFindDialog.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/TreeFinder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QVBoxLayout>

using mirabo::TreeFinder;

namespace {

struct OptionEntry {
    const char* text;
    unsigned bit;
};

constexpr std::array<OptionEntry, 3> kOptions{
    OptionEntry{QT_TR_NOOP("Case Sensitive"), TreeFinder::CaseSensitive},
    OptionEntry{QT_TR_NOOP("Backward"), TreeFinder::Backward},
    OptionEntry{QT_TR_NOOP("Exact Match"), TreeFinder::ExactMatch}};

constexpr std::array kKinds{QT_TR_NOOP("By Type"), QT_TR_NOOP("By Name"), QT_TR_NOOP("By Address"),
                            QT_TR_NOOP("By Id")};

constexpr int kTextWidth = 32; ///< characters

} // namespace

MrbFindDialog::MrbFindDialog(SoCommandManager* hub, QWidget* parent)
    : QDialog(parent), m_text(new QComboBox)
{
    setWindowTitle(tr("Find"));
    setWindowIcon(mirabo::namedIcon("find"));
    auto* label = new QLabel(tr("Find What"));
    label->setBuddy(m_text);
    m_text->setEditable(true);
    m_text->setInsertPolicy(QComboBox::NoInsert);
    m_text->setMinimumContentsLength(kTextWidth);
    m_text->setAccessibleName(tr("Find What"));

    auto* kinds = new QVBoxLayout;
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        m_kinds[i] = new QRadioButton(tr(kKinds[i]));
        kinds->addWidget(m_kinds[i]);
    }
    m_kinds[TreeFinder::ByType]->setChecked(true);
    auto* group = new QGroupBox(tr("Find Options"));
    auto* options = new QVBoxLayout(group);
    for (std::size_t i = 0; i < kOptions.size(); ++i) {
        m_options[i] = new QCheckBox(tr(kOptions[i].text));
        options->addWidget(m_options[i]);
    }

    auto* find = new QPushButton(tr("Find"));
    find->setDefault(true);
    auto* close = new QPushButton(tr("Close"));
    close->setAutoDefault(false);
    connect(find, &QPushButton::clicked, hub, &SoCommandManager::find);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    // The keys of the main window do not reach this one.
    const auto addKey = [this, hub](const QKeySequence& key, auto slot) {
        connect(new QShortcut(key, this), &QShortcut::activated, hub, slot);
    };
    addKey(QKeySequence("F3"), &SoCommandManager::findNext);
    addKey(QKeySequence("Shift+F3"), &SoCommandManager::findPrevious);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(find);
    buttons->addWidget(close);
    buttons->addStretch();
    auto* layout = new QGridLayout(this);
    layout->addWidget(label, 0, 0, 1, 2);
    layout->addWidget(m_text, 1, 0, 1, 2);
    layout->addLayout(buttons, 1, 2, 2, 1);
    layout->addLayout(kinds, 2, 0);
    layout->addWidget(group, 2, 1);
    layout->setColumnStretch(1, 1);
    layout->setSizeConstraint(QLayout::SetMinimumSize);
    setTabOrder(m_text, m_kinds.front());
}

MrbFindDialog::~MrbFindDialog() = default;

int MrbFindDialog::kind() const
{
    for (std::size_t i = 0; i < m_kinds.size(); ++i)
        if (m_kinds[i]->isChecked())
            return static_cast<int>(i);
    return 0;
}

void MrbFindDialog::setKind(int kind)
{
    if (kind >= 0 && kind < static_cast<int>(m_kinds.size()))
        m_kinds[static_cast<std::size_t>(kind)]->setChecked(true);
}

unsigned int MrbFindDialog::options() const
{
    unsigned options = 0;
    for (std::size_t i = 0; i < m_options.size(); ++i)
        if (m_options[i]->isChecked())
            options |= kOptions[i].bit;
    return options;
}

void MrbFindDialog::setOptions(unsigned int options)
{
    for (std::size_t i = 0; i < m_options.size(); ++i)
        m_options[i]->setChecked(options & kOptions[i].bit);
}

QString MrbFindDialog::text() const
{
    return m_text->lineEdit()->text();
}

void MrbFindDialog::setText(const QString& text)
{
    m_text->lineEdit()->setText(text);
}

void MrbFindDialog::focusText()
{
    activateWindow();
    m_text->setFocus();
    m_text->lineEdit()->selectAll();
}

void MrbFindDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    focusText();
}
