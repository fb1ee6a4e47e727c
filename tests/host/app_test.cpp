#include <gtest/gtest.h>
#include <uvelhost/component.h>
#include <uvelhost/exec.h>
#include <uvelhost/task.h>

namespace {

SYS_APP_INFO_S g_info;
uint32_t g_starter;
uint32_t g_seen;

TEST(Application, IsPublishedOnceAndByOneRecord) {
    SYS_APP_INFO_S other{};
    EXPECT_EQ(1u, SYS_RegAppInfo(nullptr));
    EXPECT_EQ(0u, SYS_RegAppInfo(&g_info));
    EXPECT_EQ(0u, SYS_RegAppInfo(&g_info));
    EXPECT_EQ(1u, SYS_RegAppInfo(&other));
}

TEST(Application, IsStartedOnlyWhenItIsPublished) {
    EXPECT_EQ(1u, SYS_StartApp("app", [] {}));
    g_info.ulPriority = 85;
    EXPECT_EQ(0u, SYS_RegAppInfo(&g_info));
    EXPECT_EQ(1u, SYS_StartApp(nullptr, [] {}));
    EXPECT_EQ(1u, SYS_StartApp("app", nullptr));
    g_info.ulPriority = 256;
    EXPECT_EQ(1u, SYS_StartApp("app", [] {})) << "no such priority";
    EXPECT_EQ(0u, g_info.ulTaskId);
}

TEST(Application, KnowsItsTaskBeforeThatRuns) {
    g_starter = QAL_TaskGetSelf();
    EXPECT_EQ(0u, SYS_RegAppInfo(&g_info));
    EXPECT_EQ(0u, SYS_StartApp("app", [] {
                  g_seen = g_info.ulTaskId == QAL_TaskGetSelf() ? 1 : 2;
                  QAL_EventWrite(g_starter, 4);
              }));
    EXPECT_EQ(0u, QAL_EventRead(4, QAL_EVENT_ALL, 20000, nullptr));
    EXPECT_EQ(1u, g_seen);
}

TEST(Application, ATaskToTellIsNamedForTheWholeProcess) {
    EXPECT_EQ(UVELHOST_NONE, OXM_GetTaskFollowMe());
    EXPECT_EQ(1u, QAL_EventWrite(OXM_GetTaskFollowMe(), 1));
    OXM_SetTaskFollowMe(QAL_TaskGetSelf());
    EXPECT_EQ(QAL_TaskGetSelf(), OXM_GetTaskFollowMe());
}

} // namespace
