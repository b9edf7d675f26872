#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbPointerMap.h>
#include <kalmyr/base/SoRef.h>

#include <unordered_map>
#include <vector>

class SoField;
class SoFieldContainer;
class SoNode;

/// Copies graphs, each node once: what is shared in the original is shared in the copy.
///
/// When the outermost copy is done, connections and routes among the originals are made among the
/// copies. A value that was set on a connected field stays, as it does there.
class KALMYR_API SoNodeCopier {
public:
    /// With `fromOutside` copies follow whatever else their originals follow as well.
    explicit SoNodeCopier(bool fromOutside = false) : m_fromOutside(fromOutside) {}
    ~SoNodeCopier();

    /// The copy of `original` (reference count 0 when made now); null for null.
    SoNode* copyOf(const SoNode* original);
    /// The copy if one was made already, else the original.
    SoNode* resolve(SoNode* original) const;

private:
    SoNode* makeCopy(const SoNode* original);
    SoFieldContainer* find(const SoFieldContainer* original) const;
    void connect();
    struct Connection {
        SoField* follower;
        SoField* master;
        const SoField* original; ///< of the follower
    };
    void addConnections(const SoFieldContainer* original, SoFieldContainer* copy,
                        std::vector<Connection>& connections, std::vector<Connection>& routes);
    static void mastersFirst(std::vector<Connection>& connections);
    static void connect(const Connection& one);
    void keepValue(const Connection& one);
    SoField* masterFor(SoField* master);
    bool isFedFromInside(const SoFieldContainer* engine);

    SbPointerMap<SoFieldContainer, SoFieldContainer*> m_copies;
    std::vector<const SoFieldContainer*> m_unconnected;      ///< originals copied since connect()
    std::unordered_map<const SoFieldContainer*, bool> m_fed; ///< engines, while connecting
    std::vector<SoRef<SoFieldContainer>> m_engines;          ///< copies, until they are connected
    const char* m_stackLimit = nullptr;
    int m_depth = 0;
    bool m_fromOutside;
};
