// Failing bounds-checked functions below the configuration database: what was known stays.

#include "securec_faults.h"

#include <array>
#include <pthread.h>
#include <thread>
#include <uvelcommon_base/kivo_confdb.h>

namespace {

const DB_KV_S NAME{"sys_name", "edge-1", 6, DB_CHANGE_CHANGED};
const DB_KV_S OTHER_NAME{"sys_name", "edge-2", 6, DB_CHANGE_CHANGED};
const DB_KV_S MAC{"system_mac", "\x02\x01\x02\x03\x04\x05", 6, DB_CHANGE_CHANGED};
const DB_KV_S OTHER_MAC{"system_mac", "\x02\x09\x09\x09\x09\x09", 6, DB_CHANGE_CHANGED};
const DB_KV_S NUMBER{"system_mac_number", "\x10\0\0\0", 4, DB_CHANGE_CHANGED};

std::string HostName() {
    char text[16] = "~~~";
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, sizeof text));
    return text;
}

TEST(ConfdbFailingCopy, LeavesTheName) {
    KIVO_SysNameCallback(&NAME);
    kit::Op<memcpy_s>().FailsOn(1, 34);
    KIVO_SysNameCallback(&OTHER_NAME);
    EXPECT_EQ("edge-1", HostName());
    KIVO_SysNameCallback(&OTHER_NAME);
    EXPECT_EQ("edge-2", HostName());
}

TEST(ConfdbFailingCopy, LeavesTheMac) {
    kit::Op<MESH_EpollCreate>().Returns(-1);
    kit::Op<DEVM_DB_GetSysMac>().Returns(1);
    std::array<uint8_t, 6> mac{};
    EXPECT_EQ(0u, EAPADP_GetBridgeMac(mac.data()));
    KIVO_SysMacCallback(&MAC);
    kit::Op<memcpy_s>().FailsOn(1, 34);
    KIVO_SysMacCallback(&OTHER_MAC);
    EXPECT_EQ(0u, EAPADP_GetBridgeMac(mac.data()));
    EXPECT_EQ((std::array<uint8_t, 6>{2, 1, 2, 3, 4, 5}), mac);
}

TEST(ConfdbCopy, IsCheckedAgainstTheSizeOfItsDestination) {
    struct Row {
        void (*callback)(const DB_KV_S *);
        const DB_KV_S *notification;
        std::size_t size;
    };
    for (const Row &row : {Row{KIVO_SysNameCallback, &NAME, 256}, Row{KIVO_SysMacCallback, &MAC, 6},
                           Row{KIVO_SysMacCallback, &NUMBER, 4}}) {
        row.callback(row.notification);
        EXPECT_EQ(row.size, std::get<1>(kit::Op<memcpy_s>().Last()));
        EXPECT_EQ(row.notification->pValue, std::get<2>(kit::Op<memcpy_s>().Last()));
        EXPECT_EQ(row.notification->ulValueLength, std::get<3>(kit::Op<memcpy_s>().Last()));
    }
    EXPECT_EQ(3u, kit::Op<memcpy_s>().Calls());
    kit::Op<memcpy_s>().FailsOn(1, 34);
    KIVO_SysMacCallback(&NUMBER);
    EXPECT_EQ(4u, kit::Op<memcpy_s>().Calls());
}

TEST(ConfdbFailingCopy, OfTheHostNameStillTerminatesTheBuffer) {
    KIVO_SysNameCallback(&NAME);
    kit::Op<strncpy_s>().Returns(34);
    char text[] = "~~~~";
    EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, 4));
    EXPECT_STREQ("~~~", text);
}

TEST(ConfdbHostName, IsCopiedWithAtMost257Characters) {
    KIVO_SysNameCallback(&NAME);
    char text[600];
    struct Row {
        uint32_t size;
        std::size_t count;
    };
    for (const Row &row : {Row{1, 0}, Row{2, 1}, Row{257, 256}, Row{258, 257}, Row{259, 257}, Row{600, 257}}) {
        EXPECT_EQ(0u, KIVO_Adapt_Gethostname(text, row.size));
        EXPECT_EQ(row.size, std::get<1>(kit::Op<strncpy_s>().Last()));
        EXPECT_EQ(row.count, std::get<3>(kit::Op<strncpy_s>().Last()));
    }
}

TEST(ConfdbFailingClearing, OfTheTasksBufferDoesNotStopTheTask) {
    kit::Op<memset_s>().Returns(34);
    kit::Op<MESH_EpollWait>().Does(
        [](int32_t, MESH_EPOLL_EVENT_S *, uint32_t, int32_t) -> int32_t { pthread_exit(nullptr); });
    std::thread(uVEL_AdaptConnEpollTask).join();
    EXPECT_EQ(1u, kit::Op<memset_s>().Calls());
    EXPECT_EQ(1024u, std::get<1>(kit::Op<memset_s>().Last()));
    EXPECT_EQ(1u, kit::Op<MESH_EpollWait>().Calls());
}

} // namespace
