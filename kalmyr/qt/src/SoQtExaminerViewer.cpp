#include <kalmyr/qt/SoQtExaminerViewer.h>

#include <kalmyr/gui/SoGuiExaminerViewer.h>

SoQtExaminerViewer::SoQtExaminerViewer(QWidget* parent, const char* name, bool embed,
                                       BuildFlag flag, Type type)
    : SoQtViewer(new SoGuiExaminerViewer, parent, name, embed, flag, type)
{
}

SoQtExaminerViewer::~SoQtExaminerViewer() = default;

SoGuiExaminerViewer* SoQtExaminerViewer::getGuiExaminerViewer() const
{
    return static_cast<SoGuiExaminerViewer*>(getGuiRenderArea());
}
