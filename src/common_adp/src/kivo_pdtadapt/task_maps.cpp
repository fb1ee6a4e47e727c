/* Names of the host's tasks beside the virtual systems that they work for. */
#include <uvelcommon_base/kivo_vsys.h>

#include <cstddef>

static_assert(sizeof(KIVO_TASK_VSYS_S) == 36);
static_assert(offsetof(KIVO_TASK_VSYS_S, szTask) == 0);
static_assert(offsetof(KIVO_TASK_VSYS_S, ulVsysId) == 32);

/* Names of fewer than four characters stand as the host pads them, or does not. The order is part of the table. */
KIVO_TASK_VSYS_S g_stTaskVsysidMap[KIVO_TASK_VSYS_NUM] = {
    {"co0 ", 0},  {"VT0 ", 0}, {"VT1 ", 0}, {"VT2 ", 0},  {"VT3 ", 0},  {"VT4 ", 0},  {"VT5 ", 0},  {"VT6 ", 0},
    {"VT7 ", 0},  {"VT8 ", 0}, {"VT9 ", 0}, {"VT10 ", 0}, {"VT11 ", 0}, {"VT12 ", 0}, {"VT13 ", 0}, {"VT14 ", 0},
    {"VT15 ", 0}, {"IPSV", 0}, {"LDPC", 0}, {"SSHS", 0},  {"SCEP", 0},  {"HTTP", 0},  {"PKIM", 0},  {"CMP", 0},
    {"CMP0", 0},  {"CMP1", 0}, {"CMP2", 0}, {"CMP3", 0},  {"CMP4", 0},  {"CMP5", 0},  {"CMP6", 0},  {"CMP7", 0},
    {"CMP8", 0},  {"CMP9", 0}, {"CEP0", 0}, {"CEP1", 0},  {"CEP2", 0},  {"CEP3", 0},  {"CEP4", 0},  {"CEP5", 0},
    {"CEP6", 0},  {"CEP7", 0}, {"CEP8", 0}, {"CEP9", 0},  {"CFM ", 0},  {"FW", 0},    {"FTPS", 0},  {"SNMP", 0},
    {"DHCP", 0},  {"NTPD", 0}, {"ARPD", 0}, {"WC0 ", 0},  {"NLOG", 0},  {"SYSL", 0},  {"DNS", 0},   {"LDAP", 0},
    {"MAIL", 0},  {"TICK", 0},
};

KIVO_TASK_VSYS_S g_stDynTaskVsysidMap[KIVO_DYN_TASK_VSYS_NUM];
