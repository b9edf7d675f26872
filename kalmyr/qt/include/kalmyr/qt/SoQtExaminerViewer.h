#pragma once

#include <kalmyr/qt/SoQtViewer.h>

class SoGuiExaminerViewer;

/// A viewer that turns the scene as an object held in the hand: left drag orbits, middle drag or
/// Shift + left drag pans, Ctrl + left drag or the wheel zooms.
class KALMYRQT_API SoQtExaminerViewer : public SoQtViewer {
public:
    explicit SoQtExaminerViewer(QWidget* parent = nullptr, const char* name = nullptr,
                                bool embed = true, BuildFlag flag = BUILD_ALL, Type type = BROWSER);
    ~SoQtExaminerViewer() override;

    SoGuiExaminerViewer* getGuiExaminerViewer() const;
};
