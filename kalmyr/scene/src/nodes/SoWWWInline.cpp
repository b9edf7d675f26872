#include <kalmyr/nodes/SoWWWInline.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>

namespace {

SoWWWInline::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;
SoWWWInline::Loader* s_loader = nullptr;

} // namespace

SO_NODE_SOURCE(SoWWWInline)

SoWWWInline::SoWWWInline()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, (""));
    SO_ADD_FIELD(bboxSize, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(bboxCenter, (0.0f, 0.0f, 0.0f));
    addBox();
}

SoWWWInline::~SoWWWInline() = default;

void SoWWWInline::initClass()
{
    SO_NODE_INIT_CLASS(SoWWWInline, SoNode, "WWWInline");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* self = static_cast<SoWWWInline*>(node);
        const SbVec3f size = self->bboxSize.getValue(), center = self->bboxCenter.getValue();
        const bool known = size[0] > 0 && size[1] > 0 && size[2] > 0;
        self->measure(action, known ? SbBox3f(center - size / 2, center + size / 2) : SbBox3f());
    });
}

void SoWWWInline::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

SoWWWInline::FetchURLCallBack* SoWWWInline::getFetchURLCallBack()
{
    return s_fetch;
}

void* SoWWWInline::getFetchURLData()
{
    return s_fetchData;
}

bool SoWWWInline::fetch(const SbString& url, SoWWWInline* node)
{
    if (s_fetch)
        s_fetch(url, s_fetchData, node);
    return s_fetch != nullptr;
}

void SoWWWInline::setLoader(Loader* loader)
{
    s_loader = loader;
}

bool SoWWWInline::requestURLData()
{
    return s_loader && s_loader(this);
}

bool SoWWWInline::load()
{
    return requestURLData();
}
