#pragma once

#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>

#include <vector>

/// A further source of a field, beside the one that it is connected from: when the source changes,
/// the field takes its value. Of several sources the one that changed last has its way.
///
/// Routes may lead in a circle; a change goes round until it meets the same value. They live as
/// long as both fields; routes among nodes that are copied together are made among the copies.
class KALMYR_API SoRoute {
public:
    SoRoute(const SoRoute&) = delete;
    SoRoute& operator=(const SoRoute&) = delete;

    /// False when there is no conversion between the types, or when the route exists.
    static bool add(SoField* from, SoField* to);
    static bool remove(const SoField* from, const SoField* to);
    static bool hasSources(const SoField* to);
    /// The further sources, in the order in which they were added.
    static std::vector<SoField*> getSources(const SoField* to);

private:
    friend struct SoRouteTable;
    SoRoute(SoField* from, SoField* to);
    void pass();

    SoFieldSensor m_from;
    SoFieldSensor m_to; ///< tells of its death only
    const SoField* m_source;
    const SoField* m_target;
    SoCascade m_cascade;
    bool m_passing = false;
};
