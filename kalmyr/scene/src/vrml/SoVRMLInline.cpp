#include <kalmyr/vrml/SoVRMLInline.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

namespace {

SoVRMLInline::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;
SoVRMLInline::Loader* s_loader = nullptr;

} // namespace

SO_NODE_SOURCE(SoVRMLInline)

SoVRMLInline::SoVRMLInline()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(url);
    SO_VRML_FIELD(bboxCenter, (0.0f, 0.0f, 0.0f));
    SO_VRML_FIELD(bboxSize, (-1.0f, -1.0f, -1.0f));
    addBox();
}

SoVRMLInline::~SoVRMLInline() = default;

void SoVRMLInline::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLInline, SoNode, "VRMLInline");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* self = static_cast<SoVRMLInline*>(node);
        const SbVec3f size = self->bboxSize.getValue(), center = self->bboxCenter.getValue();
        const bool known = size[0] >= 0 && size[1] >= 0 && size[2] >= 0;
        self->measure(action, known ? SbBox3f(center - size / 2, center + size / 2) : SbBox3f());
    });
}

void SoVRMLInline::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

SoVRMLInline::FetchURLCallBack* SoVRMLInline::getFetchURLCallBack()
{
    return s_fetch;
}

void* SoVRMLInline::getFetchURLData()
{
    return s_fetchData;
}

bool SoVRMLInline::fetch(const SbString& url, SoVRMLInline* node)
{
    if (s_fetch)
        s_fetch(url, s_fetchData, node);
    return s_fetch != nullptr;
}

void SoVRMLInline::setLoader(Loader* loader)
{
    s_loader = loader;
}

bool SoVRMLInline::requestChildrenFromURL()
{
    if (s_loader)
        return s_loader(this);
    SoDebugError::post("SoVRMLInline::requestChildrenFromURL", "nothing can read scene files yet");
    return false;
}

bool SoVRMLInline::load()
{
    return requestChildrenFromURL();
}
