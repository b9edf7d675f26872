#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoFieldMacros.h>

#include <vector>

/// Holds a path, or none, with a reference. Paths are shared, not copied: edit a path and call
/// touch(), or set another one.
///
/// As text: NULL, or "Path { HEAD [ 0, 2 ] }" with the head node and child indices from there.
class KALMYR_API SoSFPath final : public SoSField {
    SO_FIELD_HEADER(SoSFPath)

    SoPath* getValue() const
    {
        evaluate();
        return m_path.get();
    }
    operator SoPath*() const { return getValue(); }
    void setValue(SoPath* path);
    SoSFPath& operator=(SoPath* path)
    {
        setValue(path);
        return *this;
    }
    void initValue(SoPath* path) { m_path = path; }

    /// Equal paths are the same value.
    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    void copyWith(SoNodeCopier& copier, const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    SoRef<SoPath> m_path;
};

/// Holds any number of paths; see SoSFPath.
class KALMYR_API SoMFPath final : public SoMField {
    SO_FIELD_HEADER(SoMFPath)

    int getNum() const override
    {
        evaluate();
        return static_cast<int>(m_paths.size());
    }
    SoPath* operator[](int i) const
    {
        evaluate();
        return m_paths[static_cast<std::size_t>(i)].get();
    }
    /// Makes the field hold exactly one path.
    void setValue(SoPath* path);
    /// At or beyond the end the field grows by nulls.
    void set1Value(int index, SoPath* path);
    void addPath(SoPath* path) { set1Value(getNum(), path); }
    /// Index of the first equal path, or -1.
    int find(const SoPath* path) const;

    void setNum(int num) override;
    void deleteValues(int start, int count = -1) override;
    void insertSpace(int start, int count) override;
    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    void copyWith(SoNodeCopier& copier, const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    bool read1Value(int index, SoFieldReader& in) override;
    void write1Value(int index, SoFieldWriter& out) const override;

protected:
    bool readList(SoFieldReader& in) override;

private:
    std::vector<SoRef<SoPath>> m_paths;
};
