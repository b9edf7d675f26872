#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class SoField;
class SoMField;
class SoType;

/// Describes a field, its container and its flags; the value is left out.
struct MrbFieldState {
    QString fieldName;
    QString typeName;        ///< of the field, such as "SFFloat"
    QString containerType;   ///< such as "Sphere"; empty for a field without a container
    QString containerName;   ///< empty for a container without a name
    bool isAlive = false;    ///< false: the field has died, or another thread edits the graph
    bool isDefault = false;  ///< holds its default value
    bool hasDefault = false; ///< its class has a default for it
    bool isIgnored = false;
    bool isConnected = false;
    bool isReadOnly = false; ///< connected, or an output
    QString source;          ///< what drives a connected field, such as "translation of Transform"
};

/// The editing of one field, or of several fields of one type together: reads and changes values as
/// steps that can be undone, and tells what changes meanwhile.
///
/// Every change is one command on the undo stack, named after the field ("Set radius of Sphere").
/// Changes between beginGesture() and endGesture() are one command, as long as it is the last one
/// that was made: a drag, or a burst of typing. A change that leaves the bits as they are makes no
/// command and does not touch the field, its default flag included.
///
/// Holds no reference on the container. The GUI thread only; a field may be edited or destroyed by
/// another thread at any time. Commands outlive this object and the extension that owns it.
class MRBEXT_API MrbFieldEdit final : public QObject {
    Q_OBJECT

public:
    /// Changes the value of a scratch field, which has the type of the edited one and its present
    /// value; false gives the change up. Called once for each field.
    using Change = std::function<bool(SoField& value)>;

    /// The caller sees to it that the field lives during the call. One that cannot be followed, as
    /// another thread edits, is left out: getFieldCount() is 0 then.
    explicit MrbFieldEdit(SoField* field, QObject* parent = nullptr);
    ~MrbFieldEdit() override;

    /// The editing of the field that is selected in the tool; null when none is, or another thread
    /// edits. The caller owns it, or `parent` does.
    static MrbFieldEdit* createForSelectedField(QObject* parent = nullptr);

    /// \name The fields
    /// @{
    /// Edits another field together with those here. False for one that is here already, has
    /// another type, or is dead.
    bool addField(SoField* field);
    /// The same for the field that is selected in the tool.
    bool addSelectedField();
    /// Names the selected field, such as "radius of Ball", if addSelectedField() would add it; else
    /// empty.
    QString selectedFieldToAdd() const;
    /// The first field stays.
    void removeField(int index);
    int getFieldCount() const;
    /// For comparison only; null once it has died.
    const SoField* getField(int index = 0) const;
    /// The type that all of them have.
    SoType getFieldType() const;
    MrbFieldState getState(int index = 0) const;
    /// Calls the reader with a field while it lives and no other thread edits; false, without a
    /// call, else. The reader keeps no pointer.
    bool read(const std::function<void(const SoField&)>& reader, int index = 0) const;
    /// False when no field can be changed: dead, connected, or an output.
    bool isEditable() const;
    /// @}

    /// \name Changes
    /// All return false, with nothing changed, when no field can be changed now, and when nothing
    /// would be.
    /// @{
    /// Changes whole values. Cost: two copies of the value.
    bool change(const Change& change);
    /// Sets the value from its text as scene files have it. `problem` tells what is wrong with the
    /// text, "LINE:COLUMN: what was expected", and is empty otherwise.
    bool setText(const QString& text, QString* problem = nullptr);
    /// Puts values in the place of `removed` values from `start` on, in multiple-value fields.
    /// `values` is a field of the edited type. Fields without such values are left alone. Cost: the
    /// values that go and come, beside the field's own.
    bool replaceValues(int start, int removed, const SoMField& values);
    bool resetToDefault();
    bool setIgnored(bool on);
    bool disconnectFields();
    /// Makes the fields follow `master`, where that is possible.
    bool connectFields(SoField* master);
    /// A scratch field of the edited type, with the present value of the first field; null when
    /// that cannot be read.
    std::unique_ptr<SoField> copyValue() const;
    /// A scratch field of the edited type with its type's own default.
    std::unique_ptr<SoField> makeValue() const;
    /// @}

    /// \name Gestures
    /// @{
    void beginGesture();
    void endGesture();
    /// Gives back the values from before the gesture, if its command is the last one made, and ends
    /// it.
    void cancelGesture();
    bool isInGesture() const;
    /// @}

    /// Why nothing was changed last, for the user; empty when something was.
    const QString& getProblem() const;

Q_SIGNALS:
    /// A value or a state may have changed, by whomever; once for all changes of a pass of the
    /// event loop, and not more than sixty times a second.
    void changed();
    /// A field came, went or died.
    void fieldsChanged();

private:
    class Private;
    std::unique_ptr<Private> m;
};
