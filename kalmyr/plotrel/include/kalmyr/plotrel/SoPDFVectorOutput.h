#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/plotrel/SoVectorOutput.h>

#include <memory>
#include <string>

namespace kalmyr::detail {
struct PdfModel;
}

/// A file of PDF: one page, with smooth shading, transparency, textures, text that can be searched
/// and copied, and, when asked for, a model in three dimensions in the place of the drawing.
class PLOTREL_API SoPDFVectorOutput final : public SoVectorOutput {
public:
    SoPDFVectorOutput();
    ~SoPDFVectorOutput() override;

    /// How a model is seen at first.
    struct ModelView {
        /// From camera space (right, up, out of the scene) into the model's, without scaling, as
        /// row vectors are multiplied.
        SbMatrix cameraToWorld = SbMatrix::identity();
        float orbitDistance = 1; ///< from the camera to what it turns around; more than 0
        bool perspective = true;
        float heightAngle = 0.785398f; ///< of a perspective view; radians
        float height = 2;              ///< of an orthographic view, in units of the model
        SbColor background{1, 1, 1};
        SbString name; ///< shown by readers; empty: "Default view"
    };

    /// A model, the bytes of a U3D file, for documents written from now on: it fills the drawing's
    /// rectangle, and the drawing stands in its place until the reader activates it, and wherever
    /// models are not supported. No bytes: no model, as at first.
    void setModel(std::string u3d, const ModelView& view);
    bool hasModel() const;

    Abilities getAbilities() const override;

private:
    void write(const kalmyr::detail::VectorDrawing& drawing,
               kalmyr::detail::ByteWriter& bytes) override;

    std::unique_ptr<kalmyr::detail::PdfModel> m_model;
};
