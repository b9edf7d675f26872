#include <kalmyr/shapes/ShapeSource.h>

#include <kalmyr/shapes/SoGeometry.h>

namespace kalmyr {

void ShapeSource::build(SoGeometry& geometry) const
{
    switch (kind) {
    case NONE:
        break;
    case FACES:
        FaceBuilder(input).build(geometry);
        break;
    case LINES:
        LineBuilder(input).build(geometry);
        break;
    case POINTS:
        PointBuilder(input).build(geometry);
        break;
    }
}

} // namespace kalmyr
