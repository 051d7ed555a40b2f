// What an install and a removal leave on a machine: snapshots of the
// registry (HKEY_LOCAL_MACHINE with both views, HKEY_CURRENT_USER; the
// classes root lives in both), each hive saved whole in one call, and of
// drive C, and their differences.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace Residue {

// Item ("REG HKLM\...", "REG HKLM\...|value", "FILE C:\...") -> its data.
using Snapshot = std::map<std::string, std::string>;

Snapshot Take();

// Prints every difference ("+ added", "- removed", "~ changed") and gives
// back those that are not on the list of what the product leaves on
// purpose, or of what Wine itself changes as programs run.
std::vector<std::string> Unexpected(const Snapshot& before,
                                    const Snapshot& after);

}  // namespace Residue
