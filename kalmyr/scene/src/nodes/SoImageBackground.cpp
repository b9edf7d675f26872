#include <kalmyr/nodes/SoImageBackground.h>

namespace {

constexpr SoEnumEntry kStyles[] = {
    {"STRETCH", SoImageBackground::STRETCH}, {"FIT", SoImageBackground::FIT},
    {"FILL", SoImageBackground::FILL},       {"CENTER", SoImageBackground::CENTER},
    {"TILE", SoImageBackground::TILE},
};

} // namespace

SO_NODE_SOURCE(SoImageBackground)

SoImageBackground::SoImageBackground()
{
    SO_NODE_CONSTRUCTOR(SoBackground);
    SO_ADD_FIELD(filename, (""));
    SO_ADD_EMPTY_FIELD(image);
    SO_ADD_FIELD(style, (STRETCH));
    style.setEnums(kStyles);
}

SoImageBackground::~SoImageBackground() = default;

void SoImageBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoImageBackground, SoBackground, "ImageBackground");
}

void SoImageBackground::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoBackground::copyContents(from, copier);
    setDirectory(static_cast<const SoImageBackground*>(from)->getDirectory());
}

const SbImage& SoImageBackground::getPicture()
{
    const SbString& name = filename.getValue();
    return m_file.get(filename.isIgnored() ? SbString() : name, image.getValue(), "background");
}
