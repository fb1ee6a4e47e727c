/* From exceptions inside to codes and texts outside. */
#ifndef UVEL_HOST_CONFDB_LAST_ERROR_H
#define UVEL_HOST_CONFDB_LAST_ERROR_H

#include <cstdint>
#include <exception>
#include <uvelhost/confdb_writer.h>

namespace uvel::host::confdb {

/* Kept for db_last_error of this thread. */
void SetLastError(const char *text) noexcept;

/* Runs an operation and gives its code; DB_FAILED when it throws. */
template <typename Body>
uint32_t Guarded(Body body) noexcept {
    try {
        return body();
    } catch (const std::exception &error) {
        SetLastError(error.what());
        return DB_FAILED;
    }
}

} // namespace uvel::host::confdb

#endif
