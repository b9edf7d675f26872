#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <memory>

/// A field that belongs to no node: found by name in the whole process, for values that many
/// graphs follow.
///
/// There is one from the start, `realTime` (SFTime): the time of day. It ticks, driven by
/// the timer queue, only while some field or sensor listens to it; otherwise it holds the time of
/// the last find().
///
/// Threads: every thread finds a `realTime` of its own, which its sensor queues drive, and fields
/// that are connected from any `realTime` follow the one of the thread that connects them. It
/// passes to the application with the graphs that follow it; see SoSensorManager. All other global
/// fields are shared: whoever sets one or follows one needs the database's write lock.
class KALMYR_API SoGlobalField : public SoFieldContainer {
public:
    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    /// The field of that name, or null.
    static SoField* find(const SbName& name);
    /// A new field of that type, or the one that exists. Null, with an error, for a type that
    /// is no field's and for a name that stands for a field of another type.
    static SoField* create(const SbName& name, SoType type);
    /// False when there is no field of that name, or one of the new name already.
    static bool rename(const SbName& from, const SbName& to);
    /// Removes a field; those who follow it keep their value. `realTime` cannot be removed.
    static bool remove(const SbName& name);

    /// Time between ticks of `realTime`, 1/60 s at first. With zero, less or no number it does not
    /// tick. For the application's thread.
    static void setRealTimeInterval(const SbTime& interval);
    static SbTime getRealTimeInterval();

    const SoFieldData* getFieldData() const override { return m_data.get(); }

protected:
    SoGlobalField(const SbName& name, std::unique_ptr<SoField> field);
    ~SoGlobalField() override;

    std::unique_ptr<SoField> m_field;

private:
    std::unique_ptr<SoFieldData> m_data;
};

namespace kalmyr::detail {

/// Makes `realTime`.
void initRealTime();

} // namespace kalmyr::detail
