// The lines that the connection to the configuration database and what comes over it leave.

#include <securec.h>

/* The clearing of the task's buffer fails in this file. */
static errno_t RefusedClearing(void *, size_t, int, size_t) {
    return 34;
}

#define memset_s RefusedClearing
#define KIVO_SysNameCallback ProbedSysNameCallback
#define KIVO_SysMacCallback ProbedSysMacCallback
#define KIVO_Adapt_Gethostname ProbedGethostname
#define EAPADP_GetBridgeMac ProbedGetBridgeMac
#define UVEL_DevGetSysMac ProbedDevGetSysMac
#define UVEL_GetSysMacAddr ProbedGetSysMacAddr
#define uVEL_Adapt_SubPubEvent ProbedSubPubEvent
#define UVEL_SubKvTable ProbedSubKvTable
#define uVEL_AdaptConnectEpoll ProbedConnectEpoll
#define uVEL_AdaptConnectEpollCtrl ProbedConnectEpollCtrl
#define uVEL_AdaptConnEpollTask ProbedConnEpollTask
#define NAC_Utils_PvtLog ProbedConfdbLog
#include "../../src/common_adp/src/kivo_pdtadapt/confdb_connection.cpp"
#include "../../src/common_adp/src/kivo_pdtadapt/confdb_values.cpp"

#include "probed_log.h"

#include <pthread.h>
#include <thread>

namespace {

DB_KV_S Notification(const char *key, uint32_t length) {
    static const char s_bytes[300] = {'n'};
    return {key, s_bytes, length, DB_CHANGE_CHANGED};
}

TEST(ConfdbLog, NamesTheValueThatWasNotTakenAndWhy) {
    const DB_KV_S name = Notification("sys_name", 257);
    KIVO_SysNameCallback(&name);
    EXPECT_EQ(Lines{"0 KIVO_SysNameCallback memcpy sys_name fail, ret:162 \n"}, TakeLines());
    const DB_KV_S mac = Notification("system_mac", 7);
    KIVO_SysMacCallback(&mac);
    EXPECT_EQ(Lines{"0 KIVO_SysMacCallback memcpy system_mac fail, ret:162 \n"}, TakeLines());
    const DB_KV_S number = Notification("system_mac_number", 5);
    KIVO_SysMacCallback(&number);
    EXPECT_EQ(Lines{"0 KIVO_SysMacCallback memcpy system_mac_number fail, ret:162 \n"}, TakeLines());
}

/* No query reads the number; in this file it can be seen. */
TEST(ConfdbLog, TheNumberOfAddressesIsKeptWhenALongerOneIsRefused) {
    const auto told = [](const std::vector<uint8_t> &value) {
        const DB_KV_S number{"system_mac_number", value.data(), static_cast<uint32_t>(value.size()), DB_CHANGE_CHANGED};
        KIVO_SysMacCallback(&number);
        return g_ulSysMacNumber;
    };
    EXPECT_EQ(16u, told({16, 0, 0, 0}));
    EXPECT_EQ(16u, told({1, 2, 3, 4, 5}));
    EXPECT_EQ(Lines{"0 KIVO_SysMacCallback memcpy system_mac_number fail, ret:162 \n"}, TakeLines());
    EXPECT_EQ(16u, told({}));
    EXPECT_EQ(0x04030201u, told({1, 2, 3, 4}));
    EXPECT_EQ(Lines{}, TakeLines());
}

TEST(ConfdbLog, TellsAValueThatIsMissing) {
    const DB_KV_S name{"sys_name", nullptr, 4, DB_CHANGE_CHANGED};
    KIVO_SysNameCallback(&name);
    EXPECT_EQ(Lines{"0 KIVO_SysNameCallback memcpy sys_name fail, ret:150 \n"}, TakeLines());
}

TEST(ConfdbLog, TellsANameThatCannotBeGiven) {
    const DB_KV_S name = Notification("sys_name", 1);
    KIVO_SysNameCallback(&name);
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(nullptr, 10));
    EXPECT_EQ(Lines{"0 KIVO_Adapt_Gethostname strncpy fail, ret:22 \n"}, TakeLines());
}

TEST(ConfdbLog, NamesTheResultOfASetThatRefusesAConnection) {
    kit::Op<MESH_EpollCtl>().Returns(4294967295);
    for (const uint32_t remove : {0u, 1u}) {
        EXPECT_EQ(4294967295u, uVEL_AdaptConnectEpollCtrl(7, 8, remove));
        EXPECT_EQ(Lines{"0 uVEL_AdaptConnectEpollCtrl MESH_EpollCtl fail, ret:4294967295 \n"}, TakeLines());
    }
}

TEST(ConfdbLog, TellsABufferThatCannotBeCleared) {
    kit::Op<MESH_EpollWait>().Does(
        [](int32_t, MESH_EPOLL_EVENT_S *, uint32_t, int32_t) -> int32_t { pthread_exit(nullptr); });
    std::thread(uVEL_AdaptConnEpollTask).join();
    EXPECT_EQ(Lines{"0 uVEL_AdaptConnEpollTask memset fail, ret:34 \n"}, TakeLines());
}

TEST(ConfdbLog, IsSilentOtherwise) {
    for (const DB_KV_S &kv : {Notification("sys_name", 256), Notification("sys_name", 0), Notification("other", 257)})
        KIVO_SysNameCallback(&kv);
    for (const DB_KV_S &kv : {Notification("system_mac", 6), Notification("system_mac_number", 4),
                              Notification("system_mac", 0), Notification("other", 7)})
        KIVO_SysMacCallback(&kv);
    char text[300];
    uint8_t mac[6];
    kit::Op<DEVM_DB_GetSysMac>().Returns(1);
    kit::Op<MESH_EpollCreate>().Returns(-1);
    kit::Op<MESH_EpollCtl>().Returns(0);
    EXPECT_EQ(0u, uVEL_AdaptConnectEpollCtrl(7, 8, 0));
    EXPECT_EQ(0u, uVEL_AdaptConnectEpollCtrl(7, 8, 1));
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, sizeof text));
    EXPECT_EQ(0u, EAPADP_GetBridgeMac(mac));
    EXPECT_EQ(Lines{}, TakeLines());
}

} // namespace
