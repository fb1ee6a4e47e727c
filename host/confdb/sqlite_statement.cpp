#include "confdb/sqlite_statement.h"

namespace uvel::host::confdb {

void ThrowSqliteError(sqlite3 *database) {
    const int code = sqlite3_errcode(database) & 0xFF;
    const char *file = sqlite3_db_filename(database, "main");
    const std::string text = std::string(file == nullptr ? "" : file) + ": " + sqlite3_errmsg(database);
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
        throw StoreBusy(text);
    throw StoreError(text);
}

void Execute(sqlite3 *database, const char *sql) {
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        ThrowSqliteError(database);
}

Statement::Statement(sqlite3 *database, const char *sql) {
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
        ThrowSqliteError(database);
    statement_.reset(statement);
}

void Query::Check(int result) const {
    if (result != SQLITE_OK)
        ThrowSqliteError(sqlite3_db_handle(statement_));
}

Query &Query::Text(int place, std::string_view text) {
    Check(sqlite3_bind_text64(statement_, place, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Query &Query::Blob(int place, std::string_view bytes) {
    /* A null pointer would bind NULL, which is not an empty value. */
    Check(bytes.empty() ? sqlite3_bind_zeroblob(statement_, place, 0)
                        : sqlite3_bind_blob64(statement_, place, bytes.data(), bytes.size(), SQLITE_STATIC));
    return *this;
}

Query &Query::Number(int place, uint64_t number) {
    Check(sqlite3_bind_int64(statement_, place, static_cast<sqlite3_int64>(number)));
    return *this;
}

bool Query::Next() {
    switch (sqlite3_step(statement_)) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        ThrowSqliteError(sqlite3_db_handle(statement_));
    }
}

uint64_t Query::NumberAt(int column) const {
    return static_cast<uint64_t>(sqlite3_column_int64(statement_, column));
}

std::string Query::BytesAt(int column) const {
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return bytes == nullptr ? std::string() : std::string(bytes, static_cast<std::size_t>(size));
}

bool Query::IsNullAt(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

} // namespace uvel::host::confdb
