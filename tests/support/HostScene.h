#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoOutput.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <string>

namespace support {

/// A host's scene: a part that hangs in it twice, and a sphere. Ten occurrences in all.
inline SoRef<SoSeparator> hostScene()
{
    SoRef<SoSeparator> root(new SoSeparator);
    root->setName("Scene");
    auto* part = new SoSeparator;
    part->setName("Wheel");
    part->addChild(new SoMaterial);
    part->addChild(new SoCube);
    auto* aside = new SoTranslation;
    aside->translation = SbVec3f(3, 0, 0);
    root->addChild(part);
    root->addChild(aside);
    root->addChild(part);
    root->addChild(new SoTranslation);
    root->addChild(new SoSphere);
    return root;
}

inline constexpr int kHostSceneRows = 10;

/// The scene as text.
inline std::string writeScene(SoNode* root)
{
    SoOutput out;
    out.setBuffer();
    SoWriteAction action(&out);
    action.apply(root);
    return std::string(out.getText());
}

} // namespace support
