#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoType.h>

#include <memory>

/// Which part of a shape something concerns. A simple value, copied by clone().
class KALMYR_API SoDetail {
public:
    virtual ~SoDetail() = default;

    static SoType getClassTypeId();
    static void initClass();
    virtual SoType getTypeId() const = 0;
    bool isOfType(SoType type) const { return getTypeId().isDerivedFrom(type); }

    virtual std::unique_ptr<SoDetail> clone() const = 0;

protected:
    SoDetail() = default;
    SoDetail(const SoDetail&) = default;
    SoDetail& operator=(const SoDetail&) = default;
};

/// Type identity and copying of a concrete detail.
#define SO_DETAIL_HEADER(Class)                                                                    \
public:                                                                                            \
    static SoType getClassTypeId();                                                                \
    static void initClass();                                                                       \
    SoType getTypeId() const override                                                              \
    {                                                                                              \
        return getClassTypeId();                                                                   \
    }                                                                                              \
    std::unique_ptr<SoDetail> clone() const override                                               \
    {                                                                                              \
        return std::make_unique<Class>(*this);                                                     \
    }                                                                                              \
                                                                                                   \
private:
