#pragma once

#include <kalmyr/sensors/SoNodeSensor.h>
#include <mirabo/extender/MrbExtension.h>

#include <QWidget>

class QLabel;
class SoNode;

/// Size and primitives of one node, kept up to date while the node lives.
class MeasureView final : public QWidget {
    Q_OBJECT

public:
    MeasureView(MrbExtension* extension, QWidget* parent);
    ~MeasureView() override;

    /// Null shows a hint.
    void setNode(SoNode* node);

private:
    QLabel* addRow(const char* name, const char* title);
    void refresh();

    MrbSensorGuard m_guard; ///< a fault in refresh() ends the extension, not the host
    SoNodeSensor m_sensor;  ///< forgets a node that dies
    QLabel* m_type;
    QLabel* m_size;
    QLabel* m_center;
    QLabel* m_primitives;
};
