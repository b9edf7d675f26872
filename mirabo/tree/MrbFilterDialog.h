#pragma once

#include <QDialog>

#include <array>

class QCheckBox;

/// Chooses the categories of nodes that the scene tree shows. The choice is in force at once; the
/// dialog stays open beside the window.
class MrbFilterDialog final : public QDialog {
    Q_OBJECT

public:
    static constexpr int kCategories = 14;

    explicit MrbFilterDialog(QWidget* parent = nullptr);
    ~MrbFilterDialog() override;

    /// Sum of the bits of the checked categories.
    int mask() const;
    /// Tells nobody.
    void setMask(int mask);
    /// Whether the filter is on; off, it keeps its categories but hides nothing.
    bool isOn() const;
    void setOn(bool on);
    QCheckBox* box(int category) const { return m_boxes[static_cast<std::size_t>(category)]; }

Q_SIGNALS:
    /// The user has chosen other categories.
    void maskChanged(int mask);
    /// The user has turned the filter on or off.
    void switched(bool on);

private:
    QWidget* makeCategories();
    void choose(int mask);

    QCheckBox* m_on;
    std::array<QCheckBox*, kCategories> m_boxes{}; ///< in the order of their bits
};
