#include <cstring>
#include <gtest/gtest.h>
#include <netlink/messages.h>
#include <vector>

using uvel::host::netlink::Messages;

namespace {

/* The types of the messages that a datagram of heads with these lengths is walked for; `size` bytes of it are there. */
std::vector<uint16_t> TypesIn(const std::vector<uint32_t> &lengths, std::size_t size) {
    std::vector<nlmsghdr> heads(lengths.size());
    for (std::size_t i = 0; i < lengths.size(); ++i)
        heads[i] = {lengths[i], static_cast<uint16_t>(i + 1), 0, 0, 0};
    std::vector<uint16_t> types;
    for (const nlmsghdr *message : Messages(std::as_bytes(std::span(heads)).first(size)))
        types.push_back(message->nlmsg_type);
    return types;
}

using Types = std::vector<uint16_t>;

TEST(NetlinkMessages, StandBehindEachOther) {
    EXPECT_EQ((Types{1, 2, 3}), TypesIn({16, 16, 16}, 48));
    EXPECT_EQ((Types{1, 3}), TypesIn({32, 16, 16}, 48));
    EXPECT_EQ(Types{}, TypesIn({}, 0));
}

TEST(NetlinkMessages, BeginWhereWordsBegin) {
    EXPECT_EQ((Types{1, 3}), TypesIn({29, 16, 16}, 48));
}

TEST(NetlinkMessages, EndWithTheirDatagram) {
    EXPECT_EQ((Types{1}), TypesIn({16, 16}, 31)) << "half a head";
    EXPECT_EQ((Types{1}), TypesIn({16, 17}, 32)) << "one byte more than there is";
    EXPECT_EQ((Types{1, 2}), TypesIn({16, 31, 16}, 47)) << "the padding of the last one is not there";
}

TEST(NetlinkMessages, EndWithALengthThatNoMessageHas) {
    for (const uint32_t length : {0u, 15u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFF34u, 0xFFFFFFFFu})
        EXPECT_EQ((Types{1}), TypesIn({16, length, 16}, 48)) << length;
}

} // namespace
