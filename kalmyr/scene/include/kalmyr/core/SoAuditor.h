#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoContract.h>

#include <cstdint>
class SoBase;
class SoNotification;

/// Somebody who wants to hear when a base object or a field changes or dies.
class KALMYR_API SoAuditor {
public:
    /// The kind of the object that listens; the numbers are part of the interface.
    enum Type : std::uint8_t {
        SENSOR = 0,    ///< a data sensor
        CONTAINER = 1, ///< the field container that owns the audited field
        PARENT = 2,    ///< the child list of a parent node
        FIELD = 3,     ///< a field that holds the object, or is connected from the field
        ENGINE = 4,    ///< an engine fed by the field
        PATH = 5       ///< a path through the node
    };

    /// A change passes by; called during the notification walk. Must not edit the graph.
    virtual void auditedChanged(SoNotification& notification) = 0;

    /// The audited object is being destroyed. The auditor must forget it; it is removed from the
    /// list already.
    virtual void auditedDying() {}

protected:
    ~SoAuditor() = default;
};

/// The listeners of one object: unique entries with a multiplicity, removed in constant time.
///
/// Most objects have one listener, which is kept in place; only a list that grows beyond
/// `kIndexThreshold` builds a hash index, so a material shared by 100,000 parents can lose them
/// in any order in linear time. Order after a removal is unspecified.
class KALMYR_API SoAuditorList {
public:
    struct Entry {
        SoAuditor* auditor = nullptr;
        SoAuditor::Type type = SoAuditor::SENSOR;
        int multiplicity = 0; ///< how often the auditor holds the object (same child twice: 2)
    };

    static constexpr int kIndexThreshold = 32;

    SoAuditorList() = default;
    ~SoAuditorList()
    {
        if (m_many)
            freeMany();
    }
    SoAuditorList(const SoAuditorList&) = delete;
    SoAuditorList& operator=(const SoAuditorList&) = delete;

    /// Adds an auditor, which is not null, or raises its multiplicity.
    void append(SoAuditor* auditor, SoAuditor::Type type)
    {
        if (!kalmyr::holds(auditor, "an auditor"))
            return;
        if (m_many || m_one.auditor)
            appendFurther(auditor, type);
        else
            m_one = {auditor, type, 1};
    }

    /// Lowers the multiplicity, removing the entry when it falls to zero. Unknown: ignored.
    void remove(SoAuditor* auditor)
    {
        if (m_many)
            removeFromMany(auditor);
        else if (m_one.auditor == auditor && --m_one.multiplicity <= 0)
            m_one = {};
    }

    /// Number of distinct auditors.
    int getLength() const { return m_many ? countMany() : m_one.auditor ? 1 : 0; }
    /// An entry without auditor, with an error posted, for an index out of range.
    const Entry& operator[](int i) const
    {
        return i == 0 && !m_many && m_one.auditor ? m_one : entryOfMany(i);
    }
    SoAuditor* getObject(int i) const { return (*this)[i].auditor; }
    SoAuditor::Type getType(int i) const { return (*this)[i].type; }

    /// Tells every auditor. An auditor may remove itself or others meanwhile; those removed are
    /// not called, those added are called with the next change. Returns whether there are others
    /// than those that hold the object, which pass the change on.
    bool notify(SoNotification& notification) const
    {
        if (m_many)
            return notifyMany(notification);
        if (!m_one.auditor)
            return false;
        const bool listens = !holds(m_one.type);
        m_one.auditor->auditedChanged(notification);
        return listens;
    }

    /// Whether auditors of that type hold the object: child lists, and fields.
    static bool holds(SoAuditor::Type type)
    {
        return type == SoAuditor::PARENT || type == SoAuditor::FIELD;
    }

    /// The only auditor where there never was a second one; else null.
    const Entry* getOnly() const { return m_many || !m_one.auditor ? nullptr : &m_one; }

    /// Takes every entry out, then tells each auditor that the object dies.
    void announceDeath();

private:
    struct Many;
    void appendFurther(SoAuditor* auditor, SoAuditor::Type type);
    void removeFromMany(SoAuditor* auditor);
    int countMany() const;
    const Entry& entryOfMany(int i) const;
    bool notifyMany(SoNotification& notification) const;
    void freeMany();

    Entry m_one;            ///< the only entry while m_many is null
    Many* m_many = nullptr; ///< Owned: all entries once there were two.
};
