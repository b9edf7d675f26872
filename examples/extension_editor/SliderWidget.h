#pragma once

#include <mirabo/extender/MrbFieldEditor.h>

class QSlider;

/// A slider from 0 to twice the value that the field had when it was shown.
class SliderWidget final : public MrbFieldWidget {
    Q_OBJECT

public:
    SliderWidget(MrbFieldEdit* edit, QWidget* parent);

    void showValue() override;

private:
    void apply(int position);

    QSlider* m_slider;
    float m_full = 1; ///< at the slider's end
};
