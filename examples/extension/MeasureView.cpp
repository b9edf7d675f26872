#include "MeasureView.h"

#include "MeasurePage.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/core/SoNode.h>

#include <QFormLayout>
#include <QLabel>

namespace {

// Only nodes that look different from near and far ask for it.
const SbViewportRegion kRegion(SbVec2s(640, 480));

QString textOf(const SbVec3f& v, const char* between)
{
    const auto number = [](float value) {
        return QString::number(static_cast<double>(value), 'f', MeasurePage::digits());
    };
    return QStringList{number(v[0]), number(v[1]), number(v[2])}.join(between);
}

QString plural(std::uint64_t count, const char* noun)
{
    return QString("%1 %2%3").arg(count).arg(noun).arg(count == 1 ? "" : "s");
}

QString primitivesOf(SoNode* node)
{
    SoGetPrimitiveCountAction action(kRegion);
    action.apply(node);
    return plural(action.getTriangleCount(), "triangle") + ", "
           + plural(action.getLineCount(), "line") + ", " + plural(action.getPointCount(), "point");
}

QString typeOf(const SoNode* node)
{
    const QString type = QString::fromUtf8(node->getTypeId().getName().getString());
    const QString name = QString::fromUtf8(node->getName().getString());
    return name.isEmpty() ? type : type + " \"" + name + '"';
}

} // namespace

// The sensor waits in the delay queue: a burst of changes is measured once.
MeasureView::MeasureView(MrbExtension* extension, QWidget* parent)
    : QWidget(parent),
      m_guard(extension, [this](SoSensor*) { refresh(); }),
      m_sensor(&MrbSensorGuard::call, &m_guard)
{
    // Dead nodes empty the view; the sensor is detached by then.
    m_sensor.setDeleteCallback(&MrbSensorGuard::call, &m_guard);
    new QFormLayout(this);
    m_type = addRow("type", "Node");
    m_size = addRow("size", "Size");
    m_center = addRow("center", "Center");
    m_primitives = addRow("primitives", "Primitives");
    refresh();
}

MeasureView::~MeasureView()
{
    m_sensor.detach();
}

QLabel* MeasureView::addRow(const char* name, const char* title)
{
    auto* label = new QLabel(this);
    label->setObjectName(name);
    label->setAccessibleName(title);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setWordWrap(true);
    static_cast<QFormLayout*>(layout())->addRow(title, label);
    return label;
}

void MeasureView::setNode(SoNode* node)
{
    m_sensor.attach(node);
    refresh();
}

void MeasureView::refresh()
{
    SoNode* node = m_sensor.getAttachedNode();
    if (!node) {
        m_type->setText("Select a node in the tree");
        for (QLabel* label : {m_size, m_center, m_primitives})
            label->clear();
        return;
    }
    SoGetBoundingBoxAction action(kRegion);
    action.apply(node);
    const SbBox3f box = action.getBoundingBox();
    m_type->setText(typeOf(node));
    m_size->setText(box.isEmpty() ? QString("nothing to see")
                                  : textOf(box.getMax() - box.getMin(), " x "));
    m_center->setText(box.isEmpty() ? QString() : textOf(box.getCenter(), ", "));
    m_primitives->setText(primitivesOf(node));
}
