#include "TogetherLine.h"

#include "FieldText.h"
#include "Looks.h"
#include "SceneNodes.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

TogetherLine::TogetherLine(QWidget* parent)
    : QWidget(parent),
      m_layout(new QVBoxLayout(this)),
      m_add(looks::makeButton(tr("Add the Selected Field"),
                              tr("Edit the selected field together with this one"), this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(looks::kSpacing);
    m_layout->addWidget(m_add, 0, Qt::AlignLeft);
    m_add->setObjectName("addField");
    m_add->setEnabled(false);
    connect(m_add, &QToolButton::clicked, this, &TogetherLine::addRequested);
}

void TogetherLine::setEdit(MrbFieldEdit* edit)
{
    if (m_edit)
        m_edit->disconnect(this);
    m_edit = edit;
    if (edit)
        connect(edit, &MrbFieldEdit::fieldsChanged, this, &TogetherLine::showFields);
    showFields();
}

void TogetherLine::setOffering(bool on)
{
    m_isOffering = on;
    setCandidate(nullptr);
    showFields();
}

void TogetherLine::setCandidate(SoField* field)
{
    bool isNew = m_edit && field && field->getTypeId() == m_edit->getFieldType();
    for (int i = 0; isNew && i < m_edit->getFieldCount(); ++i)
        isNew = m_edit->getField(i) != field;
    m_add->setEnabled(isNew);
    const SoFieldContainer* container = isNew ? field->getContainer() : nullptr;
    m_add->setText(
        container
            ? tr("Add %1 of %2").arg(toText(container->getFieldName(field)), describe(*container))
            : tr("Add the Selected Field"));
    m_add->setToolTip(m_edit ? tr("Edit the selected field together with this one; it must be "
                                  "another %1")
                                   .arg(toText(m_edit->getFieldType().getName()))
                             : QString());
}

void TogetherLine::showFields()
{
    delete m_list;
    m_list = nullptr;
    const int count = m_edit ? m_edit->getFieldCount() : 0;
    setVisible(m_edit && (m_isOffering || count > 1));
    m_add->setVisible(m_isOffering);
    setCandidate(nullptr);
    if (count < 2)
        return;
    m_list = new QWidget(this);
    auto* lines = new QVBoxLayout(m_list);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    lines->addWidget(new QLabel(tr("Edited together with"), m_list));
    for (int i = 1; i < count; ++i) {
        const MrbFieldState state = m_edit->getState(i);
        const QString node =
            state.containerName.isEmpty()
                ? state.containerType
                : QString("%1 \"%2\"").arg(state.containerType, state.containerName);
        auto* line = new QHBoxLayout;
        line->addWidget(
            new QLabel(state.isAlive ? tr("%1 of %2").arg(state.fieldName, node) : tr("(deleted)"),
                       m_list),
            1);
        QToolButton* remove =
            looks::makeButton(tr("Remove"), tr("Edit it no longer together"), m_list);
        connect(remove, &QToolButton::clicked, this, [this, i] {
            if (m_edit)
                m_edit->removeField(i);
        });
        line->addWidget(remove);
        lines->addLayout(line);
    }
    m_layout->insertWidget(0, m_list);
}
