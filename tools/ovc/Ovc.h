// ovc: reads, checks and writes Orvane configuration files, for support staff
// and for the build.
#pragma once

#include <string>
#include <vector>

namespace Ovc {

enum ExitStatus { ovcOk = 0, ovcBadFile = 1, ovcUsage = 2 };

// Runs one command ("dump FILE", "check FILE", "write FILE NAME=VALUE...")
// and returns its exit status; `out` and `err` receive what it prints.
int Run(const std::vector<std::string>& args, std::string& out,
        std::string& err);

}  // namespace Ovc
