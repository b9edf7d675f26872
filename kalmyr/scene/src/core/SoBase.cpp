#include <kalmyr/core/SoBase.h>

#include <kalmyr/base/SbPointerMap.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoNotification.h>

#include "core/CacheLock.h"
#include "core/DeathObservers.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string>

/// Names are rare next to objects, so they are kept beside them, chained with the others of the
/// same name in the order of naming.
struct SoBase::Naming {
    SbName name;
    SoBase* base;
    Naming* older;
    Naming* newer;
};

namespace {

/// The object that was given a name last, by the name's text; what it leads to is private.
using NewestByName = SbPointerMap<char, void*>;

NewestByName& newestByName()
{
    static auto* t = new NewestByName; // never freed: objects with names may outlive statics
    return *t;
}

SoType s_baseType;

SbString& instancePrefix()
{
    static SbString prefix("+");
    return prefix;
}

constexpr auto kIsIllegal = [] {
    std::array<bool, 256> table{};
    for (std::size_t u = 0; u < table.size(); ++u)
        table[u] = u <= ' ' || u == 0x7f
                   || std::string_view("\"'#+,.[\\]{}()|~=").find(static_cast<char>(u))
                          != std::string_view::npos;
    return table;
}();

bool isIllegal(char c)
{
    return kIsIllegal[static_cast<unsigned char>(c)];
}

SbName legalName(const SbName& name)
{
    const std::string_view given = name.view();
    const bool digitFirst = !given.empty() && given[0] >= '0' && given[0] <= '9';
    if (!digitFirst && std::none_of(given.begin(), given.end(), isIllegal))
        return name;
    std::string text(digitFirst ? "_" : "");
    text += given;
    std::replace_if(text.begin(), text.end(), isIllegal, '_');
    return SbName(text);
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

void SoBase::listenerAdded()
{
    SoNotification::repeatWalks();
}

SoBase::~SoBase()
{
    if (m_naming)
        forgetName();
}

void SoBase::destroy()
{
    if (m_tellsOfDeath.load(std::memory_order_relaxed))
        kalmyr::detail::tellDeathObservers(this);
    m_auditors.announceDeath();
    if (m_naming)
        forgetName();
    SoRefCounter::destroy();
}

void SoBase::forgetName()
{
    const kalmyr::detail::CacheLock lock;
    if (m_naming->older)
        m_naming->older->newer = m_naming->newer;
    if (m_naming->newer)
        m_naming->newer->older = m_naming->older;
    else
        newestByName()[m_naming->name.getString()] = m_naming->older;
    delete m_naming;
    std::atomic_ref(m_naming).store(nullptr, std::memory_order_relaxed);
}

/// Asked by threads that show or search what another one may be naming.
SbName SoBase::getName() const
{
    if (!std::atomic_ref(const_cast<Naming*&>(m_naming)).load(std::memory_order_relaxed))
        return SbName::empty();
    const kalmyr::detail::CacheLock lock;
    return m_naming ? m_naming->name : SbName::empty();
}

void SoBase::setName(const SbName& name)
{
    const SbName legal = legalName(name);
    if (m_naming)
        forgetName();
    if (!legal.isEmpty()) {
        const kalmyr::detail::CacheLock lock; // threads name what they read or make
        void*& newest = newestByName()[legal.getString()];
        auto* naming = new Naming{legal, this, static_cast<Naming*>(newest), nullptr};
        std::atomic_ref(m_naming).store(naming, std::memory_order_relaxed);
        if (m_naming->older)
            m_naming->older->newer = m_naming;
        newest = m_naming;
    }
    if (m_tellsOfDeath.load(std::memory_order_relaxed))
        kalmyr::detail::tellObserversOfName(this);
}

SoBase* SoBase::getNamedBase(const SbName& name, SoType type)
{
    const kalmyr::detail::CacheLock lock;
    void* const* newest = newestByName().find(name.getString());
    for (auto* at = newest ? static_cast<Naming*>(*newest) : nullptr; at; at = at->older)
        if (at->base->isOfType(type))
            return at->base;
    return nullptr;
}

std::vector<SoBase*> SoBase::getNamedBases(const SbName& name, SoType type)
{
    const kalmyr::detail::CacheLock lock;
    std::vector<SoBase*> found;
    void* const* newest = newestByName().find(name.getString());
    for (auto* at = newest ? static_cast<Naming*>(*newest) : nullptr; at; at = at->older)
        if (at->base->isOfType(type))
            found.push_back(at->base);
    std::reverse(found.begin(), found.end());
    return found;
}

void SoBase::setInstancePrefix(const SbString& prefix)
{
    const kalmyr::detail::CacheLock lock;
    instancePrefix() = prefix;
}

const SbString& SoBase::getInstancePrefix()
{
    thread_local SbString t_prefix; // what is returned stands still
    const kalmyr::detail::CacheLock lock;
    return t_prefix = instancePrefix();
}
