#include "mirabo/extender/private/FieldStep.h"

#include "mirabo/extender/private/Observed.h"

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <string>
#include <utility>

namespace mirabo {

FieldStep::~FieldStep() = default;

std::unique_ptr<SoField> copyOf(const SoField& field)
{
    std::unique_ptr<SoField> copy = field.createTwin();
    if (copy)
        copy->copyFrom(field);
    return copy;
}

namespace {

std::string textOf(const SoField& field)
{
    std::string text;
    SoFieldWriter writer(text);
    field.writeValue(writer);
    return text;
}

/// Equal values may differ in the sign of a zero, which the text of short ones tells.
bool isSameToTheBit(const SoField& a, const SoField& b)
{
    if (!a.isSame(b))
        return false;
    const bool isShort =
        a.isOfType(SoSField::getClassTypeId()) && !a.isOfType(SoSFImage::getClassTypeId());
    return !isShort || textOf(a) == textOf(b);
}

/// Behind a change, which the field may not have survived.
void setDefault(const Observed<SoField>& field, bool on)
{
    if (field)
        field->setDefault(on);
}

class ValueStep final : public FieldStep {
public:
    ValueStep(std::unique_ptr<SoField> before, bool wasDefault, std::unique_ptr<SoField> after,
              bool isDefault)
        : m_before(std::move(before)),
          m_after(std::move(after)),
          m_wasDefault(wasDefault),
          m_isDefault(isDefault)
    {
    }

    void make(const Observed<SoField>& field) override { give(field, *m_after, m_isDefault); }
    void takeBack(const Observed<SoField>& field) override { give(field, *m_before, m_wasDefault); }
    bool absorb(FieldStep& later) override
    {
        auto* other = dynamic_cast<ValueStep*>(&later);
        if (!other)
            return false;
        m_after = std::move(other->m_after);
        m_isDefault = other->m_isDefault;
        return true;
    }

private:
    static void give(const Observed<SoField>& field, const SoField& value, bool isDefault)
    {
        field->copyFrom(value);
        setDefault(field, isDefault);
    }

    std::unique_ptr<SoField> m_before;
    std::unique_ptr<SoField> m_after;
    bool m_wasDefault;
    bool m_isDefault;
};

class RangeStep final : public FieldStep {
public:
    RangeStep(int start, std::unique_ptr<SoMField> before, std::unique_ptr<SoMField> after,
              bool wasDefault)
        : m_start(start),
          m_before(std::move(before)),
          m_after(std::move(after)),
          m_wasDefault(wasDefault)
    {
    }

    void make(const Observed<SoField>& field) override { exchange(field, *m_before, *m_after); }
    void takeBack(const Observed<SoField>& field) override
    {
        if (exchange(field, *m_after, *m_before))
            setDefault(field, m_wasDefault);
    }
    bool absorb(FieldStep& later) override
    {
        auto* other = dynamic_cast<RangeStep*>(&later);
        if (!other || other->m_start != m_start || other->m_before->getNum() != m_after->getNum())
            return false;
        m_after = std::move(other->m_after);
        return true;
    }

private:
    /// Nothing when the field has been cut short meanwhile.
    bool exchange(const Observed<SoField>& field, const SoMField& present,
                  const SoMField& other) const
    {
        auto& list = static_cast<SoMField&>(*field.get());
        return m_start + present.getNum() <= list.getNum()
               && list.replaceValues(m_start, present.getNum(), other, 0, other.getNum());
    }

    int m_start;
    std::unique_ptr<SoMField> m_before;
    std::unique_ptr<SoMField> m_after;
    bool m_wasDefault;
};

class IgnoredStep final : public FieldStep {
public:
    explicit IgnoredStep(bool on) : m_on(on) {}

    void make(const Observed<SoField>& field) override { field->setIgnored(m_on); }
    void takeBack(const Observed<SoField>& field) override { field->setIgnored(!m_on); }
    bool absorb(FieldStep&) override { return false; }

private:
    bool m_on;
};

/// A field that others follow, kept from dying when it is an engine's: nothing but its followers
/// holds an engine.
class Master {
public:
    explicit Master(SoField* field)
    {
        m_field.reset(field);
        SoFieldContainer* container = field ? field->getContainer() : nullptr;
        if (container && !container->isOfType(SoNode::getClassTypeId()))
            m_engine = container;
    }
    SoField* get() const { return m_field.get(); }

private:
    SoRef<SoFieldContainer> m_engine;
    Observed<SoField> m_field;
};

class ConnectionStep final : public FieldStep {
public:
    ConnectionStep(const SoField& field, SoField* master)
        : m_before(field.getConnectedField()),
          m_after(master),
          m_value(copyOf(field)),
          m_wasDefault(field.isDefault())
    {
    }

    void make(const Observed<SoField>& field) override
    {
        if (SoField* master = m_after.get())
            field->connectFrom(master);
        else
            field->disconnect();
    }
    void takeBack(const Observed<SoField>& field) override
    {
        if (SoField* master = m_before.get()) {
            field->connectFrom(master);
            return;
        }
        field->disconnect();
        if (m_value && field)
            field->copyFrom(*m_value);
        setDefault(field, m_wasDefault);
    }
    bool absorb(FieldStep&) override { return false; }

private:
    Master m_before;
    Master m_after;
    std::unique_ptr<SoField> m_value;
    bool m_wasDefault;
};

std::unique_ptr<SoMField> copyOfRange(const SoMField& field, int start, int count)
{
    std::unique_ptr<SoField> copy = field.createTwin();
    if (!copy)
        return nullptr;
    auto& list = static_cast<SoMField&>(*copy);
    list.replaceValues(0, list.getNum(), field, start, count);
    return std::unique_ptr<SoMField>(static_cast<SoMField*>(copy.release()));
}

} // namespace

std::unique_ptr<FieldStep> makeValueStep(const SoField& field, std::unique_ptr<SoField> value,
                                         bool isDefault)
{
    if (!value || (isSameToTheBit(field, *value) && (field.isDefault() || !isDefault)))
        return nullptr;
    std::unique_ptr<SoField> before = copyOf(field);
    if (!before)
        return nullptr;
    return std::make_unique<ValueStep>(std::move(before), field.isDefault(), std::move(value),
                                       isDefault);
}

std::unique_ptr<FieldStep> makeRangeStep(const SoMField& field, int start, int removed,
                                         const SoMField& values)
{
    const int num = field.getNum();
    if (start < 0 || removed < 0 || start > num || removed > num - start)
        return nullptr;
    std::unique_ptr<SoMField> before = copyOfRange(field, start, removed);
    std::unique_ptr<SoMField> after = copyOfRange(values, 0, values.getNum());
    if (!before || !after
        || (before->getNum() == after->getNum() && before->isSame(*after)
            && textOf(*before) == textOf(*after)))
        return nullptr;
    return std::make_unique<RangeStep>(start, std::move(before), std::move(after),
                                       field.isDefault());
}

std::unique_ptr<FieldStep> makeIgnoredStep(const SoField& field, bool on)
{
    return field.isIgnored() == on ? nullptr : std::make_unique<IgnoredStep>(on);
}

std::unique_ptr<FieldStep> makeConnectionStep(const SoField& field, SoField* master)
{
    return field.getConnectedField() == master ? nullptr
                                               : std::make_unique<ConnectionStep>(field, master);
}

} // namespace mirabo
