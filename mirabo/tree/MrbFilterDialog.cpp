#include "mirabo/tree/MrbFilterDialog.h"

#include "mirabo/core/MainActions.h"
#include "mirabo/tree/NodeCategory.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kRows = MrbFilterDialog::kCategories / 2;

QString nameOf(int category)
{
    const auto first = static_cast<std::size_t>(mirabo::ActionId::Appearance);
    return QString(mirabo::actionTable()[first + static_cast<std::size_t>(category)].text);
}

} // namespace

MrbFilterDialog::MrbFilterDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName("FilterDialog");
    setWindowTitle(tr("Filter"));
    setWindowIcon(mirabo::namedIcon("filter"));
    m_on = new QCheckBox(tr("&Filter the scene tree"));
    m_on->setChecked(true);
    connect(m_on, &QCheckBox::clicked, this, &MrbFilterDialog::switched);

    auto* buttons = new QVBoxLayout;
    const auto addButton = [&](const QString& text, auto slot) {
        auto* button = new QPushButton(text);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, slot);
        buttons->addWidget(button);
        return button;
    };
    addButton(tr("&All"), [this] { choose(mirabo::kAllCategories); });
    addButton(tr("&None"), [this] { choose(0); });
    addButton(tr("&Invert"), [this] { choose(~mask() & mirabo::kAllCategories); });
    buttons->addStretch();
    addButton(tr("Close"), [this] { close(); })->setDefault(true);

    auto* layout = new QGridLayout(this);
    layout->addWidget(m_on, 0, 0);
    layout->addWidget(makeCategories(), 1, 0);
    layout->addLayout(buttons, 0, 1, 2, 1);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

MrbFilterDialog::~MrbFilterDialog() = default;

QWidget* MrbFilterDialog::makeCategories()
{
    auto* group = new QGroupBox(tr("Show"));
    auto* grid = new QGridLayout(group);
    for (int i = 0; i < kCategories; ++i) {
        auto* box = new QCheckBox(nameOf(i));
        box->setIcon(mirabo::categoryIcon(static_cast<mirabo::NodeCategory>(1 << i)));
        box->setChecked(true);
        connect(box, &QCheckBox::clicked, this, [this] { Q_EMIT maskChanged(mask()); });
        grid->addWidget(box, i % kRows, i / kRows);
        m_boxes[static_cast<std::size_t>(i)] = box;
    }
    for (std::size_t i = 1; i < m_boxes.size(); ++i)
        setTabOrder(m_boxes[i - 1], m_boxes[i]);
    grid->setHorizontalSpacing(24);
    return group;
}

int MrbFilterDialog::mask() const
{
    int mask = 0;
    for (int i = 0; i < kCategories; ++i)
        mask |= box(i)->isChecked() ? 1 << i : 0;
    return mask;
}

void MrbFilterDialog::setMask(int mask)
{
    for (int i = 0; i < kCategories; ++i)
        box(i)->setChecked(mask & 1 << i);
}

void MrbFilterDialog::choose(int mask)
{
    setMask(mask);
    Q_EMIT maskChanged(mask);
}

bool MrbFilterDialog::isOn() const
{
    return m_on->isChecked();
}

void MrbFilterDialog::setOn(bool on)
{
    m_on->setChecked(on);
}
