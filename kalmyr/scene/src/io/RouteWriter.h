#pragma once

#include <kalmyr/base/SbName.h>

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SoEngine;
class SoField;
class SoFieldContainer;
class SoFieldWriter;

namespace kalmyr::detail {

class WrittenText;
class WriteDialect;
class WriteInterruption;
class WrittenNames;

/// Routes: fields that follow others, and the engines and global fields that they start from.
class RouteWriter {
public:
    /// Values of engines and global fields are written by `values`.
    RouteWriter(WrittenText& text, const WriteDialect& dialect, WrittenNames& names,
                WriteInterruption& interruption, SoFieldWriter& values)
        : m_text(text),
          m_dialect(dialect),
          m_names(names),
          m_interruption(interruption),
          m_values(values)
    {
    }

    /// What the fields of a node follow.
    void find(const SoFieldContainer* container);
    void findEngine(const SoFieldContainer* engine);
    /// When all nodes are known: those that the remaining routes name get names.
    void settle();

    /// The whole engine where it comes first, then its name.
    void writeEngine(const SoEngine* engine);
    /// Behind the nodes: the engines that are still missing, and the routes.
    void write();

private:
    /// A field that follows another.
    struct Route {
        const SoField* from;
        const SoField* to;
    };
    bool isWritten(const Route& route) const;
    void engine(const SoFieldContainer* engine);
    void engines();
    void globals();
    std::string nameOf(const SoFieldContainer* container);
    void writeEnd(const SoField& field);

    WrittenText& m_text;
    const WriteDialect& m_dialect;
    WrittenNames& m_names;
    WriteInterruption& m_interruption;
    SoFieldWriter& m_values;
    std::vector<Route> m_routes;
    std::vector<const SoFieldContainer*> m_engines; ///< those that fields follow
    std::unordered_map<const SoFieldContainer*, std::string> m_engineNames;
    std::unordered_set<const SoFieldContainer*> m_writtenEngines;
};

} // namespace kalmyr::detail
