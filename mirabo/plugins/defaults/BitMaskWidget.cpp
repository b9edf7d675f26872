#include "BitMaskWidget.h"

#include "TextWidget.h"

#include <kalmyr/fields/SoSFBitMask.h>

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include <cstdint>
#include <vector>

namespace {

constexpr int kColumns = 2;

class BitMaskWidget final : public MrbFieldWidget {
public:
    BitMaskWidget(MrbFieldEdit* edit, QWidget* parent)
        : MrbFieldWidget(edit, parent), m_number(new QLabel(this))
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(4);
        auto* boxes = new QGridLayout;
        boxes->setHorizontalSpacing(12);
        edit->read([&](const SoField& field) {
            const auto entries = static_cast<const SoSFBitMask&>(field).getEnums();
            for (const SoEnumEntry& entry : entries)
                m_all |= entry.value;
            for (const SoEnumEntry& entry : entries)
                if (entry.value != 0
                    && (entry.value != m_all || entries.size() == 1)) // the rest has buttons
                    addBox(boxes, entry);
        });
        layout->addLayout(boxes);
        layout->addLayout(makeFoot());
        layout->addStretch();
        if (!m_boxes.empty())
            setFocusProxy(m_boxes.front().box);
    }

    void showValue() override
    {
        edit()->read([this](const SoField& field) {
            const int mask = static_cast<const SoSFBitMask&>(field).getValue();
            for (const Bits& bits : m_boxes)
                bits.box->setCheckState((mask & bits.value) == bits.value ? Qt::Checked
                                        : (mask & bits.value)             ? Qt::PartiallyChecked
                                                                          : Qt::Unchecked);
            m_number->setText(QString("0x%1").arg(static_cast<std::uint32_t>(mask), 0, 16));
        });
    }

private:
    struct Bits {
        QCheckBox* box;
        int value;
    };

    void addBox(QGridLayout* grid, const SoEnumEntry& entry)
    {
        auto* box = new QCheckBox(entry.name, this);
        box->setToolTip(QString("0x%1").arg(static_cast<std::uint32_t>(entry.value), 0, 16));
        const int at = static_cast<int>(m_boxes.size());
        grid->addWidget(box, at / kColumns, at % kColumns);
        m_boxes.push_back({box, entry.value});
        connect(box, &QCheckBox::clicked, this, [this, bits = entry.value, box] {
            apply(bits, box->checkState() != Qt::Unchecked);
        });
    }
    QHBoxLayout* makeFoot()
    {
        auto* foot = new QHBoxLayout;
        foot->setSpacing(4);
        const auto addButton = [&](const QString& text, bool on) {
            auto* button = new QToolButton(this);
            button->setText(text);
            button->setAutoRaise(true);
            connect(button, &QToolButton::clicked, this, [this, on] { apply(m_all, on); });
            foot->addWidget(button);
        };
        addButton(tr("All"), true);
        addButton(tr("None"), false);
        foot->addStretch();
        m_number->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        m_number->setAccessibleName(tr("Mask as a number"));
        foot->addWidget(m_number);
        return foot;
    }
    /// Bits without a name stay as they are.
    void apply(int bits, bool on)
    {
        edit()->change([bits, on](SoField& scratch) {
            auto& mask = static_cast<SoSFBitMask&>(scratch);
            mask.setValue(on ? mask.getValue() | bits : mask.getValue() & ~bits);
            return true;
        });
        showValue();
    }

    std::vector<Bits> m_boxes;
    int m_all = 0; ///< every bit that has a name
    QLabel* m_number;
};

} // namespace

MrbFieldWidget* makeBitMaskWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    bool hasNames = false;
    edit->read([&hasNames](const SoField& field) {
        hasNames = static_cast<const SoSFBitMask&>(field).getNumEnums() > 0;
    });
    return hasNames && form == MrbFieldWidget::Form::Full ? new BitMaskWidget(edit, parent)
                                                          : makeTextWidget(edit, form, parent);
}
