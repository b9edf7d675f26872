#include "TogetherLine.h"

#include "Looks.h"

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
    showFields();
}

void TogetherLine::showCandidate()
{
    const QString name = m_edit && m_isOffering ? m_edit->selectedFieldToAdd() : QString();
    m_add->setEnabled(!name.isEmpty());
    m_add->setText(name.isEmpty() ? tr("Add the Selected Field") : tr("Add %1").arg(name));
    m_add->setToolTip(m_edit ? tr("Edit the selected field together with this one; it must be "
                                  "another %1")
                                   .arg(m_edit->getState().typeName)
                             : QString());
}

void TogetherLine::showFields()
{
    delete m_list;
    m_list = nullptr;
    const int count = m_edit ? m_edit->getFieldCount() : 0;
    setVisible(m_edit && (m_isOffering || count > 1));
    m_add->setVisible(m_isOffering);
    showCandidate();
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
