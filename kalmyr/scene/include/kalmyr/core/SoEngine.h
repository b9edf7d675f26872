#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <vector>

/// Computes values from others: its inputs are fields, and so are its outputs, which are read-only
/// and of field type EVENT_OUT. Fields follow an output by SoField::connectFrom(&engine->output).
///
/// An engine is no part of a graph: the fields that follow its outputs keep it alive, and it is
/// destroyed with the last of them unless somebody else holds a reference. Outputs are computed
/// when somebody reads them after an input changed, all of an engine at once.
///
/// Multiple-value inputs are taken together value by value; of the shorter ones the last value is
/// used again and again. Outputs have as many values as the longest of them.
class KALMYR_API SoEngine : public SoFieldContainer {
public:
    static SoType getClassTypeId();
    static void initClass();

    std::vector<SoField*> getOutputs() const;
    /// The output of that name, or null.
    SoField* getOutput(const SbName& name) const;
    /// The name of an output, or the empty name.
    SbName getOutputName(const SoField* output) const;

    /// A new engine of the registered type (reference count 0); null when abstract or no engine.
    static SoEngine* create(SoType type);
    /// The engine that the field follows an output of, or null.
    static SoEngine* getDriver(const SoField* field);
    /// The most recently named engine of that name, or null.
    static SoEngine* getByName(const SbName& name);

    SoFieldContainer* createTwin() const override;
    /// A new engine with the values and the connections of this one's inputs.
    SoEngine* copy() const;
    /// Inputs only: outputs follow from them.
    void copyFieldValues(const SoFieldContainer* from, bool copyConnections = false) override;

    void notify(SoNotification& notification) override;
    bool computes(const SoField* field) const override;

protected:
    SoEngine() = default;
    ~SoEngine() override;

    /// Makes a field an output; for constructors.
    static void initOutput(SoField* field);

    /// Sets the outputs from the inputs. Called when an output that is out of date is read; setting
    /// the outputs here tells nobody, since they were told of as out of date.
    virtual void evaluate() {}
    /// True for engines whose outputs depend on what happened before: each change of an input calls
    /// inputChanged() instead of making the outputs out of date.
    virtual bool isReacting() const { return false; }
    /// For reacting engines, once for each input that changed, after the walk that told of it (and
    /// before immediate sensors). `input` is null for a touch(). May set outputs, which tells, and
    /// call outputsChanged().
    virtual void inputChanged(SoField*) {}
    /// Makes the outputs out of date and tells who follows them.
    void outputsChanged();

    void compute(SoField* output) override;

private:
    friend class SoNotification;
    void tellOutputs(std::uint64_t origin);

    std::uint64_t m_toldOf = 0; ///< origin of the change that the outputs were last told of
};
