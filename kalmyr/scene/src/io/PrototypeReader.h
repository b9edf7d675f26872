#pragma once

#include "Parsed.h"

#include <kalmyr/vrml/SoVRMLProto.h>

#include <string_view>

class SoField;

namespace kalmyr::detail {

class NodeReader;
class SceneText;

/// Reads declarations of prototypes, and makes instances of them.
class PrototypeReader {
public:
    /// Instances of prototypes may stand in the bodies of others that deep.
    static constexpr int kMaxNesting = 200;
    /// Nodes that all prototypes of a scene may expand to.
    static constexpr int kMaxExpandedNodes = 1'000'000;

    /// With an `instance` the text is that of its prototype. `protos` are known from the start.
    PrototypeReader(SceneText& scene, NodeReader& nodes, SoVRMLProto* protos = nullptr,
                    SoVRMLProtoInstance* instance = nullptr)
        : m_scene(scene), m_nodes(nodes), m_known(protos), m_protos(protos), m_instance(instance)
    {
    }

    /// Reads on behind the words "PROTO" and "EXTERNPROTO".
    bool readProto(bool external);
    /// The prototype that the text calls `name`; null when there is none.
    SoVRMLProto* find(std::string_view name) const;
    /// Makes the nodes of the instance that stands at `at`.
    bool expand(SoVRMLProtoInstance* instance, std::size_t at);

    /// Reads the bodies of the prototypes of this text that nothing uses, and tells what is wrong
    /// with them. False when reading was stopped.
    bool checkUnused();

    /// "set_x IS y" and "x_changed IS y" stand for the exposed field x: its name; else empty.
    std::string_view exposedName(std::string_view event) const;
    /// "IS" and a name, behind the name of a field or event that takes part in the instance's.
    Parsed tryIs(SoField& field, bool isEvent);

    /// The prototype of that name in the file, or the first one for an empty name; null when there
    /// is none.
    SoRef<SoVRMLProto> readNamed(std::string_view name);
    /// Lets the root of the scene keep the prototypes that nothing in the file uses.
    void keepUnused(const SoNode* root) const;
    void release() { m_protos.reset(); }

private:
    /// Remarks on a name that is no legal one, or is taken.
    void warnOfName(std::string_view name);
    bool readInterface(SoVRMLProto& proto, std::size_t textAt);
    bool readInterfaceEntry(SoVRMLProto& proto, std::string_view kind, std::size_t textAt);
    bool readUrls(SoVRMLProto& proto);
    static SoType builtInType(const SoVRMLProto& proto);
    SoVRMLProto* bodyOf(SoVRMLProto* proto);
    SoRef<SoVRMLProto> findInFile(const SoVRMLProto& proto, const SbString& url);
    bool check(SoVRMLProto& proto);
    static bool readDefaults(NodeReader& reader, SoVRMLProtoInstance& instance,
                             const SoVRMLProto& body);
    /// Reads the nodes up to the brace that closes a prototype's body.
    static bool readParts(NodeReader& reader, SoVRMLProtoInstance& instance);

    SceneText& m_scene;
    NodeReader& m_nodes;
    const SoVRMLProto* m_known;      // Not owned; what was declared before this text, or null.
    SoRef<SoVRMLProto> m_protos;     ///< the one declared last
    SoVRMLProtoInstance* m_instance; // Not owned; the one that is being made.
};

} // namespace kalmyr::detail
