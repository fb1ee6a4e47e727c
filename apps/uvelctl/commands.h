/* The commands of uvelctl, as main.cpp reads them from the command line. All throw Failure. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "options.h"

namespace uvelctl {

/* show VIEW [ARGUMENT...], and watch with an interval and a number of looks */
struct Look {
    std::string view;
    std::vector<std::string> arguments;
    double seconds = 1.0;
    uint32_t count = 0; /* 0: until interrupted */
};

void Show(const Options &options, const Look &look);
void Watch(const Options &options, const Look &look);

/* Lists the items of a capability file; empty: the device's own. */
void ListCapabilities(const Options &options, const std::string &file);

struct DatabaseRequest {
    std::string endpoint = "shm:unix_emserver";
    std::string table, key, value;
    bool is_hex = false, is_u32 = false, is_file = false, is_raw = false;
    uint64_t most_events = 0;
    double most_seconds = 0;
};

/* A value; without a key a table, without a table everything. */
void GetFromDatabase(const Options &options, const DatabaseRequest &request);
void PutIntoDatabase(const Options &options, const DatabaseRequest &request);
void DeleteFromDatabase(const Options &options, const DatabaseRequest &request);
void WatchDatabase(const Options &options, const DatabaseRequest &request);

struct KeysRequest {
    std::string folder;
    std::string first;
    std::string second;
    uint32_t days = 3650;
};

void MakeKeys(const Options &options, const KeysRequest &request);

} // namespace uvelctl
