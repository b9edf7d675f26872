#include "ReferenceWidget.h"

#include "FieldText.h"
#include "NodeChooser.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/fields/SoSFBufferObject.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoSFPath.h>
#include <mirabo/extender/MrbServices.h>

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace {

/// Of a drag of a tree row, whose node is the selected one.
constexpr char kTreeRowFormat[] = "treeviewnodeobject";
constexpr int kMaxPathNodes = 8; // of a long path the last ones are shown

/// Object that a field holds: its text, and the target of "Go To".
struct Held {
    QString text;
    QString toolTip;
    const SoFieldContainer* target = nullptr; ///< for comparison only
    bool isNode = false;
};

QString pathText(const SoPath& path, int from)
{
    QStringList nodes;
    for (int i = from; i < path.getLength(); ++i)
        nodes << describe(*path.getNode(i));
    return nodes.join(" > ");
}

Held heldBy(const SoField& field)
{
    Held held;
    const auto take = [&held](const SoFieldContainer* object, bool isNode) {
        held.target = object;
        held.isNode = isNode;
        held.text = object ? describe(*object) : QString("NULL");
    };
    if (field.isOfType(SoSFNode::getClassTypeId())) {
        take(static_cast<const SoSFNode&>(field).getValue(), true);
    } else if (field.isOfType(SoSFEngine::getClassTypeId())) {
        take(static_cast<const SoSFEngine&>(field).getValue(), false);
    } else if (field.isOfType(SoSFFieldContainer::getClassTypeId())) {
        take(static_cast<const SoSFFieldContainer&>(field).getValue(), false);
    } else if (field.isOfType(SoSFPath::getClassTypeId())) {
        const SoPath* path = static_cast<const SoSFPath&>(field).getValue();
        const int length = path ? path->getLength() : 0;
        take(length > 0 ? path->getNode(length - 1) : nullptr, true);
        if (length > 0) {
            const int from = std::max(0, length - kMaxPathNodes);
            held.text = (from > 0 ? "... > " : "") + pathText(*path, from);
            held.toolTip = QObject::tr("A path of %1 nodes").arg(length);
        }
    } else {
        SbString text;
        field.get(text);
        held.text = toText(text);
    }
    return held;
}

class ReferenceWidget final : public MrbFieldWidget {
public:
    ReferenceWidget(MrbFieldEdit* edit, QWidget* parent)
        : MrbFieldWidget(edit, parent), m_text(new QLabel(this))
    {
        const SoType type = edit->getFieldType();
        m_isPath = type.isDerivedFrom(SoSFPath::getClassTypeId());
        m_isChoice = m_isPath || type.isDerivedFrom(SoSFNode::getClassTypeId());
        m_text->setWordWrap(true);
        m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        m_text->setAccessibleName(tr("Value"));
        auto* buttons = new QHBoxLayout;
        buttons->setSpacing(4);
        const auto addButton = [&](const QString& text, const QString& tip, auto slot) {
            auto* button = new QToolButton(this);
            button->setText(text);
            button->setToolTip(tip);
            button->setAutoRaise(true);
            connect(button, &QToolButton::clicked, this, slot);
            buttons->addWidget(button);
            return button;
        };
        m_choose =
            addButton(tr("Choose..."), tr("Choose a node of the scene"), [this] { chooseNode(); });
        m_none = addButton(tr("None"), tr("Hold nothing"), [this] { setNode(nullptr); });
        m_goTo = addButton(tr("Go To"), tr("Select it in the tree"), [this] { goTo(); });
        buttons->addStretch();
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(4);
        layout->addWidget(m_text);
        layout->addLayout(buttons);
        layout->addStretch();
        setAcceptDrops(m_isChoice);
        m_choose->setVisible(m_isChoice);
        m_none->setVisible(m_isChoice);
        setFocusProxy(m_isChoice ? m_choose : m_goTo);
    }

    void showValue() override
    {
        edit()->read([this](const SoField& field) {
            m_held = heldBy(field);
            m_text->setText(m_held.text);
            m_text->setToolTip(m_held.toolTip);
            m_none->setEnabled(!m_isReadOnly && m_held.target);
            m_goTo->setEnabled(m_held.target && m_held.isNode);
        });
    }
    void setReadOnly(bool on) override
    {
        m_isReadOnly = on;
        setAcceptDrops(m_isChoice && !on);
        m_choose->setEnabled(!on);
        m_none->setEnabled(!on && m_held.target);
    }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override
    {
        if (event->mimeData()->hasFormat(kTreeRowFormat))
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent* event) override
    {
        event->setDropAction(Qt::CopyAction); // the row stays where it is
        event->accept();
        const SoFieldContainer* dropped = MrbServices::getInstance()->getSelectedNode();
        const SoRef<SoNode> node = resolveSceneNode(static_cast<const SoNode*>(dropped));
        if (node)
            setNode(node.get());
    }

private:
    void chooseNode()
    {
        auto* dialog = new NodeChooser(
            tr("Choose a Node"),
            [self = QPointer(this)](SoNode* node) {
                if (self)
                    self->setNode(node);
            },
            this);
        dialog->open();
    }
    void setNode(SoNode* node)
    {
        SoRef<SoPath> path;
        SoNode* root = MrbServices::getInstance()->getSceneGraph();
        if (m_isPath && node && root) {
            const auto places = kalmyr::findPlaces(root, node, 1);
            if (!places.empty())
                path = places.front();
        }
        edit()->change([&](SoField& value) {
            if (m_isPath)
                static_cast<SoSFPath&>(value).setValue(path.get());
            else
                static_cast<SoSFNode&>(value).setValue(node);
            return true;
        });
        showValue();
    }
    void goTo()
    {
        if (!m_held.isNode || !m_held.target)
            return;
        const SoRef<SoNode> node = resolveSceneNode(static_cast<const SoNode*>(m_held.target));
        if (node)
            MrbServices::getInstance()->setSelectedNode(node.get());
    }

    QLabel* m_text;
    QToolButton* m_choose;
    QToolButton* m_none;
    QToolButton* m_goTo;
    Held m_held;
    bool m_isPath = false;
    bool m_isChoice = false;
    bool m_isReadOnly = false;
};

} // namespace

bool isReferenceType(SoType type)
{
    for (const SoType held :
         {SoSFNode::getClassTypeId(), SoSFPath::getClassTypeId(), SoSFEngine::getClassTypeId(),
          SoSFFieldContainer::getClassTypeId(), SoSFBufferObject::getClassTypeId()})
        if (type.isDerivedFrom(held))
            return true;
    return false;
}

MrbFieldWidget* makeReferenceWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    return form == MrbFieldWidget::Form::Full ? new ReferenceWidget(edit, parent) : nullptr;
}
