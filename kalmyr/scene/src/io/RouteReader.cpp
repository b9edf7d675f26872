#include "RouteReader.h"

#include "EngineReader.h"
#include "SceneText.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldConverter.h>
#include <kalmyr/engines/SoGlobalField.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoUnknownNode.h>
#include <kalmyr/sensors/SoRoute.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include "core/ConnectionSearch.h"

namespace kalmyr::detail {

namespace {

/// Whether a field may follow another for good: lists of children follow nobody.
bool mayLead(const SoField& from, const SoField& to)
{
    return &from != &to
           && !(to.isOfType(SoMNodeField::getClassTypeId())
                && static_cast<const SoMNodeField&>(to).isBound());
}

bool isOneOf(SoField::FieldType type, SoField::FieldType a, SoField::FieldType b)
{
    return type == a || type == b;
}

/// A further source of a field. An exposed field of a prototype that stands for it takes part.
void addRoute(SoField& from, SoField& to)
{
    SoRoute::add(&from, &to);
    SoField* field = &to;
    while (SoField* outer = field->getConnectedField()) {
        const SoFieldContainer* container = outer->getContainer();
        if (outer->getFieldType() != SoField::EXPOSED || field->getFieldType() != SoField::EXPOSED
            || !container || !container->isOfType(SoVRMLProtoInstance::getClassTypeId()))
            break;
        SoRoute::add(field, outer);
        field = outer;
    }
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
    if (isMadeOf(from, to))
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
    // In silence: a route that is made is no event.
    const bool told = to.enableNotify(false);
    const bool connected = to.connectFrom(&from);
    if (connected) {
        // A value that is set on a connected field stays until its master changes.
        to.evaluate();
        to.copyFrom(*before);
        to.setDefault(isDefault);
    }
    to.enableNotify(told);
    return connected;
}

bool RouteReader::readRouteEnd(std::string_view& node, std::string_view& field)
{
    SoTokenizer& text = m_scene.getTokens();
    if (m_scene.getDialect().isLenient) {
        // Names may hold dots: the last one stands in front of the field.
        const std::size_t at = text.getOffset();
        std::string_view both;
        const std::size_t dot =
            m_scene.takeOddName(both) ? both.rfind('.') : std::string_view::npos;
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

SoFieldContainer* RouteReader::findContainer(std::string_view name) const
{
    if (SoNode* node = m_scene.findNode(name))
        return node;
    return m_engines.find(name);
}

SoField* RouteReader::findEvent(std::string_view node, std::string_view event, bool out)
{
    if (m_scene.getDialect().routesAnyField && node == "global" && out)
        return SoGlobalField::find(SbName(event));
    SoFieldContainer* owner = findContainer(node);
    const std::string full = std::string(node) + "." + std::string(event);
    if (!owner) {
        // Nodes that are kept as text have names, too.
        if (!m_scene.isDefined(node))
            m_scene.warnOnce("route " + full, node.data(),
                             "a route names '" + std::string(node) + "', which is no node");
        return nullptr;
    }
    SoField* field = fieldOfEvent(*owner, event, out);
    const auto kind = field ? field->getFieldType() : SoField::INTERNAL;
    const bool fits =
        field
        && (m_scene.getDialect().routesAnyField
            || isOneOf(kind, SoField::EXPOSED, out ? SoField::EVENT_OUT : SoField::EVENT_IN));
    if (!fits && !owner->isOfType(SoUnknownNode::getClassTypeId()))
        m_scene.warnOnce("route " + full, node.data(),
                         "a route names '" + full + "', which is no event that can be "
                             + (out ? "sent" : "received"));
    return fits ? field : nullptr;
}

bool RouteReader::isUnknown(std::string_view node) const
{
    const SoFieldContainer* found = findContainer(node);
    return found && found->isOfType(SoUnknownNode::getClassTypeId());
}

SoField* RouteReader::eventOfUnknown(std::string_view node, std::string_view event,
                                     const SoField* other, bool otherIsUnknown,
                                     SoField::FieldType kind)
{
    SoFieldContainer* owner = findContainer(node);
    if (!owner || !owner->isOfType(SoUnknownNode::getClassTypeId()))
        return nullptr;
    // The other end may yet be named, by a second route of programs that write them twice.
    if (!other && !otherIsUnknown)
        return nullptr;
    auto* unknown = static_cast<SoUnknownNode*>(owner);
    const bool declared = unknown->hasDeclaration();
    // Its type is that of the other end; if that is unknown as well, any will do.
    SoField* field = unknown->declareField(
        other ? other->getTypeId().getName() : SoSFBool::getClassTypeId().getName(), SbName(event));
    unknown->setDeclaration(declared);
    if (field)
        field->setFieldType(kind);
    return field;
}

bool RouteReader::readRoute(std::string_view word)
{
    SoTokenizer& text = m_scene.getTokens();
    RouteText route{word.data(), {}, {}, {}, {}};
    if (!readRouteEnd(route.fromNode, route.fromEvent))
        return false;
    if (!text.acceptWord("TO"))
        return text.fail("expected 'TO'");
    if (!readRouteEnd(route.toNode, route.toEvent))
        return false;
    if (m_scene.getDialect().isLenient
        && !(m_scene.isDefined(route.fromNode) && m_scene.isDefined(route.toNode)))
        m_lateRoutes.push_back(route);
    else
        makeRoute(route);
    return true;
}

bool RouteReader::makeLateRoutes()
{
    constexpr std::size_t kWork = 256; // bytes of other text that take as long
    for (const RouteText& route : m_lateRoutes) {
        if (m_scene.isDefined(route.fromNode) && m_scene.isDefined(route.toNode))
            m_scene.warnOnce("late route", route.at,
                             "a route stands in front of a node that it names");
        makeRoute(route);
        if (!m_scene.countWork(kWork))
            return false;
    }
    m_lateRoutes.clear();
    return true;
}

void RouteReader::makeRoute(const RouteText& route)
{
    SoField* from = findEvent(route.fromNode, route.fromEvent, true);
    SoField* to = findEvent(route.toNode, route.toEvent, false);
    if (!from)
        from = eventOfUnknown(route.fromNode, route.fromEvent, to, isUnknown(route.toNode),
                              SoField::EVENT_OUT);
    if (!to)
        to = eventOfUnknown(route.toNode, route.toEvent, from, false, SoField::EVENT_IN);
    if (!from || !to || to->getConnectedField() == from)
        return;
    const bool fits = m_scene.getDialect().routesAnyField
                          ? SoFieldConverter::canConvert(from->getTypeId(), to->getTypeId())
                          : from->getTypeId() == to->getTypeId();
    const std::string target = std::string(route.toNode) + "." + std::string(route.toEvent);
    if (!fits)
        m_scene.warnOnce("route " + target, route.at,
                         "a route to '" + target + "' is left out: the types of the fields differ");
    else if (to->isConnected() || !mayLead(*from, *to) || !connectFields(*from, *to, false))
        addRoute(*from, *to); // more than one source, or a circle
}

} // namespace kalmyr::detail
