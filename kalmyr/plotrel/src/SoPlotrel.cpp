#include <kalmyr/plotrel/SoPlotrel.h>

#include <kalmyr/plotrel/SoToPDFAction.h>
#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/plotrel/SoVectorizeAction.h>
#include <kalmyr/plotrel/SoVectorizeCGMAction.h>
#include <kalmyr/plotrel/SoVectorizeGDIAction.h>
#include <kalmyr/plotrel/SoVectorizeHPGLAction.h>
#include <kalmyr/plotrel/SoVectorizePSAction.h>
#include <kalmyr/rendering/SoRenderingInit.h>

namespace {

int s_users = 0;

} // namespace

void SoPlotrel::init()
{
    if (s_users++ > 0)
        return;
    kalmyr::initRendering();
    SoVectorizeAction::initClass();
    SoToPDFAction::initClass();
    SoVectorizePSAction::initClass();
    SoVectorizeCGMAction::initClass();
    SoVectorizeGDIAction::initClass();
    SoVectorizeHPGLAction::initClass();
    SoToU3DAction::initClass();
}

void SoPlotrel::finish()
{
    if (s_users > 0)
        --s_users;
}

bool SoPlotrel::isInitialized()
{
    return s_users > 0;
}
