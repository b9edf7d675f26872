#pragma once

#include <kalmyr/base/SoRef.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoRotationXYZ.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoSphere.h>

#include <string>
#include <vector>

/// A scene that moves: planets on arms around a sun. One ball serves all planets.
class Orrery {
public:
    Orrery()
    {
        root->setName("Orrery");
        auto* sun = new SoSphere;
        sun->radius = 1.2f;
        root->addChild(colour(1.0f, 0.8f, 0.25f));
        root->addChild(sun);
        auto* ball = new SoSeparator;
        ball->setName("Ball");
        ball->addChild(new SoSphere);
        constexpr float kColours[][3] = {
            {0.75f, 0.55f, 0.4f}, {0.3f, 0.6f, 0.9f}, {0.85f, 0.35f, 0.25f}, {0.8f, 0.75f, 0.6f}};
        float distance = 3;
        for (const auto& c : kColours) {
            addPlanet(ball, colour(c[0], c[1], c[2]), distance);
            distance += 2.4f;
        }
    }

    /// Moves all planets to where they are after `seconds`.
    void moveTo(double seconds)
    {
        double speed = 1.6;
        for (SoRotationXYZ* turn : m_turns) {
            turn->angle = static_cast<float>(seconds * speed);
            speed *= 0.62;
        }
    }

    const SoRef<SoSeparator> root{new SoSeparator};

private:
    static SoMaterial* colour(float r, float g, float b)
    {
        auto* material = new SoMaterial;
        material->diffuseColor = SbColor(r, g, b);
        return material;
    }

    void addPlanet(SoNode* ball, SoMaterial* material, float distance)
    {
        auto* planet = new SoSeparator;
        planet->setName(("Planet" + std::to_string(m_turns.size() + 1)).c_str());
        auto* turn = new SoRotationXYZ;
        turn->axis = SoRotationXYZ::Y;
        auto* arm = new SoTranslation;
        arm->translation = SbVec3f(distance, 0, 0);
        for (SoNode* node : {static_cast<SoNode*>(turn), static_cast<SoNode*>(arm),
                             static_cast<SoNode*>(material), ball})
            planet->addChild(node);
        m_turns.push_back(turn);
        root->addChild(planet);
    }

    std::vector<SoRotationXYZ*> m_turns; // Not owned; parts of the scene.
};
