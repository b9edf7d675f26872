#include "EnumWidget.h"

#include "TextWidget.h"

#include <kalmyr/fields/SoSFEnum.h>

#include <QComboBox>
#include <QVBoxLayout>

namespace {

class EnumWidget final : public MrbFieldWidget {
public:
    EnumWidget(MrbFieldEdit* edit, Form form, QWidget* parent)
        : MrbFieldWidget(edit, parent), m_box(new QComboBox(this))
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_box);
        if (form == Form::Full)
            layout->addStretch();
        m_box->setAccessibleName(tr("Value"));
        m_box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        setFocusProxy(m_box);
        edit->read([this](const SoField& field) {
            for (const SoEnumEntry& entry : static_cast<const SoSFEnum&>(field).getEnums())
                m_box->addItem(entry.name, entry.value);
        });
        m_named = m_box->count();
        connect(m_box, qOverload<int>(&QComboBox::activated), this, &EnumWidget::choose);
    }

    void showValue() override
    {
        edit()->read([this](const SoField& field) {
            const int value = static_cast<const SoSFEnum&>(field).getValue();
            int index = m_box->findData(value);
            if (index < 0 || index >= m_named) {
                m_box->removeItem(m_named);
                m_box->addItem(tr("%1 (no name)").arg(value), value);
                index = m_named;
            }
            m_box->setCurrentIndex(index);
            m_box->setToolTip(tr("Value %1").arg(value));
        });
    }

private:
    void choose(int index)
    {
        const int value = m_box->itemData(index).toInt();
        edit()->change([value](SoField& scratch) {
            static_cast<SoSFEnum&>(scratch).setValue(value);
            return true;
        });
        showValue();
        Q_EMIT finished();
    }

    QComboBox* m_box;
    int m_named = 0; ///< items before the one of a value without a name
};

} // namespace

MrbFieldWidget* makeEnumWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    bool hasNames = false;
    edit->read([&hasNames](const SoField& field) {
        hasNames = static_cast<const SoSFEnum&>(field).getNumEnums() > 0;
    });
    // Without names it holds plain numbers.
    return hasNames ? new EnumWidget(edit, form, parent) : makeTextWidget(edit, form, parent);
}
