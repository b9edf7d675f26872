#include <kalmyr/core/SoType.h>

#include <kalmyr/base/SoDebugError.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <unordered_map>

namespace {

struct Record {
    SbName name;
    SoType parent;
    SoType::Creator creator = nullptr;
    std::vector<std::uint16_t> ancestors; ///< by depth, the type itself last
    bool removed = false;
};

/// The beginning of a type's line of ancestors once more, in a place that is found fast: almost
/// every question is answered here.
struct Line {
    std::uint16_t depth = 0;
    std::array<std::uint16_t, 15> ancestors{}; ///< 0 beyond the type itself
};
constinit const Line s_badLine;
constinit const Line* s_lines = &s_badLine; ///< by index of the type; in the registry

struct Registry {
    std::vector<Record> records{1}; // index 0 is the bad type
    std::vector<Line> lines{1};

    void addLine(const std::vector<std::uint16_t>& ancestors)
    {
        Line line;
        line.depth = static_cast<std::uint16_t>(ancestors.size() - 1);
        std::copy_n(ancestors.begin(), std::min(ancestors.size(), line.ancestors.size()),
                    line.ancestors.begin());
        lines.push_back(line);
        s_lines = lines.data();
    }
    std::unordered_map<SbName, std::uint16_t> byName;
    std::unordered_map<SbName, std::uint16_t> removed; ///< the latest of each name
};

Registry& registry()
{
    static Registry r;
    return r;
}

const Record& record(int index)
{
    return registry().records[static_cast<std::size_t>(index)];
}

} // namespace

SoType SoType::createType(SoType parent, const SbName& name, Creator creator)
{
    Registry& r = registry();
    if (const auto at = r.byName.find(name); at != r.byName.end()) {
        if (r.records[at->second].parent != parent)
            SoDebugError::post("SoType::createType", "%s is registered with another parent",
                               name.getString());
        return SoType(at->second);
    }
    if (r.records.size() > std::numeric_limits<std::uint16_t>::max()) {
        SoDebugError::post("SoType::createType", "too many types, %s is refused", name.getString());
        return badType();
    }
    // An optional module that starts again: method tables and nodes that still live know the place.
    if (const auto at = r.removed.find(name);
        at != r.removed.end() && r.records[at->second].parent == parent) {
        const std::uint16_t index = at->second;
        r.removed.erase(at);
        r.records[index].removed = false;
        r.records[index].creator = creator;
        r.byName.emplace(name, index);
        return SoType(index);
    }
    const auto index = static_cast<std::uint16_t>(r.records.size());
    Record added;
    added.name = name;
    added.parent = parent;
    added.creator = creator;
    if (!parent.isBad())
        added.ancestors = r.records[parent.m_index].ancestors;
    added.ancestors.push_back(index);
    r.addLine(added.ancestors);
    r.records.push_back(std::move(added));
    r.byName.emplace(name, index);
    return SoType(index);
}

SoType SoType::fromName(const SbName& name)
{
    const Registry& r = registry();
    if (const auto at = r.byName.find(name); at != r.byName.end())
        return SoType(at->second);
    const std::string_view text = name.getString();
    if (text.size() > 2 && text.substr(0, 2) == "So")
        if (const auto at = r.byName.find(SbName(text.substr(2))); at != r.byName.end())
            return SoType(at->second);
    return badType();
}

void SoType::removeType(SoType type)
{
    if (type.isBad())
        return;
    Registry& r = registry();
    Record& removed = r.records[type.m_index];
    if (removed.removed)
        return;
    r.byName.erase(removed.name);
    r.removed[removed.name] = type.m_index;
    removed.removed = true;
    removed.creator = nullptr;
}

std::vector<SoType> SoType::getAllDerivedFrom(SoType type)
{
    std::vector<SoType> all;
    const int count = getNumTypes();
    for (int i = 1; i < count; ++i) {
        const SoType candidate(static_cast<std::uint16_t>(i));
        if (!record(i).removed && candidate.isDerivedFrom(type))
            all.push_back(candidate);
    }
    return all;
}

int SoType::getNumTypes()
{
    return static_cast<int>(registry().records.size());
}

SbName SoType::getName() const
{
    return record(m_index).name;
}

SoType SoType::getParent() const
{
    return record(m_index).parent;
}

bool SoType::isDerivedFrom(SoType ancestor) const
{
    if (m_index == ancestor.m_index)
        return m_index != 0;
    // An ancestor's depth is the same on every line that passes through it.
    const std::size_t depth = s_lines[ancestor.m_index].depth;
    const Line& line = s_lines[m_index];
    if (depth < line.ancestors.size()) [[likely]]
        return !ancestor.isBad() && line.ancestors[depth] == ancestor.m_index;
    const auto& all = record(m_index).ancestors;
    return depth < all.size() && all[depth] == ancestor.m_index;
}

bool SoType::canCreateInstance() const
{
    return record(m_index).creator != nullptr;
}

void* SoType::createInstance() const
{
    const Creator creator = record(m_index).creator;
    return creator ? creator() : nullptr;
}
