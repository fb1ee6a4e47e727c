/* Two endpoints that have met before, in the middle of their next connection: for tests of what one of them says then. */
#ifndef UVEL_TESTS_STANDBY_MEETING_H
#define UVEL_TESTS_STANDBY_MEETING_H

#include "cable.h"

#include <gtest/gtest.h>

namespace cable {

using uvel::host::standby::FRAME_HEAD;
using uvel::host::standby::FrameType;
using Bytes = std::vector<uint8_t>;
using Step = Endpoint::Step;

constexpr uint64_t NOW = 1'000'000;
constexpr uint32_t PRIORITY = 5;
constexpr uint32_t TERM = 1; /* of both: the pair has met, nobody has taken over since */

/* Numbers of the frames of a Meeting. */
constexpr uint64_t A_TOLD = 4;  /* last one of A's that B has acknowledged */
constexpr uint64_t A_BEGAN = 5; /* the mark with which A begins another batch */
constexpr uint64_t B_HEARD = 3; /* last one of B's that A has acknowledged and B knows of */
constexpr uint64_t B_TAKEN = 4; /* last one of B's that A has taken */
constexpr uint64_t B_SENT = 5;  /* last one of B's that was ever sent */

enum class Phase { AWAIT_HELLO, AWAIT_STREAM, RUNNING };

inline EndpointSettings Device(const std::string &name, const std::string &peer_name) {
    EndpointSettings settings = Settings(name, peer_name);
    settings.priority = PRIORITY;
    return settings;
}

/* A and B have met and lost each other. On their next connection A says everything up to `phase`; what B hears then is
 * the test's. */
class Meeting {
  public:
    explicit Meeting(Phase phase) {
        a.own = {{1, "of A"}};
        b.own = {{2, "of B"}};
        Settle(cable_, a, b, NOW);
        a.Say("before");
        cable_.Carry(NOW);
        b.Say("taken");
        (void)Hand(a, TakeOutput(b, NOW), NOW);
        b.Say("lost");
        (void)TakeOutput(b, NOW);
        cable_.Cut();

        a.endpoint.Connected(NOW);
        b.endpoint.Connected(NOW);
        hello = TakeOutput(a, NOW);
        if (phase == Phase::AWAIT_HELLO)
            return;
        (void)Hand(b, hello, NOW);
        (void)Hand(a, TakeOutput(b, NOW), NOW);
        stream = TakeOutput(a, NOW);
        stream.resize(FRAME_HEAD + 8); /* the acknowledgement behind it is lost */
        if (phase == Phase::AWAIT_STREAM)
            return;
        (void)Hand(b, stream, NOW);
        (void)TakeOutput(b, NOW);
        EXPECT_TRUE(a.endpoint.StartBatch());
        (void)Hand(b, TakeOutput(a, NOW), NOW);
        (void)TakeOutput(b, NOW);
    }
    Meeting(const Meeting &) = delete;
    Meeting &operator=(const Meeting &) = delete;

    /* The next connection, on which both come to the same tables, and each message arrives once. */
    void GoOn() {
        a.endpoint.Lost();
        b.endpoint.Lost();
        Settle(cable_, a, b, NOW);
        ASSERT_EQ(a.own, b.copy);
        ASSERT_EQ(b.own, a.copy);
        ASSERT_NE(a.endpoint.State().ulActive, b.endpoint.State().ulActive);
        const std::size_t by_a = b.said.size();
        const std::size_t by_b = a.said.size();
        a.Say("A goes on");
        b.Say("B goes on");
        cable_.Carry(NOW);
        ASSERT_EQ(by_a + 1, b.said.size());
        ASSERT_EQ(by_b + 1, a.said.size());
        ASSERT_EQ("A goes on", b.said.back());
        ASSERT_EQ("B goes on", a.said.back());
        ASSERT_EQ(0, a.broken + b.broken);
    }

    Side a{Device("a", "b"), NOW};
    Side b{Device("b", "a"), NOW};
    Bytes hello, stream; /* what A said on this connection */

  private:
    Cable cable_{a, b};
};

inline Bytes Frame(FrameType type, uint64_t number, const Bytes &body = {}) {
    Bytes frame;
    uvel::host::standby::AppendFrame(frame, {0, type, 0, 0, number}, body);
    return frame;
}

} // namespace cable

#endif
