#pragma once

#include <mirabo/extender/MrbExtension.h>

#include <QPointer>

class MeasureView;
class SoFieldContainer;

/// Measures the selected node in a view of its own, and tints groups from their context menu.
class MeasureExtension final : public MrbExtension {
    Q_OBJECT

public:
    MrbExtensionInfo getInfo() const override;
    bool activate() override;
    void deactivate() override;
    QWidget* createView(QWidget* parent) override;
    MrbPreferencePage* createPreferencePage(QWidget* parent) override;

private:
    void show(SoFieldContainer* container);
    void tint();
    void offerTint();

    QPointer<MeasureView> m_view; // The shell's.
};
