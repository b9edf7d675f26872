#include <kalmyr/vrml/SoVRMLBackground.h>

#include "UrlPicture.h"

#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"

SO_NODE_SOURCE(SoVRMLBackground)

struct SoVRMLBackground::Pictures {
    kalmyr::detail::UrlPicture sides[NUM_SIDES];
};

SoVRMLBackground::SoVRMLBackground()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED_EMPTY(groundAngle);
    SO_VRML_EXPOSED_EMPTY(groundColor);
    SO_VRML_EXPOSED_EMPTY(backUrl);
    SO_VRML_EXPOSED_EMPTY(bottomUrl);
    SO_VRML_EXPOSED_EMPTY(frontUrl);
    SO_VRML_EXPOSED_EMPTY(leftUrl);
    SO_VRML_EXPOSED_EMPTY(rightUrl);
    SO_VRML_EXPOSED_EMPTY(topUrl);
    SO_VRML_EXPOSED_EMPTY(skyAngle);
    SO_VRML_EXPOSED(skyColor, (0.0f, 0.0f, 0.0f));
}

SoVRMLBackground::~SoVRMLBackground() = default;

void SoVRMLBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLBackground, SoVRMLBindable, "VRMLBackground");
}

const SbImage& SoVRMLBackground::getPicture(int side)
{
    const SoMFString* const urls[] = {&frontUrl, &backUrl, &leftUrl,
                                      &rightUrl, &topUrl,  &bottomUrl};
    static const SbImage none;
    if (urls[side]->getNum() == 0)
        return none;
    {
        const kalmyr::detail::CacheLock lock;
        if (!m_pictures)
            m_pictures = std::make_unique<Pictures>();
    }
    return m_pictures->sides[side].get(urls[side]->values(), m_directory, *this);
}

void SoVRMLBackground::setDirectory(const SbString& directory)
{
    m_directory = directory;
    m_pictures.reset();
}

void SoVRMLBackground::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoVRMLBindable::copyContents(from, copier);
    setDirectory(static_cast<const SoVRMLBackground*>(from)->m_directory);
}
