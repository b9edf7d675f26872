#include <kalmyr/core/SoBase.h>

#include <kalmyr/base/SbString.h>

#include "core/CacheLock.h"

#include <map>
#include <string>
#include <unordered_map>

namespace {

struct Named {
    SbName name;
    std::uint64_t serial;
};

/// Names are rare next to objects, so they are kept beside them: by object, and by name in the
/// order of naming.
struct NameTable {
    std::unordered_map<const SoBase*, Named> names;
    std::unordered_map<SbName, std::map<std::uint64_t, SoBase*>> bases;
    std::uint64_t nextSerial = 0;
};

NameTable& table()
{
    static auto* t = new NameTable; // never freed: objects with names may outlive statics
    return *t;
}

SoType s_baseType;

SbString& instancePrefix()
{
    static SbString prefix("+");
    return prefix;
}

void forget(const SoBase* base)
{
    const kalmyr::detail::CacheLock lock; // threads name what they read or make
    NameTable& t = table();
    const auto at = t.names.find(base);
    if (at == t.names.end())
        return;
    const auto named = t.bases.find(at->second.name);
    named->second.erase(at->second.serial);
    if (named->second.empty())
        t.bases.erase(named);
    t.names.erase(at);
}

SbName legalName(const SbName& name)
{
    std::string text(name.getString());
    if (text.empty())
        return name;
    bool changed = false;
    if (text[0] >= '0' && text[0] <= '9') {
        text.insert(text.begin(), '_');
        changed = true;
    }
    for (char& c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (u <= ' ' || u == 0x7f
            || std::string_view("\"'#+,.[\\]{}()|~=").find(c) != std::string_view::npos) {
            c = '_';
            changed = true;
        }
    }
    return changed ? SbName(text) : name;
}

} // namespace

SoType SoBase::getClassTypeId()
{
    return s_baseType;
}

void SoBase::initClass()
{
    s_baseType = SoType::createType(SoType::badType(), SbName("Base"));
}

SoBase::~SoBase()
{
    if (m_named)
        forget(this);
}

void SoBase::destroy()
{
    m_auditors.announceDeath();
    if (m_named) {
        forget(this);
        m_named = false;
    }
    SoRefCounter::destroy();
}

SbName SoBase::getName() const
{
    if (!m_named)
        return SbName::empty();
    const kalmyr::detail::CacheLock lock;
    return table().names.at(this).name;
}

void SoBase::setName(const SbName& name)
{
    const SbName legal = legalName(name);
    if (m_named)
        forget(this);
    m_named = legal != SbName::empty();
    if (!m_named)
        return;
    const kalmyr::detail::CacheLock lock;
    NameTable& t = table();
    const std::uint64_t serial = t.nextSerial++;
    t.names.emplace(this, Named{legal, serial});
    t.bases[legal].emplace(serial, this);
}

SoBase* SoBase::getNamedBase(const SbName& name, SoType type)
{
    const kalmyr::detail::CacheLock lock;
    const auto at = table().bases.find(name);
    if (at == table().bases.end())
        return nullptr;
    for (auto base = at->second.rbegin(); base != at->second.rend(); ++base)
        if (base->second->isOfType(type))
            return base->second;
    return nullptr;
}

std::vector<SoBase*> SoBase::getNamedBases(const SbName& name, SoType type)
{
    const kalmyr::detail::CacheLock lock;
    std::vector<SoBase*> found;
    if (const auto at = table().bases.find(name); at != table().bases.end())
        for (const auto& [serial, base] : at->second)
            if (base->isOfType(type))
                found.push_back(base);
    return found;
}

void SoBase::setInstancePrefix(const SbString& prefix)
{
    instancePrefix() = prefix;
}

const SbString& SoBase::getInstancePrefix()
{
    return instancePrefix();
}
