#include <kalmyr/nodekits/SoNodekitCatalog.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>

#include <algorithm>

namespace {

const SbName kNoName;
const std::vector<SoType> kNoTypes;
const std::vector<int> kNoParts;

} // namespace

const SbName& SoNodekitCatalog::thisName()
{
    static const SbName name("this");
    return name;
}

SoNodekitCatalog::SoNodekitCatalog(SoType kitType)
{
    Part self;
    self.name = thisName();
    self.type = self.defaultType = kitType;
    self.isNullByDefault = false;
    m_parts.push_back(std::move(self));
    m_numbers.emplace(thisName(), 0);
}

SoNodekitCatalog::SoNodekitCatalog(const SoNodekitCatalog& parent, SoType kitType)
    : m_parts(parent.m_parts), m_numbers(parent.m_numbers)
{
    m_parts[0].type = m_parts[0].defaultType = kitType;
}

const SoNodekitCatalog::Part* SoNodekitCatalog::find(int part) const
{
    if (part == -1
        || !kalmyr::holds(part >= 0 && part < getNumEntries(), "-1 <= part < getNumEntries()"))
        return nullptr;
    return &m_parts[static_cast<std::size_t>(part)];
}

int SoNodekitCatalog::getPartNumber(const SbName& name) const
{
    const auto at = m_numbers.find(name);
    return at == m_numbers.end() ? -1 : at->second;
}

const SbName& SoNodekitCatalog::getName(int part) const
{
    const Part* p = find(part);
    return p ? p->name : kNoName;
}

SoType SoNodekitCatalog::getType(int part) const
{
    const Part* p = find(part);
    return p ? p->type : SoType();
}

SoType SoNodekitCatalog::getDefaultType(int part) const
{
    const Part* p = find(part);
    return p ? p->defaultType : SoType();
}

bool SoNodekitCatalog::isNullByDefault(int part) const
{
    const Part* p = find(part);
    return p && p->isNullByDefault;
}

bool SoNodekitCatalog::isLeaf(int part) const
{
    const Part* p = find(part);
    return p && part > 0 && p->below.empty();
}

bool SoNodekitCatalog::isPublic(int part) const
{
    const Part* p = find(part);
    return p && p->isPublic;
}

int SoNodekitCatalog::getParentPartNumber(int part) const
{
    const Part* p = find(part);
    return p ? p->parent : -1;
}

const std::vector<int>& SoNodekitCatalog::getPartsBelow(int part) const
{
    const Part* p = find(part);
    return p ? p->below : kNoParts;
}

int SoNodekitCatalog::getRightSiblingPartNumber(int part) const
{
    if (!find(part) || part == 0)
        return -1;
    const std::vector<int>& siblings = getPartsBelow(getParentPartNumber(part));
    const auto next = std::find(siblings.begin(), siblings.end(), part) + 1;
    return next == siblings.end() ? -1 : *next;
}

bool SoNodekitCatalog::isList(int part) const
{
    const Part* p = find(part);
    return p && p->isList;
}

SoType SoNodekitCatalog::getListContainerType(int part) const
{
    const Part* p = find(part);
    return p ? p->containerType : SoType();
}

const std::vector<SoType>& SoNodekitCatalog::getListItemTypes(int part) const
{
    const Part* p = find(part);
    return p ? p->itemTypes : kNoTypes;
}

bool SoNodekitCatalog::isListItem(int part, SoType type) const
{
    const std::vector<SoType>& types = getListItemTypes(part);
    return std::any_of(types.begin(), types.end(),
                       [type](SoType allowed) { return type.isDerivedFrom(allowed); });
}

int SoNodekitCatalog::add(Part part, const Place& place)
{
    const int parent = getPartNumber(place.parent);
    const int right = place.rightSibling.isEmpty() ? -1 : getPartNumber(place.rightSibling);
    const bool rightIsThere =
        place.rightSibling.isEmpty() || (right > 0 && getParentPartNumber(right) == parent);
    const char* fault = part.name.isEmpty() || getPartNumber(part.name) >= 0
                            ? "the name is taken or empty"
                        : parent < 0 || isList(parent) ? "there is no such parent"
                        : !rightIsThere                ? "there is no such right sibling"
                                                       : nullptr;
    if (fault) {
        SoDebugError::post("SoNodekitCatalog", "part \"%s\" of %s cannot be added: %s",
                           part.name.getString(), m_parts[0].type.getName().getString(), fault);
        return -1;
    }
    const int number = getNumEntries();
    part.parent = parent;
    m_numbers.emplace(part.name, number);
    m_parts.push_back(std::move(part));
    std::vector<int>& siblings = m_parts[static_cast<std::size_t>(parent)].below;
    siblings.insert(std::find(siblings.begin(), siblings.end(), right), number);
    return number;
}

int SoNodekitCatalog::addGroup(const SbName& name, SoType type, const Place& place,
                               bool fromTheBeginning)
{
    Part part;
    part.name = name;
    part.type = part.defaultType = type;
    part.isNullByDefault = !fromTheBeginning;
    part.isPublic = false;
    return add(std::move(part), place);
}

int SoNodekitCatalog::addPart(const SbName& name, SoType type, SoType defaultType,
                              const Place& place, bool isPublic)
{
    Part part;
    part.name = name;
    part.type = type;
    part.defaultType = defaultType;
    part.isPublic = isPublic;
    return add(std::move(part), place);
}

int SoNodekitCatalog::addListPart(const SbName& name, SoType listPartType, SoType containerType,
                                  std::vector<SoType> itemTypes, const Place& place)
{
    Part part;
    part.name = name;
    part.type = part.defaultType = listPartType;
    part.isList = true;
    part.containerType = containerType;
    part.itemTypes = std::move(itemTypes);
    return add(std::move(part), place);
}

bool SoNodekitCatalog::narrowTypes(const SbName& name, SoType type, SoType defaultType)
{
    const int number = getPartNumber(name);
    if (number <= 0 || !type.isDerivedFrom(getType(number)) || !defaultType.isDerivedFrom(type)) {
        SoDebugError::post("SoNodekitCatalog::narrowTypes", "part \"%s\" cannot be a %s",
                           name.getString(), type.getName().getString());
        return false;
    }
    Part& part = m_parts[static_cast<std::size_t>(number)];
    part.type = type;
    part.defaultType = defaultType;
    return true;
}

bool SoNodekitCatalog::setNullByDefault(const SbName& name, bool on)
{
    const int number = getPartNumber(name);
    if (number <= 0) {
        SoDebugError::post("SoNodekitCatalog::setNullByDefault", "there is no part \"%s\"",
                           name.getString());
        return false;
    }
    m_parts[static_cast<std::size_t>(number)].isNullByDefault = on;
    return true;
}
