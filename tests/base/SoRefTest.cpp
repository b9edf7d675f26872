#include "support/ErrorGuard.h"

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

class Counted : public SoRefCounter {
public:
    Counted() { ++s_alive; }
    static int s_alive;

protected:
    ~Counted() override { --s_alive; }
};
int Counted::s_alive = 0;

class Derived final : public Counted {};

} // namespace

TEST(SoRef, KeepsTheObjectWhileAnyReferenceLives)
{
    {
        SoRef<Counted> a(new Counted);
        SoRef<Counted> b = a;
        EXPECT_EQ(a->getRefCount(), 2);
        a = nullptr;
        EXPECT_EQ(b->getRefCount(), 1);
        b = b.get();
        const SoRef<Counted>& same = b;
        b = same;
        EXPECT_EQ(b->getRefCount(), 1);
        SoRef<Counted> c = std::move(b);
        EXPECT_TRUE(!b && c && c->getRefCount() == 1);
        const SoRef<Derived> derived(new Derived);
        const SoRef<Counted> asBase = derived;
        EXPECT_TRUE(asBase == derived && asBase == derived.get() && asBase != c && b == nullptr);
        swap(b, c);
        EXPECT_TRUE(b && !c);
        EXPECT_EQ(Counted::s_alive, 2);
    }
    EXPECT_EQ(Counted::s_alive, 0);
}

TEST(SoRef, AdoptsAndReleasesWithoutChangingTheOwner)
{
    auto* object = new Counted;
    object->ref();
    SoRef<Counted> owner = SoRef<Counted>::adopt(object);
    EXPECT_EQ(object->getRefCount(), 1);
    Counted* bare = owner.release();
    EXPECT_TRUE(bare == object && !owner);
    EXPECT_EQ(bare->getRefCount(), 0);
    EXPECT_EQ(Counted::s_alive, 1);
    owner = bare;
    owner.reset();
    EXPECT_EQ(Counted::s_alive, 0);
    EXPECT_EQ(owner.release(), nullptr);
}

TEST(SoRefCounter, OneReleaseTooManyIsReportedAndDoesNothing)
{
    support::ErrorScope errors;
    const auto* object = new Counted;
    object->unref();
    object->unrefNoDelete();
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(object->getRefCount(), 0);
    EXPECT_EQ(Counted::s_alive, 1);
    object->ref();
    object->unref();
    EXPECT_EQ(Counted::s_alive, 0);
}

TEST(SbImage, SharesPixelsUntilOneCopyIsEdited)
{
    const unsigned char bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    SbImage a(SbVec2i32(2, 2), 2, bytes);
    SbImage b = a;
    EXPECT_EQ(a.getBytes(), b.getBytes());
    b.edit()[5] = 255;
    EXPECT_EQ(a.getPixel(0, 1)[1], 6);
    EXPECT_EQ(b.getPixel(0, 1)[1], 255);
    EXPECT_FALSE(a == b);
    b.edit()[5] = 6;
    EXPECT_TRUE(a == b);
    const unsigned char* alone = a.getBytes();
    EXPECT_EQ(a.edit(), alone);
    EXPECT_TRUE(a.hasTransparency());
    for (int i = 1; i < 8; i += 2)
        a.edit()[i] = 255;
    EXPECT_FALSE(a.hasTransparency());
}

TEST(SbImage, RefusesSizesThatCannotBe)
{
    SbImage image(SbVec2i32(1, 1), 1);
    EXPECT_FALSE(image.setValue(SbVec2i32(2000000000, 2000000000), 4));
    EXPECT_TRUE(image.isNull() && !image.getBytes() && !image.edit());
    EXPECT_FALSE(image.setValue(SbVec2i32(-1, 5), 1));
    EXPECT_FALSE(image.setValue(SbVec2i32(5, 5), 5));
    EXPECT_FALSE(image.adopt(SbVec3i32(2, 2, 0), 1, std::vector<unsigned char>(3)));
    EXPECT_TRUE(image.setValue(SbVec2i32(0, 0), 0));
    EXPECT_TRUE(image.isNull());
    EXPECT_TRUE(image.setValue(SbVec3i32(2, 3, 4), 3));
    EXPECT_EQ(image.getByteCount(), 72u);
    EXPECT_EQ(image.getBytes()[71], 0);
}
