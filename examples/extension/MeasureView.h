#pragma once

#include <QWidget>

#include <memory>

class QLabel;
class SoNode;
class SoNodeSensor;
class SoSensor;

/// Size and primitives of one node, kept up to date while the node lives.
class MeasureView final : public QWidget {
    Q_OBJECT

public:
    explicit MeasureView(QWidget* parent = nullptr);
    ~MeasureView() override;

    /// Null shows a hint.
    void setNode(SoNode* node);

private:
    QLabel* addRow(const char* name, const char* title);
    void refresh();
    static void nodeChanged(void* data, SoSensor* sensor);

    std::unique_ptr<SoNodeSensor> m_sensor; ///< forgets a node that dies
    QLabel* m_type;
    QLabel* m_size;
    QLabel* m_center;
    QLabel* m_primitives;
};
