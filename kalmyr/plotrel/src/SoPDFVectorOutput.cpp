#include <kalmyr/plotrel/SoPDFVectorOutput.h>

#include "pdf/PdfWriter.h"

using kalmyr::detail::PdfModel;

SoPDFVectorOutput::SoPDFVectorOutput() : m_model(std::make_unique<PdfModel>()) {}

SoPDFVectorOutput::~SoPDFVectorOutput() = default;

void SoPDFVectorOutput::setModel(std::string u3d, const ModelView& view)
{
    PdfModel& model = *m_model;
    model.u3d = std::move(u3d);
    model.name = view.name.getString();
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            model.camera[3 * row + column] = view.cameraToWorld[row][column];
    model.orbitDistance = view.orbitDistance;
    model.perspective = view.perspective;
    model.fieldOfView = view.heightAngle;
    model.height = view.height;
    model.background = view.background;
}

bool SoPDFVectorOutput::hasModel() const
{
    return !m_model->u3d.empty();
}

SoVectorOutput::Abilities SoPDFVectorOutput::getAbilities() const
{
    Abilities abilities;
    abilities.shading = abilities.transparency = abilities.images = true;
    return abilities;
}

void SoPDFVectorOutput::write(const kalmyr::detail::VectorDrawing& drawing,
                              kalmyr::detail::ByteWriter& bytes)
{
    kalmyr::detail::writePdf(drawing, {SbTime::getTimeOfDay(), *m_model}, bytes);
}
