#include "BoolWidget.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QCheckBox>
#include <QVBoxLayout>

namespace {

class BoolWidget final : public MrbFieldWidget {
public:
    BoolWidget(MrbFieldEdit* edit, Form form, QWidget* parent)
        : MrbFieldWidget(edit, parent), m_box(new QCheckBox(this))
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_box);
        if (form == Form::Full)
            layout->addStretch();
        m_box->setAccessibleName(tr("Value"));
        setFocusProxy(m_box);
        connect(m_box, &QCheckBox::clicked, this, [this](bool on) {
            this->edit()->change([on](SoField& value) {
                static_cast<SoSFBool&>(value).setValue(on);
                return true;
            });
            showValue();
        });
    }

    void showValue() override
    {
        edit()->read([this](const SoField& field) {
            const bool on = static_cast<const SoSFBool&>(field).getValue();
            m_box->setChecked(on);
            m_box->setText(on ? "TRUE" : "FALSE");
        });
    }

private:
    QCheckBox* m_box;
};

} // namespace

MrbFieldWidget* makeBoolWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    return new BoolWidget(edit, form, parent);
}
