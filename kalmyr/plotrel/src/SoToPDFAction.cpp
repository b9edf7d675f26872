#include <kalmyr/plotrel/SoToPDFAction.h>

#include <kalmyr/plotrel/SoToU3DAction.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <cmath>

SO_DERIVED_ACTION_SOURCE(SoToPDFAction, SoVectorizeAction, "ToPDFAction")

SoToPDFAction::SoToPDFAction() : SoVectorizeAction(new SoPDFVectorOutput) {}

SoToPDFAction::~SoToPDFAction() = default;

SoPDFVectorOutput* SoToPDFAction::getPDFVectorOutput() const
{
    return static_cast<SoPDFVectorOutput*>(getVectorOutput());
}

/// The model is seen through the camera that the drawing is seen through.
void SoToPDFAction::sceneViewed(SoNode* root, const SoSceneView& seen)
{
    SoPDFVectorOutput::ModelView view;
    std::string model;
    SoToU3DAction action;
    if (m_modelEmbedded && root && !seen.cameras.empty() && action.writeToMemory(root, model)) {
        const SoView& camera = seen.cameras.back().view;
        const float scale = camera.projection[1][1];
        view.cameraToWorld = camera.viewing.inverse();
        view.orbitDistance = camera.focalDistance > 0 ? camera.focalDistance : 1;
        view.perspective = camera.projection[2][3] != 0;
        if (scale > 0) {
            view.heightAngle = 2 * std::atan(1 / scale);
            view.height = 2 / scale;
        }
        view.background = getBackgroundColor().value_or(SbColor(1, 1, 1));
    }
    getPDFVectorOutput()->setModel(std::move(model), view);
}
