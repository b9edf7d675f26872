#include "FieldEditorPanel.h"

#include "FieldHints.h"
#include "FieldStateLine.h"
#include "Looks.h"
#include "TextWidget.h"
#include "TogetherLine.h"

#include <kalmyr/core/SoField.h>
#include <mirabo/extender/MrbExtension.h>
#include <mirabo/extender/MrbServices.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <iterator>

namespace {

constexpr int kMargin = 8;
constexpr int kRetryMs = 50; // while another thread edits

void drawPin(QPainter& painter)
{
    painter.drawLine(QPointF(0.5, 0.62), QPointF(0.5, 0.95));
    static const QPointF kHead[] = {{0.22, 0.62}, {0.78, 0.62}, {0.62, 0.42},
                                    {0.62, 0.1},  {0.38, 0.1},  {0.38, 0.42}};
    painter.drawPolygon(kHead, static_cast<int>(std::size(kHead)));
}

} // namespace

FieldEditorPanel::FieldEditorPanel(MrbExtension* extension, QWidget* parent)
    : QWidget(parent),
      m_extension(extension),
      m_name(new QLabel(this)),
      m_place(new QLabel(this)),
      m_pin(looks::makeButton("", tr("Keep this field while others are selected"), this)),
      m_state(new FieldStateLine(this)),
      m_outdated(new QWidget(this)),
      m_body(new QVBoxLayout),
      m_hint(new QLabel(tr("Select a field in the node overview to edit its value."), this)),
      m_together(new TogetherLine(this))
{
    setObjectName("fieldEditorPanel");
    buildLayout();
    connect(m_pin, &QToolButton::toggled, this, [this](bool on) {
        m_isKept = on;
        m_together->setOffering(on);
        if (!on)
            showLater();
    });
    connect(m_together, &TogetherLine::addRequested, this, &FieldEditorPanel::addSelected);
    clear();
}

FieldEditorPanel::~FieldEditorPanel()
{
    delete m_widget; // before the edit
}

void FieldEditorPanel::buildLayout()
{
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);
    m_name->setObjectName("fieldName");
    m_place->setObjectName("fieldPlace");
    m_place->setWordWrap(true);
    for (QLabel* label : {m_name, m_place})
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pin->setObjectName("keepField");
    m_pin->setCheckable(true);
    m_pin->setIcon(looks::drawIcon(this, &drawPin));

    auto* outdated = new QHBoxLayout(m_outdated);
    outdated->setContentsMargins(0, 0, 0, 0);
    auto* note = new QLabel(tr("The value changed meanwhile."), m_outdated);
    note->setWordWrap(true);
    outdated->addWidget(note, 1);
    m_outdated->setObjectName("outdated");
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setEnabled(false); // dimmed

    auto* title = new QHBoxLayout;
    title->setSpacing(looks::kSpacing);
    title->addWidget(m_name, 1);
    title->addWidget(m_pin);
    // A narrow dock scrolls instead of widening the window.
    auto* scroll = new QScrollArea(this);
    auto* content = new QWidget;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(looks::kSpacing);
    layout->addLayout(title);
    for (QWidget* part : std::initializer_list<QWidget*>{m_place, m_state, m_outdated})
        layout->addWidget(part);
    layout->addLayout(m_body, 1);
    layout->addWidget(m_together);
    layout->addWidget(m_hint, 1);
}

void FieldEditorPanel::fieldSelected(SoField*)
{
    showLater();
}

void FieldEditorPanel::sceneChanged()
{
    m_pin->setChecked(false);
    clear();
}

void FieldEditorPanel::editorsChanged()
{
    if (m_edit && isVisible())
        QTimer::singleShot(0, this, m_extension->guard([this] {
            // Its editor went, or another one came.
            if (m_edit && MrbFieldEditors::getInstance()->find(m_edit->getFieldType()) != m_editor)
                makeWidget();
        }));
}

void FieldEditorPanel::showAnew()
{
    if (m_edit)
        makeWidget();
}

void FieldEditorPanel::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    showLater();
}

void FieldEditorPanel::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (!m_isKept)
        clear();
}

/// A signal may come inside a change, and many in one pass.
void FieldEditorPanel::showLater()
{
    if (m_isLater || !isVisible())
        return;
    m_isLater = true;
    QTimer::singleShot(0, this, m_extension->guard([this] {
        m_isLater = false;
        if (isVisible())
            showSelected();
    }));
}

void FieldEditorPanel::showSelected()
{
    if (m_isKept && m_edit) {
        m_together->showCandidate();
        return;
    }
    const SoField* field = m_extension->services()->getSelectedField(); // compared only
    if (!field) {
        clear();
        return;
    }
    if (m_edit && m_edit->getField() == field && m_edit->getFieldCount() == 1 && m_widget)
        return;
    clear();
    m_edit = MrbFieldEdit::createForSelectedField(this);
    if (!m_edit) { // another thread edits
        QTimer::singleShot(kRetryMs, this, m_extension->guard([this] { showLater(); }));
        return;
    }
    connect(m_edit, &MrbFieldEdit::fieldsChanged, this, &FieldEditorPanel::takeFields);
    makeWidget();
}

void FieldEditorPanel::makeWidget()
{
    clearWidget();
    auto* editors = MrbFieldEditors::getInstance();
    m_editor = editors->find(m_edit->getFieldType());
    m_widget = editors->create(m_edit, MrbFieldWidget::Form::Full, m_body->parentWidget());
    if (!m_widget) {
        m_widget = makeTextWidget(m_edit, MrbFieldWidget::Form::Full, m_body->parentWidget());
        m_widget->showValue();
        m_widget->setReadOnly(!m_edit->isEditable());
    }
    m_body->addWidget(m_widget);
    m_widget->show();
    connect(m_widget, &MrbFieldWidget::outdatedChanged, this, &FieldEditorPanel::showOutdated);
    for (QWidget* part : std::initializer_list<QWidget*>{m_name, m_place, m_pin, m_state})
        part->show();
    m_hint->hide();
    m_state->setEdit(m_edit);
    m_together->setEdit(m_edit);
    showTitle();
    showOutdated();
}

void FieldEditorPanel::clearWidget()
{
    if (m_widget)
        m_widget->commit();
    m_state->setEdit(nullptr);
    m_together->setEdit(nullptr);
    if (!m_widget)
        return;
    // The host may hide the window, or select another field, from within a change that the widget
    // is making.
    m_body->removeWidget(m_widget);
    m_widget->disconnect(this);
    m_widget->hide();
    m_widget->deleteLater();
    m_widget = nullptr;
}

void FieldEditorPanel::clear()
{
    clearWidget();
    if (m_edit) {
        m_edit->disconnect(this);
        m_edit->deleteLater(); // after the widget
        m_edit = nullptr;
    }
    for (QWidget* part :
         std::initializer_list<QWidget*>{m_name, m_place, m_pin, m_state, m_outdated, m_together})
        part->hide();
    m_hint->show();
}

/// A field came, went or died.
void FieldEditorPanel::takeFields()
{
    if (m_edit && m_edit->getField()) {
        showTitle();
        return;
    }
    m_pin->setChecked(false);
    QTimer::singleShot(0, this, m_extension->guard([this] {
        if (m_edit && m_edit->getField())
            return;
        clear();
        showLater();
    }));
}

void FieldEditorPanel::showTitle()
{
    const MrbFieldState state = m_edit->getState();
    m_name->setText(state.fieldName);
    QString place = tr("%1 of %2").arg(state.typeName, state.containerType);
    if (!state.containerName.isEmpty())
        place += " \"" + state.containerName + '"';
    const int more = m_edit->getFieldCount() - 1;
    if (more > 0)
        place += tr(" and %n other(s)", nullptr, more);
    m_place->setText(place);
    const QString hint = fieldHint(state.containerType, state.fieldName);
    m_name->setToolTip(hint);
    m_place->setToolTip(hint);
}

void FieldEditorPanel::showOutdated()
{
    m_outdated->setVisible(m_widget && m_widget->isOutdated());
}

void FieldEditorPanel::addSelected()
{
    if (m_edit)
        m_edit->addSelectedField();
}
