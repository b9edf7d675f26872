#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbVec.h>

#include <span>
#include <string>
#include <string_view>

namespace kalmyr::detail {

/// Semi-major axis in metres and flattening.
struct Ellipsoid {
    double a = 6378137;
    double f = 1 / 298.257223563;
    double e2() const { return f * (2 - f); }
};

/// How places on the earth are written: a spatial reference frame with its parameters.
///
/// GD: latitude and longitude in degrees and elevation in metres above the ellipsoid; UTM: northing
/// and easting of a zone in metres, and elevation; GC: metres from the centre of the earth, x to 0
/// 0, z to the north pole. Geoids are not known: elevations count from the ellipsoid.
class GeoSystem {
public:
    enum Frame { GD, UTM, GC };

    /// Returns what is wrong, or an empty text. Without any words it is GD on WGS 84.
    std::string set(std::span<const SbString> words);

    Frame getFrame() const { return m_frame; }
    /// To metres from the centre of the earth. NaN where there is no such place.
    SbVec3d toCentre(const SbVec3d& given) const;
    SbVec3d fromCentre(const SbVec3d& place) const;
    /// Steps eastwards and northwards from a place, as grids do, in the units of the frame.
    SbVec3d stepped(const SbVec3d& from, double east, double north, double up) const;

private:
    SbVec3d utmToDegrees(const SbVec3d& given) const;
    SbVec3d degreesToUtm(const SbVec3d& degrees) const;

    Frame m_frame = GD;
    Ellipsoid m_ellipsoid;
    int m_zone = 0;
    bool m_isSouth = false;
    bool m_isSwapped = false; ///< longitude, or easting, stands first
};

/// Three numbers in a text; false when there are not.
bool readPlace(std::string_view text, SbVec3d& place);
std::string placeText(const SbVec3d& place);

/// From a frame at a place, x east, y up and z south, to the axes of the earth's centre.
SbMatrix axesAt(const SbVec3d& place);

} // namespace kalmyr::detail
