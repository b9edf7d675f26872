#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoRefCounter.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoType.h>

#include <atomic>
#include <vector>

/// Root of all reference-counted scene objects: type, optional name, auditors.
///
/// Created with reference count 0; the first unref() to 0 destroys it, telling its auditors.
class KALMYR_API SoBase : public SoRefCounter {
public:
    static SoType getClassTypeId();
    static void initClass();

    virtual SoType getTypeId() const = 0;
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }

    /// The name, or the empty name. Names need not be unique.
    SbName getName() const;

    /// Sets the name. Characters that a scene file cannot hold are replaced by '_', a leading
    /// digit gets one in front; the empty name removes it.
    virtual void setName(const SbName& name);

    /// The object most recently given that name whose type derives from `type`; null when none.
    static SoBase* getNamedBase(const SbName& name, SoType type);
    /// All of them, oldest first.
    static std::vector<SoBase*> getNamedBases(const SbName& name, SoType type);

    void addAuditor(SoAuditor* auditor, SoAuditor::Type type)
    {
        m_auditors.append(auditor, type);
        if (!SoAuditorList::holds(type))
            listenerAdded();
    }
    void removeAuditor(SoAuditor* auditor) { m_auditors.remove(auditor); }
    const SoAuditorList& getAuditors() const { return m_auditors; }

    /// Lets every SoDeathObserver know when this object dies, until then.
    void tellOfDeath() const { m_tellsOfDeath.store(true, std::memory_order_relaxed); }

    /// Written in front of the number that distinguishes objects of one name in a file ("+").
    static void setInstancePrefix(const SbString& prefix);
    static const SbString& getInstancePrefix();

protected:
    SoBase() = default;
    ~SoBase() override;

    /// Announces death to the auditors before any part of the object is gone, then deletes.
    void destroy() override;

private:
    mutable std::atomic<bool> m_tellsOfDeath{false}; // beside the reference count

protected:
    SoAuditorList m_auditors;

private:
    struct Naming;
    void forgetName();
    static void listenerAdded();

    Naming* m_naming = nullptr; ///< Owned: name and place among those of that name; null mostly.
};
