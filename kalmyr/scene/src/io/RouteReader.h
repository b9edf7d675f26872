#pragma once

#include <kalmyr/core/SoField.h>

#include <string_view>
#include <vector>

class SoFieldContainer;

namespace kalmyr::detail {

class EngineReader;
class SceneText;

/// Reads routes, and lets fields follow others. Of a route that cannot be made a remark tells.
class RouteReader {
public:
    RouteReader(SceneText& scene, const EngineReader& engines) : m_scene(scene), m_engines(engines)
    {
    }

    /// Reads on behind `word`, which is "ROUTE".
    bool readRoute(std::string_view word);
    /// At the end of all in which names are known: makes the routes that stood in front of a name.
    /// False when reading was stopped.
    bool makeLateRoutes();
    void forgetLateRoutes() { m_lateRoutes.clear(); }

private:
    /// A route as it stands in the text.
    struct RouteText {
        const char* at;
        std::string_view fromNode, fromEvent, toNode, toEvent;
    };
    bool readRouteEnd(std::string_view& node, std::string_view& field);
    void makeRoute(const RouteText& route);
    SoFieldContainer* findContainer(std::string_view name) const;
    SoField* findEvent(std::string_view node, std::string_view event, bool out);
    /// An event that a route tells of a node that is kept as text.
    SoField* eventOfUnknown(std::string_view node, std::string_view event, const SoField* other,
                            bool otherIsUnknown, SoField::FieldType kind);
    bool isUnknown(std::string_view node) const;

    SceneText& m_scene;
    const EngineReader& m_engines;
    std::vector<RouteText> m_lateRoutes;
};

/// In front of and behind the name of an exposed field: the events that set and report it.
inline constexpr std::string_view kSet = "set_";
inline constexpr std::string_view kChanged = "_changed";

/// The field that an event belongs to: its own, or the exposed field that it sets or reports. Null
/// when there is none.
SoField* fieldOfEvent(SoFieldContainer& node, std::string_view event, bool out);

/// Lets `to` follow `from`. With `takeValue` it takes the value at once, else with the next change.
/// False when there is no conversion, or when the way would lead in a circle.
bool connectFields(SoField& from, SoField& to, bool takeValue);

} // namespace kalmyr::detail
