#pragma once

#include "mirabo/extender/MrbPluginsManager.h"
#include "mirabo/preferences/TextStyle.h"

#include <QVector>
#include <QWidget>

class QCheckBox;
class QFontComboBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace mirabo {

/// The controls of a form in which a style is edited. Owned by the form's widget.
struct StyleControls {
    QListWidget* elements;
    QFontComboBox* family;
    QSpinBox* size;
    QCheckBox* bold;
    QCheckBox* italic;
    QCheckBox* underline;
    QPushButton* color;
    QLineEdit* preview;
    QPushButton* toDefault;
};

template <class Form>
StyleControls styleControlsOf(const Form& form)
{
    return {form.m_listItems,   form.m_comboFamily, form.m_spinSize,
            form.m_checkBold,   form.m_checkItalic, form.m_checkUnderline,
            form.m_buttonColor, form.m_editPreview, form.m_pushToDefault};
}

} // namespace mirabo

/// Base of the pages on which the text styles of one view are edited. They are edited in a copy;
/// save() writes all of them to the settings, and saved() tells the view to read them again.
class SoStylePreferences : public QWidget {
    Q_OBJECT

public:
    /// The page as the dialog takes it.
    MrbPluginsManager::PreferencePage asPage(const QString& name);

public Q_SLOTS:
    /// Replaces what was edited by what the settings hold, and shows the first element.
    void load();
    void save();
    /// Shows the style of the element that is current in the list.
    void elementChanged();
    /// A family that is not installed is refused.
    void familyChanged(const QString& family);
    /// In points.
    void sizeChanged(int size);
    void boldChanged(bool on);
    void italicChanged(bool on);
    void underlineChanged(bool on);
    /// Lets the user choose a colour for the current element.
    void colorClicked();
    /// Gives the current element the style that it has in a fresh store.
    void setToDefault();

Q_SIGNALS:
    /// The settings hold new values.
    void saved();

protected:
    SoStylePreferences(const char* group, mirabo::StyleTable defaults, QWidget* parent);

    /// To be called once, when the form is set up.
    void setUpStyles(const mirabo::StyleControls& controls);
    const mirabo::TextStyle& currentStyle() const { return m_styles[currentElement()]; }
    /// Changes the current element's style, unless it is only being shown.
    template <class Edit>
    void edit(Edit change)
    {
        if (m_isShowing || currentElement().isEmpty())
            return;
        mirabo::TextStyle style = currentStyle();
        change(style);
        m_styles.set(currentElement(), style);
        showPreview();
    }

    void changeEvent(QEvent* event) override;

private:
    /// The controls beyond the styles.
    virtual void loadOptions() = 0;
    /// Returns the page's options besides the styles; compared to find changes by the user.
    virtual QVector<bool> options() const { return {}; }
    virtual void saveOptions() = 0;
    /// A style is shown in the controls.
    virtual void styleShown(const mirabo::TextStyle&) {}

    QString currentElement() const;
    void showStyle();
    void showPreview();
    void setColor(const QString& element, const QColor& color);

    const char* const m_group;
    const mirabo::StyleTable m_defaults;
    mirabo::StyleTable m_styles; ///< being edited
    mirabo::StyleTable m_loaded; ///< as they were loaded or saved last
    QVector<bool> m_loadedOptions;
    mirabo::StyleControls m_controls{};
    bool m_isShowing = false; ///< the controls follow the style, not the other way round
};
