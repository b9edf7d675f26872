#include "mirabo/preferences/SoStylePreferences.h"

#include "mirabo/preferences/ColorChoice.h"
#include "mirabo/preferences/PreferencePage.h"
#include "mirabo/preferences/Settings.h"

#include <QCheckBox>
#include <QEvent>
#include <QFontComboBox>
#include <QFontInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSpinBox>

#include <utility>

using mirabo::TextStyle;

SoStylePreferences::SoStylePreferences(const char* group, mirabo::StyleTable defaults,
                                       QWidget* parent)
    : QWidget(parent), m_group(group), m_defaults(std::move(defaults)), m_styles(m_defaults)
{
}

void SoStylePreferences::setUpStyles(const mirabo::StyleControls& controls)
{
    m_controls = controls;
    for (const auto& [element, style] : m_defaults.entries())
        m_controls.elements->addItem(element);
    m_controls.elements->setMinimumWidth(m_controls.elements->sizeHintForColumn(0)
                                         + 4 * m_controls.elements->frameWidth());
    using Page = SoStylePreferences;
    connect(m_controls.elements, &QListWidget::currentItemChanged, this, &Page::elementChanged);
    connect(m_controls.family, &QComboBox::currentTextChanged, this, &Page::familyChanged);
    connect(m_controls.family->lineEdit(), &QLineEdit::editingFinished, this, &Page::showStyle);
    connect(m_controls.size, QOverload<int>::of(&QSpinBox::valueChanged), this, &Page::sizeChanged);
    connect(m_controls.bold, &QCheckBox::toggled, this, &Page::boldChanged);
    connect(m_controls.italic, &QCheckBox::toggled, this, &Page::italicChanged);
    connect(m_controls.underline, &QCheckBox::toggled, this, &Page::underlineChanged);
    connect(m_controls.color, &QPushButton::clicked, this, &Page::colorClicked);
    connect(m_controls.toDefault, &QPushButton::clicked, this, &Page::setToDefault);
}

MrbPluginsManager::PreferencePage SoStylePreferences::asPage(const QString& name)
{
    return mirabo::preferencePage(name, this, &SoStylePreferences::load, &SoStylePreferences::save);
}

void SoStylePreferences::load()
{
    m_styles = m_defaults;
    mirabo::readStyles(m_group, m_styles);
    loadOptions();
    m_loaded = m_styles;
    m_loadedOptions = options();
    m_controls.elements->setCurrentRow(0);
    showStyle();
}

void SoStylePreferences::save()
{
    // Another tool may have changed styles that were not changed here.
    const bool isChanged = !mirabo::haveSameSettings(m_styles, m_loaded)
                           || options() != m_loadedOptions
                           || !mirabo::areStylesStored(m_group, m_styles);
    if (isChanged) {
        const mirabo::SettingsChange change;
        mirabo::writeStyles(m_group, m_styles);
        saveOptions();
    }
    m_loaded = m_styles;
    m_loadedOptions = options();
    Q_EMIT saved();
}

QString SoStylePreferences::currentElement() const
{
    const QListWidgetItem* item = m_controls.elements->currentItem();
    return item ? item->text() : QString();
}

void SoStylePreferences::elementChanged()
{
    showStyle();
}

void SoStylePreferences::familyChanged(const QString& family)
{
    // While the user types there are names of nothing.
    const int known = m_controls.family->findText(family, Qt::MatchFixedString);
    if (known >= 0)
        edit([&](TextStyle& style) { style.font.setFamily(m_controls.family->itemText(known)); });
}

void SoStylePreferences::sizeChanged(int size)
{
    edit([size](TextStyle& style) { style.font.setPointSize(size); });
}

void SoStylePreferences::boldChanged(bool on)
{
    edit([on](TextStyle& style) { style.font.setWeight(on ? QFont::Bold : QFont::Normal); });
}

void SoStylePreferences::italicChanged(bool on)
{
    edit([on](TextStyle& style) { style.font.setItalic(on); });
}

void SoStylePreferences::underlineChanged(bool on)
{
    edit([on](TextStyle& style) { style.font.setUnderline(on); });
}

void SoStylePreferences::colorClicked()
{
    mirabo::chooseColor(
        this, currentStyle().color,
        [this, element = currentElement()](const QColor& color) { setColor(element, color); });
}

void SoStylePreferences::setColor(const QString& element, const QColor& color)
{
    TextStyle style = m_styles[element];
    style.color = QColor(color.red(), color.green(), color.blue());
    m_styles.set(element, style);
    showPreview();
}

void SoStylePreferences::setToDefault()
{
    m_styles.set(currentElement(), m_defaults[currentElement()]);
    showStyle();
}

void SoStylePreferences::showStyle()
{
    const QScopedValueRollback<bool> showing(m_isShowing, true);
    const TextStyle& style = currentStyle();
    const int known = m_controls.family->findText(style.font.family(), Qt::MatchFixedString);
    m_controls.family->setCurrentIndex(known);
    if (known < 0) // the name of a font that is not there is kept
        m_controls.family->setEditText(style.font.family());
    m_controls.size->setValue(style.font.pointSize() > 0 ? style.font.pointSize()
                                                         : QFontInfo(style.font).pointSize());
    m_controls.bold->setChecked(style.font.bold());
    m_controls.italic->setChecked(style.font.italic());
    m_controls.underline->setChecked(style.font.underline());
    styleShown(style);
    showPreview();
}

void SoStylePreferences::showPreview()
{
    const TextStyle& style = currentStyle();
    m_controls.color->setIcon(mirabo::swatchIcon(style.color, *this));
    m_controls.color->setToolTip(style.color == Qt::black
                                     ? tr("Black: the text follows the colors of the desktop")
                                     : style.color.name());
    QPalette palette;
    palette.setColor(QPalette::Text, mirabo::shownColor(style.color, palette));
    m_controls.preview->setPalette(palette);
    m_controls.preview->setFont(style.font);
    m_controls.preview->setEnabled(style.show);
}

void SoStylePreferences::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_controls.preview)
        showPreview();
}
