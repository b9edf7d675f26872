#include <kalmyr/fields/SoSFEngine.h>

#include <kalmyr/core/SoFieldIO.h>

#include <algorithm>
#include <cassert>

SO_FIELD_SOURCE(SoSFEngine, SoSField, "SFEngine")
SO_FIELD_SOURCE(SoMFEngine, SoMField, "MFEngine")

void SoSFEngine::setValue(SoEngine* engine)
{
    const SoRef<SoEngine> old(m_engine); // lives until everybody has heard of the change
    m_engine = engine;
    valueChanged();
}

bool SoSFEngine::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId()
           && static_cast<const SoSFEngine&>(other).getValue() == getValue();
}

void SoSFEngine::copyFrom(const SoField& other)
{
    setValue(static_cast<const SoSFEngine&>(other).getValue());
}

bool SoSFEngine::readValue(SoFieldReader& in)
{
    SoEngine* engine = nullptr;
    if (!in.readEngine(engine))
        return false;
    setValue(engine);
    return true;
}

void SoSFEngine::writeValue(SoFieldWriter& out) const
{
    out.writeEngine(getValue());
}

void SoMFEngine::setValue(SoEngine* engine)
{
    const std::vector<SoRef<SoEngine>> old(std::move(m_engines));
    m_engines.assign(1, SoRef<SoEngine>(engine));
    valueChanged();
}

void SoMFEngine::set1Value(int index, SoEngine* engine)
{
    assert(index >= 0);
    evaluate();
    const auto at = static_cast<std::size_t>(index);
    if (at >= m_engines.size())
        m_engines.resize(at + 1);
    const SoRef<SoEngine> old(m_engines[at]);
    m_engines[at] = engine;
    valueChanged();
}

int SoMFEngine::find(const SoEngine* engine) const
{
    evaluate();
    const auto at = std::find(m_engines.begin(), m_engines.end(), engine);
    return at == m_engines.end() ? -1 : static_cast<int>(at - m_engines.begin());
}

void SoMFEngine::setNum(int num)
{
    evaluate();
    m_engines.resize(static_cast<std::size_t>(std::max(num, 0)));
    valueChanged();
}

void SoMFEngine::deleteValues(int start, int count)
{
    const int num = getNum();
    if (start < 0 || start >= num || count == 0)
        return;
    const int n = count < 0 ? num - start : std::min(count, num - start);
    m_engines.erase(m_engines.begin() + start, m_engines.begin() + start + n);
    valueChanged();
}

void SoMFEngine::insertSpace(int start, int count)
{
    if (start < 0 || count <= 0)
        return;
    evaluate();
    m_engines.resize(std::max(m_engines.size(), static_cast<std::size_t>(start)));
    m_engines.insert(m_engines.begin() + start, static_cast<std::size_t>(count), nullptr);
    valueChanged();
}

bool SoMFEngine::isSame(const SoField& other) const
{
    if (other.getTypeId() != getTypeId())
        return false;
    const auto& engines = static_cast<const SoMFEngine&>(other);
    return getNum() == engines.getNum() && m_engines == engines.m_engines;
}

void SoMFEngine::copyFrom(const SoField& other)
{
    if (&other == this)
        return;
    other.evaluate();
    m_engines = static_cast<const SoMFEngine&>(other).m_engines;
    valueChanged();
}

bool SoMFEngine::readValue(SoFieldReader& in)
{
    if (in.text.accept('['))
        return readList(in);
    SoEngine* engine = nullptr;
    if (!in.readEngine(engine))
        return false;
    // A lone NULL is the empty list.
    m_engines.assign(engine ? 1 : 0, SoRef<SoEngine>(engine));
    valueChanged();
    return true;
}

bool SoMFEngine::readList(SoFieldReader& in)
{
    std::vector<SoRef<SoEngine>> engines;
    while (!in.text.accept(']')) {
        SoEngine* engine = nullptr;
        if (!in.readEngine(engine))
            return false;
        engines.emplace_back(engine);
    }
    m_engines = std::move(engines);
    valueChanged();
    return true;
}

bool SoMFEngine::read1Value(int index, SoFieldReader& in)
{
    SoEngine* engine = nullptr;
    if (!in.readEngine(engine))
        return false;
    set1Value(index, engine);
    return true;
}

void SoMFEngine::write1Value(int index, SoFieldWriter& out) const
{
    out.writeEngine((*this)[index]);
}
