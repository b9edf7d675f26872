#include <kalmyr/engines/SoGlobalField.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include <algorithm>
#include <vector>

namespace {

constexpr double kDefaultInterval = 1.0 / 60.0;
constexpr char kRealTime[] = "realTime";

SoType s_type;

struct Entry {
    SbName name;
    SoField* field;
    SoRef<SoFieldContainer> holder;
};

/// A handful, in order of creation.
std::vector<Entry>& entries()
{
    static auto* e = new std::vector<Entry>; // fields of static objects may follow them to the end
    return *e;
}

auto entryOf(const SbName& name)
{
    return std::find_if(entries().begin(), entries().end(),
                        [&name](const Entry& e) { return e.name == name; });
}

/// The time of day, on a timer while somebody listens.
class RealTime final : public SoGlobalField {
public:
    RealTime()
        : SoGlobalField(SbName(kRealTime), std::make_unique<SoSFTime>()), m_timer(&tick, this)
    {
        m_timer.setInterval(SbTime(kDefaultInterval));
        time().setValue(SbTime::getTimeOfDay());
    }

    SoSFTime& time() { return static_cast<SoSFTime&>(*m_field); }
    void setInterval(const SbTime& interval)
    {
        m_timer.unschedule();
        m_timer.setInterval(interval);
        runTimer();
    }
    const SbTime& getInterval() const { return m_timer.getInterval(); }

protected:
    void listenersChanged(SoField*) override { runTimer(); }

private:
    static void tick(void* data, SoSensor*)
    {
        static_cast<RealTime*>(data)->time().setValue(SbTime::getTimeOfDay());
    }
    void runTimer()
    {
        const bool wanted =
            m_field && m_field->getAuditors().getLength() > 0 && m_timer.getInterval() > SbTime();
        if (wanted == m_timer.isScheduled())
            return;
        if (wanted) {
            time().setValue(SbTime::getTimeOfDay());
            m_timer.schedule();
        } else {
            m_timer.unschedule();
        }
    }

    SoTimerSensor m_timer;
};

RealTime* s_realTime = nullptr; // Not owned; the table holds it for ever.

} // namespace

SoType SoGlobalField::getClassTypeId()
{
    return s_type;
}

SoType SoGlobalField::getTypeId() const
{
    return s_type;
}

void SoGlobalField::initClass()
{
    s_type = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("GlobalField"));
}

SoGlobalField::SoGlobalField(const SbName& name, std::unique_ptr<SoField> field)
    : m_field(std::move(field)), m_data(std::make_unique<SoFieldData>())
{
    m_field->setContainer(this);
    m_data->addField(this, name, m_field.get());
}

SoGlobalField::~SoGlobalField() = default;

SoField* SoGlobalField::find(const SbName& name)
{
    const auto at = entryOf(name);
    if (at == entries().end())
        return nullptr;
    // It does not tick for those who only look.
    if (s_realTime && at->holder == s_realTime && at->field->getAuditors().getLength() == 0)
        s_realTime->time().setValue(SbTime::getTimeOfDay());
    return at->field;
}

SoField* SoGlobalField::create(const SbName& name, SoType type)
{
    if (const auto at = entryOf(name); at != entries().end()) {
        if (at->field->getTypeId() == type)
            return at->field;
        SoDebugError::post("SoGlobalField::create", "\"%s\" is there already, as %s",
                           name.getString(), at->field->getTypeId().getName().getString());
        return nullptr;
    }
    if (name.isEmpty() || !type.isDerivedFrom(SoField::getClassTypeId())
        || !type.canCreateInstance()) {
        SoDebugError::post("SoGlobalField::create", "%s is no type of field",
                           type.getName().getString());
        return nullptr;
    }
    std::unique_ptr<SoField> field(static_cast<SoField*>(type.createInstance()));
    SoField* made = field.get();
    entries().push_back({name, made, new SoGlobalField(name, std::move(field))});
    return made;
}

bool SoGlobalField::rename(const SbName& from, const SbName& to)
{
    const auto at = entryOf(from);
    if (at == entries().end() || to.isEmpty() || entryOf(to) != entries().end()
        || from == kRealTime)
        return false;
    auto* holder = static_cast<SoGlobalField*>(at->holder.get());
    holder->m_data = std::make_unique<SoFieldData>();
    holder->m_data->addField(holder, to, at->field);
    at->name = to;
    return true;
}

bool SoGlobalField::remove(const SbName& name)
{
    const auto at = entryOf(name);
    if (at == entries().end() || at->holder == s_realTime)
        return false;
    const SoRef<SoFieldContainer> last(at->holder);
    entries().erase(at);
    return true;
}

void SoGlobalField::setRealTimeInterval(const SbTime& interval)
{
    if (s_realTime)
        s_realTime->setInterval(std::max(interval, SbTime()));
}

SbTime SoGlobalField::getRealTimeInterval()
{
    return s_realTime ? s_realTime->getInterval() : SbTime(kDefaultInterval);
}

void kalmyr::detail::initRealTime()
{
    if (s_realTime)
        return;
    s_realTime = new RealTime;
    entries().push_back({SbName(kRealTime), &s_realTime->time(), s_realTime});
}
