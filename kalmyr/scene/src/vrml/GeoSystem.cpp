#include "GeoSystem.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kScale = 0.9996; ///< of UTM along its central meridian
constexpr double kFalseEasting = 500'000;
constexpr double kFalseNorthing = 10'000'000; ///< of the southern half

struct Entry {
    std::string_view code;
    double a;
    double inverseFlattening;
};
constexpr Entry kEllipsoids[] = {
    {"AA", 6377563.396, 299.3249646}, {"AM", 6377340.189, 299.3249646},
    {"AN", 6378160, 298.25},          {"BN", 6377483.865, 299.1528128},
    {"BR", 6377397.155, 299.1528128}, {"CC", 6378206.4, 294.9786982},
    {"CD", 6378249.145, 293.465},     {"EA", 6377276.345, 300.8017},
    {"EB", 6377298.556, 300.8017},    {"EC", 6377301.243, 300.8017},
    {"ED", 6377295.664, 300.8017},    {"EE", 6377304.063, 300.8017},
    {"EF", 6377309.613, 300.8017},    {"FA", 6378155, 298.3},
    {"HE", 6378200, 298.3},           {"HO", 6378270, 297},
    {"ID", 6378160, 298.247},         {"IN", 6378388, 297},
    {"KA", 6378245, 298.3},           {"RF", 6378137, 298.257222101},
    {"SA", 6378160, 298.25},          {"WD", 6378135, 298.26},
    {"WE", 6378137, 298.257223563},
};

const Entry* findEllipsoid(std::string_view code)
{
    for (const Entry& entry : kEllipsoids) {
        if (entry.code == code)
            return &entry;
    }
    return nullptr;
}

SbVec3d nowhere()
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    return {kNaN, kNaN, kNaN};
}

SbVec3d degreesToCentre(const SbVec3d& degrees, const Ellipsoid& on)
{
    const double lat = degrees[0] * kDegree, lon = degrees[1] * kDegree, h = degrees[2];
    const double n = on.a / std::sqrt(1 - on.e2() * std::sin(lat) * std::sin(lat));
    return {(n + h) * std::cos(lat) * std::cos(lon), (n + h) * std::cos(lat) * std::sin(lon),
            (n * (1 - on.e2()) + h) * std::sin(lat)};
}

/// By iteration of the latitude, which gains three digits a step near the surface.
SbVec3d centreToDegrees(const SbVec3d& p, const Ellipsoid& on)
{
    constexpr int kSteps = 12;
    const double e2 = on.e2(), across = std::hypot(p[0], p[1]);
    double lat = std::atan2(p[2], across * (1 - e2)), h = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double s = std::sin(lat);
        const double n = on.a / std::sqrt(1 - e2 * s * s);
        // Of the two ways to the height the one that does not divide by little.
        h = std::abs(s) < 0.7 ? across / std::cos(lat) - n : p[2] / s - n * (1 - e2);
        lat = std::atan2(p[2], across * (1 - e2 * n / (n + h)));
    }
    return {lat / kDegree, std::atan2(p[1], p[0]) / kDegree, h};
}

/// Length of the meridian from the equator; J. P. Snyder, "Map Projections: A Working Manual"
/// (USGS 1395), 3-21.
double meridian(double lat, const Ellipsoid& on)
{
    const double e2 = on.e2(), e4 = e2 * e2, e6 = e4 * e2;
    return on.a
           * ((1 - e2 / 4 - 3 * e4 / 64 - 5 * e6 / 256) * lat
              - (3 * e2 / 8 + 3 * e4 / 32 + 45 * e6 / 1024) * std::sin(2 * lat)
              + (15 * e4 / 256 + 45 * e6 / 1024) * std::sin(4 * lat)
              - 35 * e6 / 3072 * std::sin(6 * lat));
}

} // namespace

std::string GeoSystem::set(std::span<const SbString> words)
{
    *this = {};
    bool first = true;
    for (const SbString& one : words) {
        const std::string word = one.toStdString();
        if (first) {
            first = false;
            if (word == "GD" || word == "GDC")
                m_frame = GD;
            else if (word == "UTM")
                m_frame = UTM;
            else if (word == "GC" || word == "GCC")
                m_frame = GC;
            else
                return "the frame '" + word + "' is not GD, UTM or GC";
        } else if (const Entry* entry = findEllipsoid(word)) {
            m_ellipsoid = {entry->a, 1 / entry->inverseFlattening};
        } else if (m_frame == UTM && word.size() > 1 && word[0] == 'Z') {
            const char* end = word.data() + word.size();
            const auto read = std::from_chars(word.data() + 1, end, m_zone);
            if (read.ec != std::errc() || read.ptr != end || m_zone < 1 || m_zone > 60)
                return "the zone '" + word + "' is not Z1 to Z60";
        } else if (m_frame == UTM && word == "S") {
            m_isSouth = true;
        } else if (word == "longitude_first" || word == "easting_first") {
            m_isSwapped = true;
        } else if (word != "WGS84" && word != "latitude_first" && word != "northing_first") {
            return "'" + word + "' is unknown";
        }
    }
    if (m_frame == UTM && m_zone == 0)
        return "UTM has no zone";
    return {};
}

SbVec3d GeoSystem::toCentre(const SbVec3d& given) const
{
    if (m_frame == GC)
        return given;
    const SbVec3d ordered = m_isSwapped ? SbVec3d(given[1], given[0], given[2]) : given;
    const SbVec3d degrees = m_frame == UTM ? utmToDegrees(ordered) : ordered;
    if (!(std::abs(degrees[0]) <= 90) || !std::isfinite(degrees[1] + degrees[2]))
        return nowhere();
    return degreesToCentre(degrees, m_ellipsoid);
}

SbVec3d GeoSystem::fromCentre(const SbVec3d& place) const
{
    if (m_frame == GC)
        return place;
    const SbVec3d degrees = centreToDegrees(place, m_ellipsoid);
    const SbVec3d ordered = m_frame == UTM ? degreesToUtm(degrees) : degrees;
    return m_isSwapped ? SbVec3d(ordered[1], ordered[0], ordered[2]) : ordered;
}

SbVec3d GeoSystem::stepped(const SbVec3d& from, double east, double north, double up) const
{
    const SbVec3d step = m_isSwapped ? SbVec3d(east, north, up) : SbVec3d(north, east, up);
    return from + step;
}

/// Snyder, 8-17 to 8-25.
SbVec3d GeoSystem::utmToDegrees(const SbVec3d& given) const
{
    const Ellipsoid& on = m_ellipsoid;
    const double e2 = on.e2(), ep2 = e2 / (1 - e2);
    const double x = given[1] - kFalseEasting;
    const double m = (given[0] - (m_isSouth ? kFalseNorthing : 0)) / kScale;
    const double mu = m / (on.a * (1 - e2 / 4 - 3 * e2 * e2 / 64 - 5 * e2 * e2 * e2 / 256));
    const double root = std::sqrt(1 - e2), e1 = (1 - root) / (1 + root);
    const double lat1 = mu + (3 * e1 / 2 - 27 * std::pow(e1, 3) / 32) * std::sin(2 * mu)
                        + (21 * e1 * e1 / 16 - 55 * std::pow(e1, 4) / 32) * std::sin(4 * mu)
                        + 151 * std::pow(e1, 3) / 96 * std::sin(6 * mu)
                        + 1097 * std::pow(e1, 4) / 512 * std::sin(8 * mu);
    const double s = std::sin(lat1), c = std::cos(lat1), t = std::tan(lat1);
    const double c1 = ep2 * c * c, t1 = t * t, w = 1 - e2 * s * s;
    const double n = on.a / std::sqrt(w), r = on.a * (1 - e2) / std::pow(w, 1.5);
    const double d = x / (n * kScale), d2 = d * d;
    const double lat =
        lat1
        - n * t / r
              * (d2 / 2 - (5 + 3 * t1 + 10 * c1 - 4 * c1 * c1 - 9 * ep2) * d2 * d2 / 24
                 + (61 + 90 * t1 + 298 * c1 + 45 * t1 * t1 - 252 * ep2 - 3 * c1 * c1) * d2 * d2 * d2
                       / 720);
    const double lon =
        (d - (1 + 2 * t1 + c1) * d * d2 / 6
         + (5 - 2 * c1 + 28 * t1 - 3 * c1 * c1 + 8 * ep2 + 24 * t1 * t1) * d * d2 * d2 / 120)
        / c;
    return {lat / kDegree, lon / kDegree + (m_zone * 6 - 183), given[2]};
}

/// Snyder, 8-9 to 8-13.
SbVec3d GeoSystem::degreesToUtm(const SbVec3d& degrees) const
{
    const Ellipsoid& on = m_ellipsoid;
    const double e2 = on.e2(), ep2 = e2 / (1 - e2);
    const double lat = degrees[0] * kDegree;
    const double s = std::sin(lat), c = std::cos(lat), t = std::tan(lat);
    const double n = on.a / std::sqrt(1 - e2 * s * s), t1 = t * t, c1 = ep2 * c * c;
    const double a = std::remainder(degrees[1] - (m_zone * 6 - 183), 360) * kDegree * c, a2 = a * a;
    const double east = kScale * n
                        * (a + (1 - t1 + c1) * a * a2 / 6
                           + (5 - 18 * t1 + t1 * t1 + 72 * c1 - 58 * ep2) * a * a2 * a2 / 120);
    const double north =
        kScale
        * (meridian(lat, on)
           + n * t
                 * (a2 / 2 + (5 - t1 + 9 * c1 + 4 * c1 * c1) * a2 * a2 / 24
                    + (61 - 58 * t1 + t1 * t1 + 600 * c1 - 330 * ep2) * a2 * a2 * a2 / 720));
    return {north + (m_isSouth ? kFalseNorthing : 0), east + kFalseEasting, degrees[2]};
}

bool readPlace(std::string_view text, SbVec3d& place)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int i = 0; i < 3; ++i) {
        while (at < end && (*at == ' ' || *at == ',' || *at == '\t' || *at == '\n'))
            ++at;
        if (at < end && *at == '+')
            ++at;
        const auto read = std::from_chars(at, end, place[i]);
        if (read.ec != std::errc() || !std::isfinite(place[i]))
            return false;
        at = read.ptr;
    }
    return true;
}

std::string placeText(const SbVec3d& place)
{
    std::string text;
    for (int i = 0; i < 3; ++i) {
        char number[32];
        const auto written = std::to_chars(number, number + sizeof number, place[i]);
        text.append(i ? " " : "").append(number, written.ptr);
    }
    return text;
}

SbMatrix axesAt(const SbVec3d& place)
{
    const SbVec3d degrees = centreToDegrees(place, Ellipsoid());
    const double lat = degrees[0] * kDegree, lon = degrees[1] * kDegree;
    const SbVec3d east(-std::sin(lon), std::cos(lon), 0);
    const SbVec3d up(std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat));
    const SbVec3d south = east.cross(up);
    SbMatrix axes;
    for (int i = 0; i < 3; ++i) {
        axes[0][i] = static_cast<float>(east[i]);
        axes[1][i] = static_cast<float>(up[i]);
        axes[2][i] = static_cast<float>(south[i]);
    }
    return axes;
}

} // namespace kalmyr::detail
