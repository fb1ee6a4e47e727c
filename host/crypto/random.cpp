#include <uvelhost/crypto.h>

#include <algorithm>
#include <climits>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include "crypto/report.h"

/* The private generator: its numbers are never seen outside the process unless a caller shows them. */
uint32_t CRYPT_random(uint8_t *pucBuffer, uint32_t ulLen) {
    if (pucBuffer == nullptr)
        return 1;
    while (ulLen > 0) {
        uint32_t part = std::min<uint32_t>(ulLen, INT_MAX);
        if (RAND_priv_bytes(pucBuffer, static_cast<int>(part)) != 1)
            return 1;
        pucBuffer += part;
        ulLen -= part;
    }
    return UVELHOST_OK;
}

uint32_t FIPSIsEnable(void) {
    return EVP_default_properties_is_fips_enabled(nullptr) == 1 ? 1 : 0;
}

void FIPS_SecTestContinuousRandomNumberError(const char *pszModule) {
    uvel::host::ReportText("continuous test of the random numbers failed for %.512s", pszModule);
}
