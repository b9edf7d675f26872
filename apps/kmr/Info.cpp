#include "Commands.h"
#include "GraphCounter.h"
#include "Json.h"
#include "Scene.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <unordered_map>

namespace {

/// What is told of a file besides what reading it gave.
struct Facts {
    GraphCounter graph;
    std::uint64_t triangles = 0;
    std::uint64_t lines = 0;
    std::uint64_t points = 0;
    bool hasBox = false;
    SbBox3f box;
};

/// The box around all that is drawn. The boxes that actions give are boxes of boxes: turned inside
/// each other they grow.
SbBox3f boundsOfPrimitives(SoNode* root)
{
    SbBox3f box;
    const auto add = [&box](const SoCallbackAction* action, const SoPrimitiveVertex& vertex) {
        SbVec3f point;
        action->getModelMatrix().multVecMatrix(vertex.point, point);
        if (std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]))
            box.extendBy(point);
    };
    SoCallbackAction action;
    action.addTriangleCallback(SoNode::getClassTypeId(),
                               [&](SoCallbackAction* at, const SoNode*, const SoPrimitiveVertex& a,
                                   const SoPrimitiveVertex& b, const SoPrimitiveVertex& c) {
                                   add(at, a);
                                   add(at, b);
                                   add(at, c);
                               });
    action.addLineCallback(SoNode::getClassTypeId(),
                           [&](SoCallbackAction* at, const SoNode*, const SoPrimitiveVertex& a,
                               const SoPrimitiveVertex& b) {
                               add(at, a);
                               add(at, b);
                           });
    action.addPointCallback(
        SoNode::getClassTypeId(),
        [&](SoCallbackAction* at, const SoNode*, const SoPrimitiveVertex& a) { add(at, a); });
    action.apply(root);
    return box;
}

SbBox3f boundsOf(SoNode* root)
{
    SoGetBoundingBoxAction bounds{SbViewportRegion(640, 480)};
    bounds.apply(root);
    return bounds.getBoundingBox();
}

Facts measure(Scene& scene)
{
    const Listener listener(scene); // shapes tell what is wrong with them when they are made
    Facts facts;
    for (const SoRef<SoNode>& node : scene.nodes)
        facts.graph.add(node.get());
    if (facts.graph.occurrences() > kMaxOccurrences) {
        scene.warnings.push_back(
            {scene.file, 0, 0, "too many occurrences to count what they show"});
        return facts;
    }
    SoGetPrimitiveCountAction count;
    count.apply(scene.root.get());
    facts.triangles = count.getTriangleCount();
    facts.lines = count.getLineCount();
    facts.points = count.getPointCount();
    constexpr std::uint64_t kMaxPrimitives = 20'000'000;
    if (facts.triangles + facts.lines + facts.points <= kMaxPrimitives)
        facts.box = boundsOfPrimitives(scene.root.get());
    if (facts.box.isEmpty())
        facts.box = boundsOf(scene.root.get());
    facts.hasBox = !facts.box.isEmpty();
    for (int i = 0; i < 3 && facts.hasBox; ++i)
        facts.hasBox = std::isfinite(facts.box.getMin()[i]) && std::isfinite(facts.box.getMax()[i]);
    return facts;
}

template <class Map>
void addCounts(Json& json, const char* key, const Map& counts)
{
    json.key(key).beginObject();
    for (const auto& [name, count] : counts)
        json.key(name).value(count);
    json.endObject();
}

void addRemarks(Json& json, const char* key, const Scene& scene, const std::vector<Remark>& remarks)
{
    json.key(key).beginArray();
    for (const Remark& remark : remarks) {
        json.beginObject().key("line").value(remark.line).key("column").value(remark.column);
        json.key("message").value(remark.message);
        if (remark.file != scene.file)
            json.key("file").value(remark.file);
        json.endObject();
    }
    json.endArray();
}

void addParsed(Json& json, const TextCounts& counts)
{
    json.key("parsed").beginObject();
    addCounts(json, "nodes", counts.nodes);
    addCounts(json, "proto_nodes", counts.protoNodes);
    json.key("def").value(counts.def).key("use").value(counts.use);
    json.key("route").value(counts.route).key("proto").value(counts.proto);
    json.key("externproto").value(counts.externproto).endObject();
}

void printJson(const Scene& scene, const Facts& facts)
{
    Json json;
    json.beginObject();
    json.key("file").value(scene.file).key("ok").value(scene.ok);
    json.key("format").value(formatName(scene.format));
    json.key("compressed").value(scene.compressed).key("header").value(scene.header);
    addCounts(json, "nodes", facts.graph.types());
    json.key("instances").value(facts.graph.instances());
    json.key("occurrences").value(facts.graph.occurrences());
    json.key("triangles").value(facts.triangles).key("lines").value(facts.lines);
    json.key("points").value(facts.points).key("bbox");
    if (facts.hasBox) {
        json.beginArray();
        for (const SbVec3f& corner : {facts.box.getMin(), facts.box.getMax()})
            for (int i = 0; i < 3; ++i)
                json.value(static_cast<double>(corner[i]));
        json.endArray();
    } else {
        json.null();
    }
    addRemarks(json, "errors", scene, scene.errors);
    addRemarks(json, "warnings", scene, scene.warnings);
    json.key("seconds").value(scene.seconds);
    if (scene.parsed)
        addParsed(json, *scene.parsed);
    json.endObject();
    std::printf("%s\n", json.text().c_str());
}

void printText(const Scene& scene, const Facts& facts)
{
    std::printf("%s\n", scene.file.c_str());
    std::printf("  format       %s%s%s%s\n", formatName(scene.format),
                scene.compressed ? ", compressed" : "", scene.header.empty() ? "" : ", header ",
                scene.header.c_str());
    std::printf("  read         %s, %.3f s\n", scene.ok ? "complete" : "FAILED", scene.seconds);
    std::printf("  nodes        %llu distinct, %llu occurrences\n",
                static_cast<unsigned long long>(facts.graph.instances()),
                static_cast<unsigned long long>(facts.graph.occurrences()));
    std::printf("  primitives   %llu triangles, %llu lines, %llu points\n",
                static_cast<unsigned long long>(facts.triangles),
                static_cast<unsigned long long>(facts.lines),
                static_cast<unsigned long long>(facts.points));
    if (facts.hasBox) {
        const SbVec3f low = facts.box.getMin(), high = facts.box.getMax();
        std::printf("  bounds       %g %g %g  to  %g %g %g\n", low[0], low[1], low[2], high[0],
                    high[1], high[2]);
    }
    for (const auto& [name, count] : facts.graph.types())
        std::printf("  %12llu %s\n", static_cast<unsigned long long>(count), name.c_str());
    for (const Remark& warning : scene.warnings) {
        const std::string file = warning.file == scene.file ? std::string() : warning.file + ":";
        if (warning.line > 0)
            std::printf("  warning: %s%d:%d: %s\n", file.c_str(), warning.line, warning.column,
                        warning.message.c_str());
        else // of the file as a whole
            std::printf("  warning: %s\n", warning.message.c_str());
    }
}

/// Makes errors of all remarks that reading gave.
void refuseLiberties(Scene& scene)
{
    scene.ok = scene.ok && scene.warnings.empty();
    scene.errors.insert(scene.errors.end(), scene.warnings.begin(), scene.warnings.end());
    scene.warnings.clear();
}

} // namespace

int runInfo(const Arguments& given)
{
    Arguments arguments = given;
    const bool json = takeFlag(arguments, "--json");
    const bool strict = takeFlag(arguments, "--strict");
    std::string option;
    if (hasUnknownOption(arguments, option))
        return wrongUsage("unknown option " + option);
    if (arguments.empty())
        return wrongUsage("info needs a file");
    int status = 0;
    for (const std::string& file : arguments) {
        Scene scene = readScene(file, json);
        if (scene.stopped)
            return printErrors(scene);
        if (strict)
            refuseLiberties(scene);
        const Facts facts = measure(scene);
        if (json) {
            printJson(scene, facts);
        } else {
            printText(scene, facts);
        }
        status = std::max(status, printErrors(scene));
        std::fflush(stdout);
    }
    return status;
}
