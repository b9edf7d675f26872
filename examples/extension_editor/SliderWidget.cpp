#include "SliderWidget.h"

#include <kalmyr/fields/SoValueFields.h>

#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

namespace {

constexpr int kSteps = 1000;

float valueOf(const SoField& field)
{
    return static_cast<const SoSFFloat&>(field).getValue();
}

} // namespace

SliderWidget::SliderWidget(MrbFieldEdit* edit, QWidget* parent)
    : MrbFieldWidget(edit, parent), m_slider(new QSlider(Qt::Horizontal, this))
{
    m_slider->setRange(0, kSteps);
    m_slider->setAccessibleName("Value");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_slider);
    setFocusProxy(m_slider);
    edit->read([this](const SoField& field) {
        if (valueOf(field) > 0)
            m_full = 2 * valueOf(field);
    });
    // A drag is one step of undo.
    connect(m_slider, &QSlider::sliderPressed, edit, &MrbFieldEdit::beginGesture);
    connect(m_slider, &QSlider::sliderReleased, edit, &MrbFieldEdit::endGesture);
    connect(m_slider, &QSlider::valueChanged, this, &SliderWidget::apply);
}

void SliderWidget::showValue()
{
    edit()->read([this](const SoField& field) {
        const QSignalBlocker blocker(m_slider); // shown, not changed
        m_slider->setValue(static_cast<int>(kSteps * valueOf(field) / m_full));
    });
}

void SliderWidget::apply(int position)
{
    const float value = m_full * static_cast<float>(position) / kSteps;
    edit()->change([value](SoField& field) {
        static_cast<SoSFFloat&>(field).setValue(value);
        return true;
    });
}
