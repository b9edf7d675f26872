#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNotification.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace {

struct Listener final : SoAuditor {
    void auditedChanged(SoNotification&) override { ++heard; }
    void auditedDying() override { ++deaths; }
    int held = 0;
    int heard = 0;
    int deaths = 0;
};

} // namespace

TEST(AuditorListTest, KeepsEachListenerAsOftenAsItHolds)
{
    for (unsigned seed = 1; seed <= 5; ++seed) {
        std::mt19937 random(seed);
        std::array<Listener, 300> all;
        SoAuditorList list;
        // Grows beyond the index, shrinks to nothing, and grows again.
        for (int step = 0; step < 12000; ++step) {
            const bool growing = step / 3000 % 2 == 0;
            Listener& one = all[random() % all.size()];
            if (random() % 4 == 0 ? !growing : growing) {
                list.append(&one, SoAuditor::PARENT);
                ++one.held;
            } else {
                list.remove(&one);
                one.held = std::max(0, one.held - 1);
            }
        }
        int distinct = 0;
        SoNotification notification;
        list.notify(notification);
        for (const Listener& one : all) {
            distinct += one.held > 0;
            ASSERT_EQ(one.heard, one.held > 0) << seed;
        }
        EXPECT_EQ(list.getLength(), distinct);
        for (int i = 0; i < list.getLength(); ++i)
            EXPECT_EQ(list[i].multiplicity, static_cast<Listener*>(list[i].auditor)->held);
        list.announceDeath();
        EXPECT_EQ(list.getLength(), 0);
        for (const Listener& one : all)
            ASSERT_EQ(one.deaths, one.held > 0) << seed;
    }
}
