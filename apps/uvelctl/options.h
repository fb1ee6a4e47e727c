/* What all commands of uvelctl share. */
#pragma once

#include <stdexcept>
#include <string>

namespace uvelctl {

struct Options {
    std::string run_directory = "/run/uveld";
    bool json = false; /* answers for machines */
};

/* A command that cannot do what it was asked for; the text goes to standard error and uvelctl ends with 1. */
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace uvelctl
