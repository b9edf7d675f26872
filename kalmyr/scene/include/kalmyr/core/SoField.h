#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNotification.h>
#include <kalmyr/core/SoType.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class SoFieldContainer;
class SoFieldReader;
class SoFieldWriter;
class SoNodeCopier;

namespace kalmyr::detail {
struct TextFault;
}

/// A typed value of a field container that tells its container of every change.
///
/// 32 bytes and the value: connections and auditors are kept aside and cost nothing until used.
///
/// Threads: any number may read under the database's read lock, values that follow others and
/// outputs of engines included; what is out of date is computed by one of them at a time.
/// Everything that changes a field needs the write lock.
class KALMYR_API SoField : public SoAuditor {
public:
    /// The role of a field; three bits, the numbers are part of the interface (4, 5, 7 free).
    enum FieldType : std::uint8_t {
        ORDINARY = 0,
        EVENT_IN = 1,  ///< carries no value
        EVENT_OUT = 2, ///< read-only to the outside
        EXPOSED = 3,
        INTERNAL = 6 ///< the toolkit's own, never shown
    };

    static SoType getClassTypeId();
    static void initClass();

    virtual ~SoField()
    {
        if (m_extra || (flags() & kDeferred))
            dismantle();
    }
    SoField(const SoField&) = delete;
    SoField& operator=(const SoField&) = delete;

    virtual SoType getTypeId() const = 0;
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }

    SoFieldContainer* getContainer() const { return m_container; }
    /// Called once, by the container's constructor.
    void setContainer(SoFieldContainer* container) { m_container = container; }

    /// True while the field holds the value it was created with.
    bool isDefault() const { return (flags() & kDefault) != 0; }
    void setDefault(bool on);
    /// An ignored field has no effect on traversal. Changing it is a change of the field.
    bool isIgnored() const { return (flags() & kIgnored) != 0; }
    void setIgnored(bool on);
    FieldType getFieldType() const { return static_cast<FieldType>((flags() >> kTypeShift) & 7); }
    void setFieldType(FieldType type);

    /// The value as scene text; exact: set() of it restores the value to the bit, except for the
    /// payload of not-a-number and one component of a rotation next to a half or a whole turn
    /// (3e-16).
    ///
    /// Nodes and engines stand there whole, as scene files have them: DEF and USE for what the
    /// value holds several times, connections among what it holds, engines that these follow.
    /// set() makes new ones. What follows a node outside the value keeps the value that it has, an
    /// engine without a name gets one, and names of files are looked up from the working directory.
    void get(SbString& text) const;
    /// Sets the value from text. False, with nothing changed, nobody notified and an error posted
    /// as a read error, for text that is no value of this type or no value that the field takes; a
    /// null pointer is a broken contract.
    bool set(const char* text);
    /// The same for texts that may have zeros in them.
    bool set(const SbString& text);
    /// The same without an error: `problem` becomes "LINE:COLUMN: what was expected".
    bool set(const SbString& text, SbString& problem);

    /// Value from and to scene text; the value is unspecified after a failed read.
    virtual bool readValue(SoFieldReader& in) = 0;
    virtual void writeValue(SoFieldWriter& out) const = 0;

    /// Whether the values are equal or have the same bits, as a not-a-number has with itself. False
    /// for a field of another type.
    virtual bool isSame(const SoField& other) const = 0;
    /// A new field of the same type in no container, with the names of this one's values, but with
    /// the default value of the type. Null for a type that cannot be created by name.
    std::unique_ptr<SoField> createTwin() const;
    /// Copies value, not flags, from a field of the same type, and notifies. Does nothing, and
    /// posts an error, for a field of another type.
    virtual void copyFrom(const SoField& other) = 0;
    /// Copies from a field of the same type inside a copied graph: nodes held are replaced by
    /// their copies.
    virtual void copyWith(SoNodeCopier& copier, const SoField& other);
    /// Puts the default value of the containing class back: copies from `pristine`.
    void resetTo(const SoField& pristine);

    /// Tells auditors and container that the value changed.
    void touch() { valueChanged(false); }

    /// Switches notification of this field on or off; returns what it was. While off, changes of
    /// its value reach nobody; touch() afterwards tells them once.
    bool enableNotify(bool on);
    bool isNotifyEnabled() const { return (flags() & kQuiet) == 0; }

    /// Makes this field follow `master`: another field, or an output of an engine, which is a field
    /// of the engine. The value is taken over, converted where the types differ, when it is next
    /// read; every change of the master is told to this field's listeners at once. Any number of
    /// fields may follow one master. Replaces an earlier connection.
    ///
    /// Refused, with an error that names the fields, where there is no conversion between the types
    /// where it would close a cycle, and for null. An output's engine is kept alive by its
    /// followers. A value set on a connected field stays until the master changes.
    bool connectFrom(SoField* master);
    /// Keeps the present value of the master.
    void disconnect();
    bool isConnected() const;
    /// The field or engine output that this one follows, or null.
    SoField* getConnectedField() const;
    /// Fields that follow this one.
    std::vector<SoField*> getFollowers() const;
    /// A connection that is switched off stays, but passes nothing on; switched on again, the
    /// field takes the master's value.
    void enableConnection(bool on);
    bool isConnectionEnabled() const { return (flags() & kConnectionOff) == 0; }
    /// Brings a connected field or an output up to date. Every reader of a value calls it.
    void evaluate() const
    {
        if (m_flags.load(std::memory_order_acquire) & kDirty)
            pull();
    }

    /// Null is refused with an error.
    void addAuditor(SoAuditor* auditor, SoAuditor::Type type);
    void removeAuditor(SoAuditor* auditor);
    /// Sensors and connections on this field; an empty list when there are none.
    const SoAuditorList& getAuditors() const;

    void
    auditedChanged(SoNotification& notification) override; ///< a held object or a master changed
    void auditedDying() override;                          ///< the master dies

protected:
    SoField() = default;

    /// After every change of the value: clears the default flag unless told otherwise, and sends
    /// the notification (walks to auditors, then container).
    void valueChanged(bool clearDefault = true);
    /// False for a field that must not be fed by a connection; posts no error.
    virtual bool mayFollow() const { return true; }
    /// Gives a twin made by set() what it needs to read a value (the names of an enum field).
    virtual void prepareTwin(SoField&) const {}
    /// For copyFrom(): whether `other` is of this field's type; a broken contract if not.
    bool canCopy(const SoField& other) const
    {
        return kalmyr::holds(other.getTypeId() == getTypeId(), "a field of the same type");
    }
    /// The same as valueChanged() for an edit of a node list that has a kind of its own.
    void notifyChange(SoNotification& notification);
    /// The flags are read by many threads and changed by one at a time.
    std::uint32_t flags() const { return m_flags.load(std::memory_order_relaxed); }
    void changeFlags(std::uint32_t off, std::uint32_t on) const
    {
        m_flags.store((flags() & ~off) | on, std::memory_order_release);
    }

    static constexpr std::uint32_t kDefault = 1;
    static constexpr std::uint32_t kIgnored = 2;
    static constexpr std::uint32_t kDirty = 4; ///< what the value comes from changed since
    static constexpr std::uint32_t kPulling = 8;
    static constexpr int kTypeShift = 4;
    static constexpr std::uint32_t kQuiet = 1 << 7;
    static constexpr std::uint32_t kConnectionOff = 1 << 8;
    static constexpr std::uint32_t kDeferred = 1 << 9; ///< waits to be told by the walk under way

private:
    struct Extra;
    void dismantle();
    friend class SoEngine;
    friend class SoFieldContainer;
    friend class SoNotification;
    bool readText(const SbString& text, kalmyr::detail::TextFault& fault);
    void pull() const;
    void pullChain();
    void pullFrom(const SoField* master);
    void pullSources() const;
    const SoField* findStaleSource(int& next) const;
    Extra& extra();
    bool canFollow(const SoField* master) const;
    /// Leaves the master without telling anybody; the value stays as it was last read.
    void letGoOfMaster();
    /// Every follower takes the value a last time and is disconnected.
    void releaseFollowers();
    /// The value is out of date: tells the listeners.
    void becomeStale(std::uint64_t origin);
    /// The same with the container; what the walk does with a field that it deferred.
    void tellFollowing(std::uint64_t origin);
    /// Sends a walk on to auditors and container.
    void pass(SoNotification& notification);

    SoFieldContainer* m_container = nullptr; // Not owned; owns us.
    Extra* m_extra = nullptr;                // Owned: auditors and connection; null mostly.

    mutable std::atomic<std::uint32_t> m_flags = kDefault;
};

/// A field with one value.
class KALMYR_API SoSField : public SoField {
public:
    static SoType getClassTypeId();
    static void initClass();
};

/// A field with any number of values in one contiguous array.
///
/// Indices and counts out of range are broken contracts: nothing changes, an error is posted.
class KALMYR_API SoMField : public SoField {
public:
    static SoType getClassTypeId();
    static void initClass();

    virtual int getNum() const = 0;
    /// New values are default ones.
    virtual void setNum(int num) = 0;
    /// Deletes `count` values, or all from `start` on for a negative count or one that reaches
    /// beyond the end; 0 <= start <= getNum().
    virtual void deleteValues(int start, int count = -1) = 0;
    /// Makes room for `count` default values before `start`; beyond the end the field grows up to
    /// there as well. None of the two may be negative.
    virtual void insertSpace(int start, int count) = 0;
    /// Puts `count` values of `source`, from its value `from` on, in the place of `removed` values
    /// from `start` on, bit for bit and with one notification. Cost: the values in both ranges, and
    /// those behind them when the numbers differ. False, with nothing changed, for a source that is
    /// this field or of another type, for ranges that are not there, and for nodes that the field
    /// refuses.
    virtual bool replaceValues(int start, int removed, const SoMField& source, int from,
                               int count) = 0;

    /// One value as text, as get() has it; empty for an index out of range.
    void get1(int index, SbString& text) const;
    /// Sets one value from text and grows the field when needed. False, as of set(), with nothing
    /// changed.
    bool set1(int index, const char* text);
    bool set1(int index, const SbString& text);
    /// Nothing is written for an index out of range, and reading is false.
    virtual bool read1Value(int index, SoFieldReader& in) = 0;
    virtual void write1Value(int index, SoFieldWriter& out) const = 0;

    /// "[ a, b ]", or the bare value when there is exactly one.
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

protected:
    /// Reads values up to the closing bracket; the typed fields override with their fast path.
    virtual bool readList(SoFieldReader& in) = 0;

    /// The contracts of edits; false after a broken one, or (0, false) when there is nothing to do.
    static bool isIndex(int index, int num);
    static int countToDelete(int num, int start, int count);
    static bool canInsert(int num, int start, int count, int maxNum);
    bool canReplace(int start, int removed, const SoMField& source, int from, int count,
                    int maxNum) const;
};
