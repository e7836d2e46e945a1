#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zel::host {

/// What the control groups of this process, a container's for instance, grant it. Nothing where they set no limit.
struct CgroupLimits {
    std::optional<std::uint64_t> memoryBytes;
    std::optional<std::uint64_t> processors;  ///< CPU time per time, rounded up
};

/// The strictest limits among this process's groups and those above them, of version 1 and 2.
/// @param root  the folder that holds proc/self/cgroup and sys/fs/cgroup.
CgroupLimits readCgroupLimits(const std::string& root = "");

}  // namespace zel::host
