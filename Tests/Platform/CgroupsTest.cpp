#include "Device/Cgroups.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "TemporaryFolder.h"

namespace zel::host {
namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

CgroupLimits limitsIn(const Files& files) {
    const test::TemporaryFolder root;
    for (const auto& [path, text] : files) {
        std::filesystem::create_directories(std::filesystem::path(root / path).parent_path());
        root.write(path, text);
    }
    return readCgroupLimits(root.path());
}

TEST(Cgroups, StrictestLimitOnTheWayUpHolds) {
    constexpr std::uint64_t mebibyte = 1 << 20;
    const std::string groups = "proc/self/cgroup", top = "sys/fs/cgroup/";
    const struct {
        const char* what;
        Files files;
        std::optional<std::uint64_t> memoryBytes, processors;
    } cases[] = {
        {"no groups", {}, {}, {}},
        {"none is set",
         {{groups, "0::/a\n"}, {top + "a/memory.max", "max\n"}, {top + "a/cpu.max", "max 100000\n"}},
         {},
         {}},
        {"version 2, the own group's",
         {{groups, "0::/a/b\n"},
          {top + "a/b/memory.max", "1048576\n"},
          {top + "a/b/cpu.max", "150000 100000\n"},
          {top + "a/memory.max", "max\n"},
          {top + "a/cpu.max", "300000 100000\n"}},
         mebibyte,
         2},
        {"version 2, one above, seen from a container",
         {{groups, "0::/x/../y\n"}, {top + "memory.max", "2097152\n"}, {top + "cpu.max", "400000 100000\n"}},
         2 * mebibyte,
         4},
        {"version 1 in hierarchies of their own",
         {{groups, "5:cpu,cpuacct:/c\n4:memory:/a/b\n3:cpuset:/\n1:name=systemd:/a\n"},
          {top + "memory/a/b/memory.limit_in_bytes", "9223372036854771712\n"},
          {top + "memory/a/memory.limit_in_bytes", "3145728\n"},
          {top + "cpu/c/cpu.cfs_quota_us", "50000\n"},
          {top + "cpu/c/cpu.cfs_period_us", "100000\n"},
          {top + "cpu/cpu.cfs_quota_us", "-1\n"},
          {top + "cpu/cpu.cfs_period_us", "100000\n"}},
         3 * mebibyte,
         1},
        {"nonsense", {{groups, "0::/\n"}, {top + "memory.max", "12x\n"}, {top + "cpu.max", "100000 0\n"}}, {}, {}},
    };
    for (const auto& [what, files, memoryBytes, processors] : cases) {
        SCOPED_TRACE(what);
        const CgroupLimits limits = limitsIn(files);
        EXPECT_EQ(limits.memoryBytes, memoryBytes);
        EXPECT_EQ(limits.processors, processors);
    }
}

}  // namespace
}  // namespace zel::host
