/* The name under which this module allocates and asserts. */
#ifndef KIVO_SRVCOMMON_SOURCE_H
#define KIVO_SRVCOMMON_SOURCE_H

static constexpr char SOURCE[] = "src/common/src/smi/kivo_srvcommon";

#endif
