// Routes: fields that follow others.
#include "SoSceneReader.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/io/SoUnknownNode.h>

namespace kalmyr::detail {

namespace {

constexpr std::string_view kSet = "set_";
constexpr std::string_view kChanged = "_changed";

bool isOneOf(SoField::FieldType type, SoField::FieldType a, SoField::FieldType b)
{
    return type == a || type == b;
}

} // namespace

SoField* fieldOfEvent(SoFieldContainer& node, std::string_view event, bool out)
{
    if (SoField* field = node.getField(SbName::find(event)); field && !event.empty())
        return field;
    if (!out && event.starts_with(kSet)) {
        event.remove_prefix(kSet.size());
    } else if (out && event.ends_with(kChanged)) {
        event.remove_suffix(kChanged.size());
    } else {
        return nullptr;
    }
    const SbName name = SbName::find(event);
    return name.isEmpty() ? nullptr : node.getField(name);
}

bool connectFields(SoField& from, SoField& to, bool takeValue)
{
    for (const SoField* at = &from; at; at = at->getConnectedField())
        if (at == &to)
            return false;
    if (takeValue) {
        to.copyFrom(from);
        return to.connectFrom(&from);
    }
    const std::unique_ptr<SoField> before(static_cast<SoField*>(to.getTypeId().createInstance()));
    if (!before)
        return false;
    const bool isDefault = to.isDefault();
    before->copyFrom(to);
    if (!to.connectFrom(&from))
        return false;
    // A value that is set on a connected field stays until its master changes.
    to.evaluate();
    to.copyFrom(*before);
    to.setDefault(isDefault);
    return true;
}

bool SceneReader::readRouteEnd(std::string_view& node, std::string_view& field)
{
    if (mayLeaveOutUse()) {
        // Names may hold dots: the last one stands in front of the field.
        const std::size_t at = text.getOffset();
        std::string_view both;
        const std::size_t dot = takeOddName(both) ? both.rfind('.') : std::string_view::npos;
        if (dot != std::string_view::npos && dot > 0 && dot + 1 < both.size()) {
            node = both.substr(0, dot);
            field = both.substr(dot + 1);
            return true;
        }
        text.setOffset(at);
    }
    if (!text.readName(node))
        return text.fail("expected the name of a node");
    if (!text.expect('.'))
        return false;
    return text.readName(field) || text.fail("expected the name of a field");
}

SoField* SceneReader::findEvent(std::string_view node, std::string_view event, bool out)
{
    if (routesAnyField() && node == "global" && out)
        return SoGlobalField::find(SbName(event));
    SoFieldContainer* owner = findContainer(node);
    const std::string full = std::string(node) + "." + std::string(event);
    if (!owner) {
        // Nodes that are kept as text have names, too.
        if (!isDefined(node))
            warnOnce("route " + full, node.data(),
                     "a route names '" + std::string(node) + "', which is no node");
        return nullptr;
    }
    SoField* field = fieldOfEvent(*owner, event, out);
    const auto kind = field ? field->getFieldType() : SoField::INTERNAL;
    const bool fits =
        field
        && (routesAnyField()
            || isOneOf(kind, SoField::EXPOSED, out ? SoField::EVENT_OUT : SoField::EVENT_IN));
    if (!fits && !owner->isOfType(SoUnknownNode::getClassTypeId()))
        warnOnce("route " + full, node.data(),
                 "a route names '" + full + "', which is no event that can be "
                     + (out ? "sent" : "received"));
    return fits ? field : nullptr;
}

bool SceneReader::readRoute(std::string_view word)
{
    std::string_view fromNode, fromEvent, toNode, toEvent;
    if (!readRouteEnd(fromNode, fromEvent))
        return false;
    if (!text.acceptWord("TO"))
        return text.fail("expected 'TO'");
    if (!readRouteEnd(toNode, toEvent))
        return false;
    SoField* from = findEvent(fromNode, fromEvent, true);
    SoField* to = findEvent(toNode, toEvent, false);
    if (!from || !to || (to->isConnected() && to->getConnectedField() == from))
        return true;
    const bool fits = routesAnyField() || from->getTypeId() == to->getTypeId();
    if (to->isConnected() || !fits || !connectFields(*from, *to, false))
        warnOnce("route " + std::string(toNode) + "." + std::string(toEvent), word.data(),
                 "a route to '" + std::string(toNode) + "." + std::string(toEvent)
                     + "' is left out: "
                     + (to->isConnected() ? "the field follows another one already"
                        : !fits           ? "the types of the fields differ"
                                          : "the fields would follow each other in a circle"));
    return true;
}

} // namespace kalmyr::detail
