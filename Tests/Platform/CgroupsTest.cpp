#include "Device/Cgroups.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace zel::host {
namespace {

using Files = std::vector<std::string>;

/// @param groups  what the process belongs to.
/// @param files   path=text, below the hierarchies' folder.
CgroupLimits limitsIn(const std::string& groups, const Files& files) {
    const test::TemporaryFolder root;
    const auto write = [&](const std::string& path, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(root / path).parent_path());
        root.write(path, text + "\n");
    };
    if (!groups.empty()) write("proc/self/cgroup", groups);
    for (const std::string& file : files) {
        const std::size_t end = file.find('=');
        write("sys/fs/cgroup/" + file.substr(0, end), file.substr(end + 1));
    }
    return readCgroupLimits(root.path());
}

TEST(CgroupsTest, StrictestLimitOnTheWayUpHolds) {
    const struct {
        const char *what, *groups;
        Files files;
        std::optional<std::uint64_t> memoryBytes, processors;
    } cases[] = {
        {"no groups", "", {}, {}, {}},
        {"none is set", "0::/a", {"a/memory.max=max", "a/cpu.max=max 100000"}, {}, {}},
        {"nonsense", "0::/", {"memory.max=12x", "cpu.max=100000 0"}, {}, {}},
        {"version 2, the own group's",
         "0::/a/b",
         {"a/b/memory.max=1048576", "a/b/cpu.max=150000 100000", "a/memory.max=max", "a/cpu.max=300000 100000"},
         1 << 20,
         2},
        {"version 2, one above, seen from a container",
         "0::/x/../y",
         {"memory.max=2097152", "cpu.max=400000 100000"},
         2 << 20,
         4},
        {"version 1 in hierarchies of their own",
         "5:cpu,cpuacct:/c\n4:memory:/a/b\n3:cpuset:/\n1:name=systemd:/a",
         {"memory/a/b/memory.limit_in_bytes=9223372036854771712", "memory/a/memory.limit_in_bytes=3145728",
          "cpu/c/cpu.cfs_quota_us=50000", "cpu/c/cpu.cfs_period_us=100000", "cpu/cpu.cfs_quota_us=-1",
          "cpu/cpu.cfs_period_us=100000"},
         3 << 20,
         1},
    };
    for (const auto& [what, groups, files, memoryBytes, processors] : cases) {
        SCOPED_TRACE(what);
        const CgroupLimits limits = limitsIn(groups, files);
        EXPECT_EQ(limits.memoryBytes, memoryBytes);
        EXPECT_EQ(limits.processors, processors);
    }
}

}  // namespace
}  // namespace zel::host
