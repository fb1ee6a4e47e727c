// A configuration database in a SQLite file, and ways around its API.
#pragma once

#include "confdb_fixtures.h"

#include <fstream>
#include <sqlite3.h>

namespace confdb_test {

class SqliteTest : public testing::Test {
  protected:
    /* Runs SQL on the file as another program would: nobody is woken. */
    void RunSql(const std::string &file, const std::string &sql) {
        sqlite3 *database = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &database));
        sqlite3_busy_timeout(database, 10000);
        char *error = nullptr;
        sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &error);
        EXPECT_EQ(nullptr, error) << error;
        sqlite3_free(error);
        sqlite3_close(database);
    }

    int64_t AskNumber(const std::string &sql) {
        sqlite3 *database = nullptr;
        sqlite3_stmt *statement = nullptr;
        int64_t number = -1;
        EXPECT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &database));
        EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr));
        if (sqlite3_step(statement) == SQLITE_ROW)
            number = sqlite3_column_int64(statement, 0);
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return number;
    }

    static std::string Bytes(const std::string &file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    static void Write(const std::string &file, const std::string &bytes) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    }

    TempFolder folder;
    const std::string path = folder / "db";
    const std::string endpoint = "sqlite:" + path;
};

} // namespace confdb_test
