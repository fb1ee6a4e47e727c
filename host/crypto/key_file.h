/* The device's password key: 32 random bytes in a file that only its owner may read.
 *
 * The environment variable UVELHOST_KEY_FILE names the file, otherwise it is /var/lib/uvelhost/password.key. It is read
 * for each use, so that no copy of the key stays in memory and a file that was replaced or opened to others is noticed.
 * What is wrong with it is told on standard error. */
#ifndef UVEL_HOST_CRYPTO_KEY_FILE_H
#define UVEL_HOST_CRYPTO_KEY_FILE_H

#include "crypto/secret.h"

namespace uvel::host {

constexpr std::size_t DEVICE_KEY_SIZE = 32;
using DeviceKey = SecretArray<DEVICE_KEY_SIZE>;

/* False without a file, and for one that is not a regular file, belongs to somebody else, is open to others or has
 * another size. */
bool ReadDeviceKey(DeviceKey &key);

/* As above, but makes the file, with its folder when only that is missing, if there is none. Of several processes that
 * do so at the same moment one makes it and all use that one's. */
bool ReadOrMakeDeviceKey(DeviceKey &key);

} // namespace uvel::host

#endif
