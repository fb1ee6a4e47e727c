/* The commands of uvelctl: each adds itself to the command line and runs as its callback. `options` outlives the app. */
#pragma once

#include <CLI/CLI.hpp>

#include "options.h"

namespace uvelctl {

void AddShow(CLI::App *app, const Options *options);
void AddWatch(CLI::App *app, const Options *options);
void AddCapset(CLI::App *app, const Options *options);
void AddConfdb(CLI::App *app, const Options *options);
void AddKeys(CLI::App *app, const Options *options);

} // namespace uvelctl
