// Which version of a module's messages both devices speak.

#include <gtest/gtest.h>
#include <standby/modules.h>

namespace {

using uvel::host::standby::Modules;
using uvel::host::standby::ModuleVersion;
using Versions = std::vector<uint32_t>;

/* The version agreed on for module 1, or 0. */
uint32_t Agreed(const ModuleVersion &own, const ModuleVersion &peer) {
    Modules modules;
    bool tell_now = false;
    modules.Add(1);
    EXPECT_TRUE(modules.Register(own, &tell_now));
    modules.Begin();
    modules.PeerTold({peer});
    return modules.Negotiated(1).value_or(0);
}

TEST(Versions, AgreeOnTheLowerOneWhenTheOtherSideUnderstandsIt) {
    EXPECT_EQ(5u, Agreed({1, 5, 0}, {1, 5, 0}));
    EXPECT_EQ(3u, Agreed({1, 3, 0}, {1, 5, 1}));
    EXPECT_EQ(3u, Agreed({1, 5, 1}, {1, 3, 0}));
    EXPECT_EQ(0u, Agreed({1, 3, 1}, {1, 5, 0})) << "the peer understands its own only";
    EXPECT_EQ(0u, Agreed({1, 5, 0}, {1, 3, 1}));
    EXPECT_EQ(0u, Agreed({1, 5, 1}, {2, 5, 1})) << "another module";
}

TEST(Versions, AreThereWhileThePeerIs) {
    Modules modules;
    bool tell_now = true;
    modules.Add(1);
    modules.Register({1, 5, 1}, &tell_now);
    EXPECT_FALSE(tell_now);
    EXPECT_FALSE(modules.Negotiated(1));
    EXPECT_EQ(1u, modules.Begin().size());
    modules.PeerTold({{1, 4, 1}});
    EXPECT_EQ(4u, modules.Negotiated(1));
    modules.End();
    EXPECT_FALSE(modules.Negotiated(1));
    modules.Begin();
    EXPECT_FALSE(modules.Negotiated(1)) << "what the peer told before is gone";
}

TEST(Versions, ToldAgainHoldFromTheNextConnectionOn) {
    Modules modules;
    bool tell_now = false;
    modules.Add(1);
    modules.Register({1, 5, 1}, &tell_now);
    modules.Begin();
    modules.PeerTold({{1, 9, 1}});
    modules.Register({1, 7, 1}, &tell_now);
    EXPECT_FALSE(tell_now);
    EXPECT_EQ(5u, modules.Negotiated(1));
    EXPECT_TRUE(modules.TakeNew().empty());
    modules.End();
    EXPECT_EQ(7u, modules.Begin().at(0).version);
    modules.PeerTold({{1, 9, 1}});
    EXPECT_EQ(7u, modules.Negotiated(1));
}

TEST(Versions, ToldForTheFirstTimeOnAConnectionReachThePeerAtOnce) {
    Modules modules;
    bool tell_now = false;
    modules.Begin();
    modules.PeerTold({{1, 9, 1}});
    modules.Add(1);
    EXPECT_TRUE(modules.Register({1, 5, 1}, &tell_now));
    EXPECT_TRUE(tell_now);
    EXPECT_FALSE(modules.Negotiated(1)) << "not told yet";
    EXPECT_EQ(1u, modules.TakeNew().size());
    EXPECT_EQ(5u, modules.Negotiated(1));
}

TEST(Versions, OfAPeerWithoutEndAreBounded) {
    Modules modules;
    bool tell_now = false;
    modules.Add(5000);
    modules.Register({5000, 1, 1}, &tell_now);
    modules.Begin();
    for (uint32_t module = 0; module < 1000; ++module)
        modules.PeerTold({{module, 1, 1}});
    modules.PeerTold({{5000, 1, 1}});
    EXPECT_FALSE(modules.Negotiated(5000)) << "no room";
}

} // namespace
