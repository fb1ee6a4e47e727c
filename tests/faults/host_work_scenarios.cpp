// Work that takes memory, clocks, ciphers and the like from the host.

#include "host_scenarios.h"

#include <ctime>
#include <pthread.h>
#include <thread>
#include <uvelcommon_base/kivo_array.h>
#include <uvelcommon_base/kivo_capset.h>
#include <uvelcommon_base/kivo_chi_reassembly.h>
#include <uvelcommon_base/kivo_confdb.h>
#include <uvelcommon_base/kivo_hex.h>
#include <uvelcommon_base/kivo_hook_interface.h>
#include <uvelcommon_base/kivo_hook_standby.h>
#include <uvelcommon_base/kivo_host_helpers.h>
#include <uvelcommon_base/kivo_ip.h>
#include <uvelcommon_base/kivo_link_table.h>
#include <uvelcommon_base/kivo_mem.h>
#include <uvelcommon_base/kivo_ordered_table.h>
#include <uvelcommon_base/kivo_password.h>
#include <uvelcommon_base/kivo_process_query.h>
#include <uvelcommon_base/kivo_random.h>
#include <uvelcommon_base/kivo_startup.h>
#include <uvelcommon_base/kivo_string.h>
#include <uvelcommon_base/kivo_time.h>
#include <uvelcommon_base/nac_yang_xml.h>

/* The pause of a task that may not wait ends the task. */
extern "C" __attribute__((visibility("default"))) unsigned int sleep(unsigned int) {
    pthread_exit(nullptr);
}

static bool g_clockStopped = false;

/* The calendar clock of the C library, which the library asks as well, stands with the clocks of the host. */
extern "C" __attribute__((visibility("default"))) time_t time(time_t *result) noexcept {
    timespec now = {1709801100, 0};
    if (!g_clockStopped)
        clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr)
        *result = now.tv_sec;
    return now.tv_sec;
}

namespace host_scenarios {

namespace {

void Nothing() {}

/* ---- memory and what stands on it ---- */

void UseMemory(Transcript &log) {
    for (const uint32_t size : {1u, 100u}) {
        void *block = log.Ask(KIVO_MemAlloc, 7, size);
        void *larger = log.Ask(KIVO_MemReAlloc, block, 2 * size);
        log.Ask(KIVO_MemFree, larger != nullptr ? larger : block);
        const char *const file = "here";
        block = log.Ask(KIVO_MemAlloc_F, 7, size, file, 1);
        log.Ask(KIVO_MemFree_F, block, file, 2);
    }
}

int32_t CompareNumbers(const void *item, const void *key) {
    const uint32_t a = *static_cast<const uint32_t *>(item), b = *static_cast<const uint32_t *>(key);
    return a == b ? 0 : a > b ? 1 : -1;
}

void UseOrderedTable(Transcript &log) {
    SRVOT_TBL_S *table = log.Ask(SRVOT_CreateNew, 7, 4, 16, CompareNumbers);
    if (table == nullptr)
        return;
    for (const uint32_t &number : {20u, 10u, 30u})
        log.Ask(SRVOT_AddElmt, table, &number, &number);
    const uint32_t gone = 10;
    log.Ask(SRVOT_RemoveElmtByKey, table, &gone);
    for (const void *p = SRVOT_GetFirstElmt(table); p != nullptr; p = SRVOT_GetNextElmt(table))
        log.Say(std::to_string(*static_cast<const uint32_t *>(p)));
    log.Ask(SRVOT_DeleteOTbl, &table);
}

void UseLinkTable(Transcript &log) {
    static uint32_t numbers[] = {20, 10, 30};
    SRVSTL_TBL_S *table = log.Ask(SRVSTL_CreateNew, 7, 16, CompareNumbers);
    if (table == nullptr)
        return;
    for (uint32_t &number : numbers)
        log.Ask(SRVSTL_SetLink, table, &number, &number);
    log.Ask(SRVSTL_RemoveLink, table, &numbers[1]);
    for (const void *p = SRVSTL_GetFirstLink(table); p != nullptr; p = SRVSTL_GetNextLink(table))
        log.Say(std::to_string(*static_cast<const uint32_t *>(p)));
    log.Ask(SRVSTL_DeleteSTbl, &table, nullptr);
}

/* ---- the channel ---- */

void UseBuffers(Transcript &log) {
    KIVO_VirtualToHook();
    for (const uint32_t back : {0u, 1u, 2u}) {
        void *buffer = nullptr;
        if (log.Ask(CBUF_Alloc, back, &buffer, 10) != 0)
            continue;
        CHI_MSG_INFO_S info{};
        log.Ask(CHI_SetMsgInfo, back, buffer, &info);
        log.Ask(CHI_GetMsgInfo, back, buffer, &info);
        log.Say(std::to_string(info.ulMsgType));
        CBUF_Free(back, buffer);
    }
    log.Ask(KIVO_YSB_IsActiveStatus, log.Out());
    log.Ask(KIVO_YSB_IsRealEnable, 0, 0, 0, 0, 0, 0, 0, 0);
    const uint32_t module = log.Ask(KIVO_Ysb_MOID_Get, 7, 0, 0, 0, 0, 0, 0, 0);
    log.Ask(KIVO_Ysb_LocalVersion_Register, module, 1, 0, 0, 0, 0, 0, 0);
    uint32_t version = 0;
    log.Ask(KIVO_Ysb_Nego_Version_Get, module, reinterpret_cast<uintptr_t>(&version), 0, 0, 0, 0, 0, 0);
}

void SendPackets(Transcript &log) {
    KIVO_VirtualToHook();
    for (const uint8_t channel : {uint8_t{0}, uint8_t{0xFF}}) {
        void *buffer = nullptr;
        if (log.Ask(CBUF_Alloc, 2, &buffer, 4) == 0)
            log.Ask(CHI_YSB_OutputPacket, 7, reinterpret_cast<uintptr_t>(buffer), channel, 52);
    }
}

void KeepPartialMessages(Transcript &log) {
    CHI_RSM_CTL_S control{};
    if (log.Ask(CHI_InitMsgRsmCtl, &control, nullptr, 7) != 0)
        return;
    for (const uint32_t key : {1u, 2u, 1u, 129u}) {
        CHI_RSM_MSG_S record{};
        record.ulKey = key;
        CHI_RSM_MSG_S *node = log.Ask(CHI_AddMsgRsmHash, 2, &control, &record);
        if (node == nullptr)
            continue;
        DLL_Insert(&control.stList, control.stList.pstPrev, &node->stLink);
        log.Ask(CHI_FindRsmHashNode, &control, &record);
    }
    log.Say(std::to_string(control.stList.ulCount));
    DLL_NODE_S *const head = reinterpret_cast<DLL_NODE_S *>(&control.stList);
    while (control.stList.pstNext != head)
        CHI_DestroyMsgForRsm(2, &control, reinterpret_cast<CHI_RSM_MSG_S *>(control.stList.pstNext));
    LITE_HASH_Destroy(control.pstHash);
}

/* ---- clocks and texts ---- */

void StopClocks() {
    static kit::VirtualClock clock;
    g_clockStopped = true;
    clock.SetBoot(1000, 5);
    clock.SetCalendar({2024, 3, 7}, {9, 5, 0, 0}, 7);
    kit::Op<QAL_SystimeGet>().Does([](QAL_SYSTIME_S *time) {
        *time = {2024, 3, 7, 9, 5, 0, 4, 7};
        return 0U;
    });
}

void ReadClocks(Transcript &log) {
    for (const auto query : {SRV_TmBootInSec, SRV_TmNowInSec, SRV_GmTmNowInSec, SRV_TMNowBootDiff, SRV_GMTMNowBootDiff})
        log.Ask(query);
    for (const auto query : {SRV_TmRelative2Absolute, SRV_TmAbsolute2Relative, SRV_GmTmRelative2Absolute,
                             SRV_GmTmAbsolute2Relative, SRV_GmTmAbsolute2Relative4Show})
        log.Ask(query, 1709800000);
    log.Ask(SRV_TmRelative2Absolute4Show, 60, 500);
    log.Ask(SRV_GmTmRelative2Absolute4Show, 60, 500);
    log.Ask(SRV_TmBuildTimeStampStr, 1709800000, log.Out(), 64);
    log.Ask(KIVO_GetSecSince1970, log.Out());
}

void ReadTexts(Transcript &log) {
    const char *const address = "10.1.2.3", *const digits = "0A-0b";
    log.Ask(SRV_StrToIpAddr, address, log.Out());
    log.Ask(KIVO_InetAddr, address);
    log.Ask(KIVO_INET_Cksum, address, 8);
    log.Ask(KIVO_IP_NetmaskIsContinue, 0xFFFF0000);
    log.Ask(SRVHEX_FilterBlank, digits, log.Out());
    log.Ask(SRVHEX_TransStringToData, digits, log.Out());
    log.Ask(SRVHEX_CalcXdigitNum, digits);
    log.Ask(KIVO_MemCmp, address, digits, 4, log.Out());
    char text[] = "Word";
    log.Ask(SRV_StringToLower, text);
    log.Say(text);
}

void ReadXml(Transcript &log) {
    const NAC_YANG_REQUEST_S request = {"<a><b><n>17</n><ip>10.1.2.3</ip></b></a>"};
    struct _xmlNode *root = NAC_YANG_XmlNewRoot(&request, "b");
    const char *const number = "n", *const address = "ip";
    log.Ask(NAC_YANG_XmlGetU32, root, number, log.Out());
    log.Ask(NAC_YANG_XmlGetIpv4, root, address, log.Out());
    NAC_YANG_XmlDelRoot(root);
}

/* ---- passwords, random numbers, capabilities ---- */

void PlayCipher() {
    kit::Op<PSSP_CryptIsCipher>().Does([](const char *text) { return *text == 'C' ? PSSP_FORMAT_OLD_A : 0U; });
    kit::Op<PSSP_DecryptSec>().Does([](const char *, uint32_t, char *clear, uint32_t, uint32_t, const uint8_t *) {
        std::strcpy(clear, "opened");
        return 0U;
    });
    kit::Op<PSSP_EncryptSec>().Does(
        [](const char *, uint32_t, char *cipher, uint32_t, uint32_t, const uint8_t *, uint8_t *) {
            std::strcpy(cipher, "Csealed");
            return 0U;
        });
}

void ConvertPasswords(Transcript &log) {
    for (const char *input : {"clear", "Cipher"}) {
        char clear[64] = "", cipher[128] = "";
        SRV_CRYPT_PASSWORD_S record{};
        record.pszInput = input;
        record.ulInputLen = static_cast<uint32_t>(std::strlen(input));
        record.pszClear = clear;
        record.ulClearSize = sizeof clear;
        record.pszCipher = cipher;
        record.ulCipherSize = sizeof cipher;
        record.ulMaxClearLen = 16;
        log.Ask(SRV_CRYPT_GetClearAndCipherPassword, &record);
        log.Say(std::string(clear) + "/" + cipher);
        uint8_t block[SRV_CRYPT_BLOCK_SIZE] = {};
        log.Ask(SRV_CRYPT_GetClearPassword, input, log.Out(), 64, 0, block);
    }
}

void PlayGenerator() {
    kit::Op<FIPSIsEnable>().Returns(1);
    kit::Op<CRYPT_random>().Does([](uint8_t *bytes, uint32_t length) {
        std::memset(bytes, 7, length);
        return 0U;
    });
}

/* A failure is reported to a host in FIPS mode. */
void PlayBrokenGenerator() {
    kit::Op<FIPSIsEnable>().Returns(1);
    kit::Op<CRYPT_random>().Returns(1);
}

void DrawNumbers(Transcript &log) {
    const char *const module = "module";
    log.Ask(KIVO_GenerateRand, module);
    log.Ask(KIVO_CRYPT_random, log.Out(), 8, module);
}

void PlayCapabilities() {
    kit::Op<capset_init>().Returns(0);
    kit::Op<capset_destroy>().Returns(0);
    kit::Op<capset_query_with_itemname>().Does([](const char *, void *value, uint32_t *size) {
        const uint32_t one = 1;
        std::memcpy(value, &one, sizeof one);
        *size = sizeof one;
        return 0U;
    });
}

void AskCapabilities(Transcript &log) {
    log.Ask(UVEL_CapSetInit);
    const char *const item = "SRV_SPEC_MAX_USER";
    log.Ask(UVEL_GetSpecsByDescr, item, log.Out());
    log.Ask(UVEL_IsSupportWlan);
    log.Ask(UVEL_IsSupportPortal);
    log.Ask(UVEL_CapSetDestroy);
}

/* ---- the process and its surroundings ---- */

void PlaySurroundings() {
    kit::Op<CMNGA_QueryNodeId>().Does([](uint32_t, uint32_t, uint32_t, uint32_t *node, uint32_t *count) {
        *node = 31;
        *count = 1;
        return 0U;
    });
    kit::Op<CMNGA_QueryCompProcByMid>().Does([](uint32_t, uint32_t *process) {
        *process = 99;
        return 0U;
    });
    kit::Op<CFG_GetVsysID>().Returns(3);
    kit::Op<BDS_l3vpnName2VrfIdQueryByName>().Does([](const char *, uint32_t *index) {
        *index = 42;
        return 0U;
    });
    kit::Op<SPU_CpuHelp>().Returns(0);
    kit::Op<SPU_CpuCheck>().Returns(0);
}

void AskSurroundings(Transcript &log) {
    log.Ask(KIVO_Adapt_IPC_GetMainNodeID);
    log.Ask(KIVO_Adapt_IPC_GetNodeID, 1, 2, 3, log.Out(), log.Out());
    log.Ask(KIVO_Adapt_GetProcessIdByMid, 1, log.Out());
    log.Ask(KIVO_Adapt_GetInstanceNameMaxLen, log.Out());
    log.Ask(KIVO_Adapt_CFG_GetVsysID);
    const char *const name = "blue";
    log.Ask(KIVO_Adapt_GetVsysIDByIfFullName, name);
    log.Ask(KIVO_Adapt_SupportOnlyLsw);
    static const CLI_TEXT_S TEXTS[] = {{"help", "帮助"}};
    log.Ask(KIVO_Adapt_RegistChineseCLI, 7, TEXTS, 1);
    log.Ask(KIVO_Adapt_SpuCpuHelp, log.Out(), 64);
    const char *const cpu = "1/0";
    log.Ask(KIVO_Adapt_SpuCpuCheck, cpu, log.Out(), log.Out());
}

/* Without a hook the packet is destroyed. */
void SendPacketOn(Transcript &log) {
    auto *packet = static_cast<MBUF_S *>(kit::Op<QAL_MemAlloc>().Real(0, g_ucSysMemPtNo, sizeof(MBUF_S)));
    *packet = {};
    log.Ask(KIVO_IF_QosL2BNGTransmit, packet, 0, 0, 0, 0, 0, 0, 0);
}

/* ---- the configuration database ---- */

void PlayDatabase() {
    kit::Op<MESH_EpollCreate>().Returns(77);
    kit::Op<MESH_EpollCtl>().Returns(0);
    kit::Op<db_create_sub_connect>().Does([](const DB_CONN_DESC_S *, DB_CONNECT_CB connect, DB_CONN_S **connection) {
        connect(12, 0);
        connect(12, 1);
        *connection = reinterpret_cast<DB_CONN_S *>(0x5000);
        return 0U;
    });
    kit::Op<db_sub_kv_with_conn>().Returns(0);
    kit::Op<db_handle_event>().Returns(0);
    kit::Op<QAL_CreateTask>().Returns(0);
    kit::Op<DEVM_DB_GetSysMac>().Does([](uint8_t mac[6]) {
        std::memset(mac, 9, 6);
        return 0U;
    });
    kit::Op<DEV_GetSystemName>().Does([](char *name, uint32_t) {
        std::strcpy(name, "device");
        return 0U;
    });
}

/* The host is asked for the address once, whatever it answers: after a failure the database has to bring it. */
void ReadSystemValues(Transcript &log) {
    uint8_t mac[6];
    EXPECT_EQ(0u, UVEL_GetSysMacAddr(mac));
    const DB_KV_S delivered{"system_mac", "\x02\x01\x02\x03\x04\x05", 6, DB_CHANGE_CHANGED};
    KIVO_SysMacCallback(&delivered);
    log.Ask(UVEL_GetSysMacAddr, log.Out());
    log.Ask(KIVO_Adapt_Gethostname, log.Out(), 64);
}

void PlayDatabaseThatIsAway() {
    PlayDatabase();
    kit::Op<db_create_sub_connect>().Returns(1);
}

/* One batch on the connection's task; the wait behind it ends the thread, as does the pause after a failed wait. */
void HandleConnection(Transcript &log) {
    uint32_t pauses = 0;
    kit::Op<QAL_TaskRunDelay>().Does([&pauses](uint32_t, uint32_t) {
        if (++pauses == 2)
            pthread_exit(nullptr);
    });
    kit::Op<MESH_EpollWait>().Does([](int32_t, MESH_EPOLL_EVENT_S *events, uint32_t, int32_t) {
        events[0].ulFd = 31;
        return 1;
    });
    std::thread(uVEL_AdaptConnEpollTask).join();
    kit::Op<QAL_TaskRunDelay>().Does(nullptr);
    log.Say(std::to_string(pauses));
}

} // namespace

std::vector<Scenario> WorkScenarios() {
    return {{"Memory", Life::ONCE, Nothing, UseMemory}, /* its account is opened once */
            {"OrderedTable", Life::SHARED, Nothing, UseOrderedTable},
            {"LinkTable", Life::SHARED, Nothing, UseLinkTable},
            {"ChannelBuffers", Life::SHARED, Nothing, UseBuffers},
            {"ChannelOutput", Life::SHARED, Nothing, SendPackets},
            {"PartialMessages", Life::SHARED, Nothing, KeepPartialMessages},
            {"Clocks", Life::SHARED, StopClocks, ReadClocks},
            {"Texts", Life::SHARED, Nothing, ReadTexts},
            {"Xml", Life::SHARED, Nothing, ReadXml},
            {"Passwords", Life::SHARED, PlayCipher, ConvertPasswords},
            {"RandomNumbers", Life::SHARED, PlayGenerator, DrawNumbers},
            {"RandomNumbersThatCannotBeTrusted", Life::SHARED, PlayBrokenGenerator, DrawNumbers},
            {"Capabilities", Life::SHARED, PlayCapabilities, AskCapabilities},
            {"Surroundings", Life::SHARED, PlaySurroundings, AskSurroundings},
            {"Packet", Life::SHARED, Nothing, SendPacketOn},
            {"SystemValues", Life::ONCE, PlayDatabase, ReadSystemValues}, /* the connection is opened once */
            {"SystemValuesWithoutDatabase", Life::ONCE, PlayDatabaseThatIsAway, ReadSystemValues},
            {"DatabaseTask", Life::SHARED, PlayDatabase, HandleConnection}};
}

} // namespace host_scenarios
