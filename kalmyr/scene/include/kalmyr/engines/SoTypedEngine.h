#pragma once

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/fields/SoValueFields.h>

#include <memory>
#include <vector>

/// Common part of the engines that work on values of a type chosen when they are made: `type` names
/// a multiple-value field type, MFFloat at first. It can be changed as long as nothing is
/// connected.
class KALMYR_API SoTypedEngine : public SoEngine {
public:
    static SoType getClassTypeId();
    static void initClass();

    SoSFName type;

    const SoFieldData* getFieldData() const override { return m_data.get(); }
    SoFieldContainer* createTwin() const override;
    void copyFieldValues(const SoFieldContainer* from, bool copyConnections = false) override;
    void notify(SoNotification& notification) override;

protected:
    SoTypedEngine();
    ~SoTypedEngine() override;

    /// Makes all fields; the last statement of a constructor. A type that is no multiple-value type
    /// is replaced by MFFloat, with an error.
    void setValueType(SoType multiple);
    SoType getValueType() const { return m_valueType; }
    /// The single-value type that goes with the value type.
    SoType getSingleType() const;
    /// Whether all about values of a type is known here.
    static bool isSupported(SoType multiple);

    /// Adds the fields besides `type`.
    virtual void declareFields() = 0;
    void declare(const char* name, SoField* field);
    /// A field of that type, owned by the engine.
    SoField* declareNew(const char* name, SoType fieldType);
    void declareOutput(SoField* output) { initOutput(output); }

    /// Sets a single-value field to one of the values.
    static void selectValue(const SoMField& from, int index, SoField& to);
    /// Appends all values of one field to another of its type.
    static void appendValues(const SoMField& from, SoMField& to);

private:
    bool isConnectedAnywhere() const;
    void applyType();

    SoType m_valueType;
    bool m_ready = false;
    std::unique_ptr<SoFieldData> m_data;
    std::vector<std::unique_ptr<SoField>> m_owned;
};
