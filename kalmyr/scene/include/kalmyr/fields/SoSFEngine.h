#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/fields/SoFieldMacros.h>

#include <vector>

/// Holds one engine, or none, with a reference. Engines are shared, not copied, except in the copy
/// of a graph that copies the engine as well.
///
/// As text: NULL, or an engine as scene files have it.
class KALMYR_API SoSFEngine final : public SoSField {
    SO_FIELD_HEADER(SoSFEngine)

    SoEngine* getValue() const
    {
        evaluate();
        return m_engine.get();
    }
    operator SoEngine*() const { return getValue(); }
    void setValue(SoEngine* engine);
    SoSFEngine& operator=(SoEngine* engine)
    {
        setValue(engine);
        return *this;
    }
    void initValue(SoEngine* engine) { m_engine = engine; }

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    SoRef<SoEngine> m_engine;
};

/// Holds any number of engines, null among them; see SoSFEngine.
class KALMYR_API SoMFEngine final : public SoMField {
    SO_FIELD_HEADER(SoMFEngine)

    int getNum() const override
    {
        evaluate();
        return static_cast<int>(m_engines.size());
    }
    SoEngine* operator[](int i) const
    {
        evaluate();
        return m_engines[static_cast<std::size_t>(i)].get();
    }
    /// Makes the field hold exactly one engine.
    void setValue(SoEngine* engine);
    /// At or beyond the end the field grows by nulls.
    void set1Value(int index, SoEngine* engine);
    void addEngine(SoEngine* engine) { set1Value(getNum(), engine); }
    /// Index of the first place of the engine, or -1.
    int find(const SoEngine* engine) const;

    void setNum(int num) override;
    void deleteValues(int start, int count = -1) override;
    void insertSpace(int start, int count) override;
    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    bool read1Value(int index, SoFieldReader& in) override;
    void write1Value(int index, SoFieldWriter& out) const override;

protected:
    bool readList(SoFieldReader& in) override;

private:
    std::vector<SoRef<SoEngine>> m_engines;
};
