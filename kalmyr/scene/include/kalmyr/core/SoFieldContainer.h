#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/core/SoBase.h>
#include <kalmyr/core/SoNotification.h>

#include <cstdint>
#include <vector>

class SoField;
class SoFieldData;

/// A base object with fields: nodes, engines, scene managers, render areas.
class KALMYR_API SoFieldContainer : public SoBase {
public:
    static SoType getClassTypeId();
    static void initClass();

    /// Names and places of the fields; null when the class has none.
    virtual const SoFieldData* getFieldData() const { return nullptr; }

    /// The field of that name, or null.
    SoField* getField(const SbName& name) const;
    /// Its name, or the empty name when the field is not one of this container's.
    SbName getFieldName(const SoField* field) const;
    std::vector<SoField*> getFields() const;

    /// A new default instance of the same type (reference count 0), or null when the type has none.
    virtual SoFieldContainer* createTwin() const { return nullptr; }

    /// Sets every field to its default value, with one notification.
    virtual void setToDefaults();

    /// True when every field holds its default value.
    bool hasDefaultValues() const;

    /// Whether scene text has to mention the field: it does not hold its default, is ignored or
    /// follows another field.
    virtual bool isFieldWritten(const SoField& field) const;

    /// Sets fields from text such as "radius 2 height 3"; a '~' behind a value makes the field
    /// ignored. False at the first fault, with nothing changed at all and nobody notified; an error
    /// is posted. A null pointer is a broken contract.
    bool set(const char* text);
    bool set(const SbString& text);
    /// All fields that do not hold their default or are ignored, as text that set() takes; values
    /// as SoField::get() has them. Connections are not told of.
    void get(SbString& text) const;

    /// Copies all field values (and, with `copyConnections`, connections) from a container of
    /// the same type; one notification. Does nothing, and posts an error, for another type or null.
    virtual void copyFieldValues(const SoFieldContainer* from, bool copyConnections = false);

    /// Switches notification of this container on or off; returns what it was. While off, changes
    /// reach nobody; touch() afterwards tells them once.
    bool enableNotify(bool on);
    bool isNotifyEnabled() const { return m_notifyEnabled; }

    /// Sends a change of kind UNSPECIFIED without a field.
    void touch();

    /// Stamp of the last change at or below this container; a new object has one of its own.
    /// Equal stamps mean unchanged, so caches compare it. Several changes of which nobody asked in
    /// between may share one.
    std::uint64_t getChangeId() const;

    /// Continues a walk: visits this container unless the change came by already.
    virtual void notify(SoNotification& notification);

    /// For child lists and fields that begin to hold this container, before they tell of it: sees
    /// to it that changes here and below reach those who listen to the holder or its field. Null
    /// for none.
    void joinHolder(SoFieldContainer* holder, const SoField* field);

    /// Whether the value of that field is computed from the others when it is read, as the outputs
    /// of an engine are. Fields that follow such a field keep the container alive.
    virtual bool computes(const SoField*) const { return false; }

protected:
    SoFieldContainer();
    ~SoFieldContainer() override = default;

    /// A computed field that is out of date is about to be read.
    virtual void compute(SoField*) {}
    /// A field got its first listener or lost its last one.
    virtual void listenersChanged(SoField*) {}
    void destroy() override;

private:
    friend class SoField;
    friend class SoNode;
    bool isUnheard() const { return m_unheard && !SoNotification::isRepeated(m_changeId); }

    std::uint64_t m_changeId;
    bool m_notifyEnabled = true;
    bool m_feeds = false; ///< one of these follows or is followed, or did or was

    bool m_unheard = false; ///< of a node: nobody listened here or above when a walk last came by
    bool m_holds = false;   ///< others joined this one

protected:
    std::uint8_t m_nodeFlags = 0; ///< bits for SoNode and below (override and such)
};
