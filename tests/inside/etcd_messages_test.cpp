// What an etcd server's answers mean.

#include <gtest/gtest.h>

#include "../../host/confdb/base64.cpp"
#include "../../host/confdb/etcd_messages.cpp"

using namespace uvel::host::confdb;

namespace {

constexpr char HEADER[] = R"({"header":{"cluster_id":"1","revision":"7"},)";

std::string Page(const std::string &rest) {
    return HEADER + rest + "}";
}

TEST(ClusterPages, SayWhereTheNextOneBegins) {
    const auto page =
        etcd::ReadRange(Page(R"("more":true,"kvs":[{"key":"L3V2ZWwvdC9r","mod_revision":"3"}])"), "/uvel/");
    EXPECT_FALSE(page.is_last);
    EXPECT_EQ("/uvel/t/k", page.last_key);
    EXPECT_EQ(7u, page.revision);
    ASSERT_EQ(1u, page.items.size());
    EXPECT_EQ("t", page.items[0].name.table);
    EXPECT_EQ("k", page.items[0].name.key);
}

TEST(ClusterPages, ThatAreFollowedByOthersAndDoNotSayWhereTheseBeginAreRefused) {
    EXPECT_THROW(etcd::ReadRange(Page(R"("more":true,"kvs":[{"value":""}])"), "/uvel/"), StoreError);
    EXPECT_TRUE(etcd::ReadRange(Page(R"("more":false,"kvs":[{"value":""}])"), "/uvel/").is_last);
    EXPECT_TRUE(etcd::ReadRange(Page(R"("more":true,"kvs":[])"), "/uvel/").is_last);
}

} // namespace
