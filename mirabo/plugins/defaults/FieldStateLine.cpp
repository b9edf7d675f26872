#include "FieldStateLine.h"

#include "Looks.h"
#include "NodeChooser.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldConverter.h>
#include <kalmyr/core/SoNode.h>
#include <mirabo/extender/MrbServices.h>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

FieldStateLine::FieldStateLine(QWidget* parent)
    : QWidget(parent),
      m_reset(looks::makeButton(tr("Reset"), tr("Put the default value back"), this)),
      m_ignored(new QCheckBox(tr("Ignored"), this)),
      m_connect(looks::makeButton(tr("Connect..."), tr("Let another field drive this one"), this)),
      m_disconnect(
          looks::makeButton(tr("Disconnect"), tr("Keep the present value and edit it"), this)),
      m_source(new QLabel(this))
{
    m_ignored->setToolTip(tr("An ignored field has no effect on the scene"));
    m_source->setWordWrap(true);
    m_source->setObjectName("fieldSource");
    auto* line = new QHBoxLayout;
    line->setSpacing(looks::kSpacing);
    for (QWidget* part :
         std::initializer_list<QWidget*>{m_ignored, m_reset, m_connect, m_disconnect})
        line->addWidget(part, 0, Qt::AlignVCenter);
    line->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(looks::kSpacing);
    layout->addLayout(line);
    layout->addWidget(m_source);

    connect(m_reset, &QToolButton::clicked, this, [this] {
        if (m_edit)
            m_edit->resetToDefault();
    });
    connect(m_ignored, &QCheckBox::clicked, this, [this](bool on) {
        if (m_edit)
            m_edit->setIgnored(on);
    });
    connect(m_disconnect, &QToolButton::clicked, this, [this] {
        if (m_edit)
            m_edit->disconnectFields();
    });
    connect(m_connect, &QToolButton::clicked, this, &FieldStateLine::chooseSource);
    connect(m_source, &QLabel::linkActivated, this, &FieldStateLine::goToSource);
}

void FieldStateLine::setEdit(MrbFieldEdit* edit)
{
    if (m_edit)
        m_edit->disconnect(this);
    m_edit = edit;
    if (!edit)
        return;
    connect(edit, &MrbFieldEdit::changed, this, &FieldStateLine::showState);
    connect(edit, &MrbFieldEdit::fieldsChanged, this, &FieldStateLine::showState);
    showState();
}

void FieldStateLine::showState()
{
    const MrbFieldState state = m_edit->getState();
    if (!state.isAlive)
        return; // read again with the next change
    m_ignored->setChecked(state.isIgnored);
    m_reset->setEnabled(state.hasDefault && !state.isDefault && !state.isReadOnly);
    m_reset->setText(state.isDefault ? tr("Default") : tr("Reset"));
    const bool isOutput = state.isReadOnly && !state.isConnected;
    m_connect->setVisible(!state.isConnected && !isOutput);
    m_disconnect->setVisible(state.isConnected);
    m_source->setVisible(state.isReadOnly);
    if (state.isConnected)
        m_source->setText(
            tr("Driven by <a href=\"source\">%1</a>").arg(state.source.toHtmlEscaped()));
    else if (isOutput)
        m_source->setText(
            tr("An output: its value comes from %1.").arg(state.containerType.toHtmlEscaped()));
}

void FieldStateLine::chooseSource()
{
    if (!m_edit)
        return;
    const SoType type = m_edit->getFieldType();
    const SoField* own = m_edit->getField();
    const auto isPossible = [type, own](const SoField& field) {
        const SoField::FieldType kind = field.getFieldType();
        return &field != own && kind != SoField::EVENT_IN && kind != SoField::INTERNAL
               && SoFieldConverter::canConvert(field.getTypeId(), type);
    };
    auto* dialog = new NodeChooser(
        tr("Connect From"), isPossible,
        [edit = m_edit](SoField* field) {
            if (edit)
                edit->connectFields(field);
        },
        this);
    dialog->open();
}

/// Shows the node that drives the field, and selects its field.
void FieldStateLine::goToSource()
{
    MrbServices* services = MrbServices::getInstance();
    SoField* source = nullptr;
    SoRef<SoFieldContainer> container;
    if (m_edit)
        m_edit->read([&](const SoField& field) {
            source = field.getConnectedField();
            container = source ? source->getContainer() : nullptr;
        });
    if (!source || !services)
        return;
    if (container && container->isOfType(SoNode::getClassTypeId()))
        services->setSelectedNode(container.get());
    services->setSelectedField(source);
}
