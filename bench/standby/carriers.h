/* What carries messages from one process to another over loopback: the link, and what it is measured beside. */
#ifndef UVEL_BENCH_STANDBY_CARRIERS_H
#define UVEL_BENCH_STANDBY_CARRIERS_H

#include <cstdint>
#include <string>

namespace standby_bench {

extern std::string g_keys; /* folder with the certificates of the devices "a" and "b" */

/* Each forks the receiver, sends `count` messages of `size` bytes and returns the seconds until the receiver has told
 * that it has them all. */
double RunLink(uint64_t count, uint32_t size, uint32_t mtu = 0);
double RunZmq(uint64_t count, uint32_t size); /* PUSH to PULL, CURVE */

/* One thread on either side, nothing kept, writes of 256 KiB: TLS 1.3 by the library that the link uses, its cipher
 * alone (AES-128-GCM in records of 16 KiB), and neither. */
double RunTls(uint64_t count, uint32_t size);
double RunCipher(uint64_t count, uint32_t size);
double RunTcp(uint64_t count, uint32_t size);

/* A batch backup of so many records of 128 bytes to a fresh peer: the seconds from opening the link to equal digests and
 * the word that the peer has everything. */
double RunBatch(uint64_t records);

} // namespace standby_bench

#endif
