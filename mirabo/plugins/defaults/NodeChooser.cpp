#include "NodeChooser.h"

#include "FieldText.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoReadLock.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int kMaxListed = 500;
constexpr double kPatience = 0.05; // seconds to wait for an editing thread

/// Up and down in the search line move in the list.
class SearchLine final : public QLineEdit {
public:
    SearchLine(QListWidget* list, QWidget* parent) : QLineEdit(parent), m_list(list) {}

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        const int step = event->key() == Qt::Key_Down ? 1 : event->key() == Qt::Key_Up ? -1 : 0;
        const int row = m_list->currentRow() + step;
        if (step == 0)
            QLineEdit::keyPressEvent(event);
        else if (row >= 0 && row < m_list->count())
            m_list->setCurrentRow(row);
    }

private:
    QListWidget* m_list; // Not owned; the dialog's.
};

} // namespace

NodeChooser::NodeChooser(const QString& title, Choose choose, QWidget* parent)
    : QDialog(parent), m_choose(std::move(choose))
{
    build(title);
}

NodeChooser::NodeChooser(const QString& title, FieldFilter filter, ChooseField choose,
                         QWidget* parent)
    : QDialog(parent), m_filter(std::move(filter)), m_chooseField(std::move(choose))
{
    m_fields = new QComboBox(this);
    m_fields->setAccessibleName(tr("Field"));
    build(title);
}

void NodeChooser::build(const QString& title)
{
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    m_list = new QListWidget(this);
    m_list->setUniformItemSizes(true);
    m_list->setAccessibleName(tr("Nodes"));
    m_search = new SearchLine(m_list, this);
    m_search->setPlaceholderText(tr("Search by type or name"));
    m_search->setAccessibleName(tr("Search"));
    m_search->setClearButtonEnabled(true);
    m_hint = new QLabel(this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);

    auto* layout = new QVBoxLayout(this);
    for (QWidget* part : std::initializer_list<QWidget*>{m_search, m_list, m_hint})
        layout->addWidget(part);
    if (m_fields) {
        auto* line = new QHBoxLayout;
        line->addWidget(new QLabel(tr("Field"), this));
        line->addWidget(m_fields, 1);
        layout->addLayout(line);
    }
    layout->addWidget(buttons);
    const QFontMetrics font = fontMetrics();
    resize(font.averageCharWidth() * 60, font.height() * 26);

    connect(m_search, &QLineEdit::textChanged, this, &NodeChooser::search);
    connect(m_list, &QListWidget::currentRowChanged, this, &NodeChooser::listFields);
    connect(m_list, &QListWidget::itemActivated, this, [this] {
        if (m_ok->isEnabled())
            accept();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &NodeChooser::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    search();
}

void NodeChooser::search()
{
    bool isCut = false;
    m_nodes = findSceneNodes(m_search->text().trimmed(), kMaxListed, isCut);
    const QSignalBlocker blocker(m_list);
    m_list->clear();
    for (const SceneNode& node : m_nodes)
        m_list->addItem(node.text);
    m_list->setCurrentRow(m_nodes.empty() ? -1 : 0);
    m_hint->setText(m_nodes.empty() ? tr("No node of the scene matches.")
                    : isCut         ? tr("The first %1 nodes; search for others.").arg(kMaxListed)
                                    : tr("%n node(s)", nullptr, static_cast<int>(m_nodes.size())));
    listFields();
}

const SoNode* NodeChooser::currentNode() const
{
    const int row = m_list->currentRow();
    return row >= 0 && row < static_cast<int>(m_nodes.size())
               ? m_nodes[static_cast<std::size_t>(row)].node
               : nullptr;
}

void NodeChooser::listFields()
{
    if (m_fields) {
        const QString before = m_fields->currentText();
        m_fields->clear();
        const SoRef<SoNode> node = resolveSceneNode(currentNode());
        const SoReadLock lock{SbTime(kPatience)};
        const SoFieldData* data = node && lock ? node->getFieldData() : nullptr;
        for (int i = 0; data && i < data->getNumFields(); ++i)
            if (m_filter(*data->getField(node.get(), i)))
                m_fields->addItem(toText(data->getFieldName(i)));
        m_fields->setCurrentIndex(std::max(0, m_fields->findText(before)));
    }
    enableButton();
}

void NodeChooser::enableButton()
{
    m_ok->setEnabled(currentNode() && (!m_fields || m_fields->count() > 0));
}

void NodeChooser::accept()
{
    const SoRef<SoNode> node = resolveSceneNode(currentNode());
    const QString field = m_fields ? m_fields->currentText() : QString();
    const Choose choose = m_choose;
    const ChooseField chooseField = m_chooseField;
    QDialog::accept(); // first: what follows may end all of this
    if (!node)
        return; // it died meanwhile
    if (chooseField) {
        if (SoField* chosen = node->getField(SbName(field.toUtf8().constData())))
            chooseField(chosen);
    } else {
        choose(node.get());
    }
}
