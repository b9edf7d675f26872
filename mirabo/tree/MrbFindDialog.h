#pragma once

#include <QDialog>
#include <QString>

#include <array>

class QCheckBox;
class QComboBox;
class QRadioButton;
class SoCommandManager;

/// Asks what to find in the scene tree, and how. The hub searches; the dialog stays open beside the
/// window, and its kind and options hold for searches from the tool bar, too.
class MrbFindDialog final : public QDialog {
    Q_OBJECT

public:
    /// The hub is not owned.
    explicit MrbFindDialog(SoCommandManager* hub, QWidget* parent = nullptr);
    ~MrbFindDialog() override;

    /// 0 type, 1 name, 2 address, 3 id.
    int kind() const;
    /// Other values change nothing.
    void setKind(int kind);
    /// 1 backward, 2 case sensitive, 4 exact match.
    unsigned int options() const;
    void setOptions(unsigned int options);
    QString text() const;
    void setText(const QString& text);
    /// Takes the keyboard, with the whole text selected.
    void focusText();
    QComboBox* textBox() const { return m_text; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    std::array<QRadioButton*, 4> m_kinds{};
    std::array<QCheckBox*, 3> m_options{}; ///< in the order of the dialog
    QComboBox* m_text;
};
