#include "Device/Cgroups.h"

#include <fstream>

#include "Device/WholeNumber.h"

namespace zel::host {
namespace {

using Limit = std::optional<std::uint64_t>;

void narrow(Limit& limit, Limit other) {
    if (other && (!limit || *other < *limit)) limit = other;
}

/// The next word of a file, if it is a number: what sets no limit is called "max" or -1, or is not there at all.
Limit nextNumber(std::istream& file) {
    std::string word;
    return file >> word ? wholeNumber(word) : std::nullopt;
}

Limit numberIn(const std::string& path) {
    std::ifstream file(path);
    return nextNumber(file);
}

Limit processors(Limit quota, Limit period) {
    if (!quota || !period || *period == 0) return std::nullopt;
    return *quota / *period + (*quota % *period != 0 ? 1 : 0);
}

void readUnified(const std::string& group, CgroupLimits& limits) {
    narrow(limits.memoryBytes, numberIn(group + "/memory.max"));
    std::ifstream cpu(group + "/cpu.max");
    const Limit quota = nextNumber(cpu);
    narrow(limits.processors, processors(quota, nextNumber(cpu)));
}

void readMemory(const std::string& group, CgroupLimits& limits) {
    narrow(limits.memoryBytes, numberIn(group + "/memory.limit_in_bytes"));
}

void readCpu(const std::string& group, CgroupLimits& limits) {
    narrow(limits.processors,
           processors(numberIn(group + "/cpu.cfs_quota_us"), numberIn(group + "/cpu.cfs_period_us")));
}

/// Reads the group and all above it. In a container the outer ones are often not to be seen.
void readUpwards(const std::string& hierarchy, std::string group, CgroupLimits& limits,
                 void (*read)(const std::string&, CgroupLimits&)) {
    for (;; group.resize(group.rfind('/'))) {
        read(hierarchy + group, limits);
        if (group.find('/') == std::string::npos) return;
    }
}

}  // namespace

CgroupLimits readCgroupLimits(const std::string& root) {
    const std::string hierarchies = root + "/sys/fs/cgroup";
    CgroupLimits limits;
    std::ifstream groups(root + "/proc/self/cgroup");
    for (std::string number, controllers, group;
         std::getline(groups, number, ':') && std::getline(groups, controllers, ':') && std::getline(groups, group);) {
        const auto controls = [list = ',' + controllers + ','](const char* name) {
            return list.find(name) != std::string::npos;
        };
        if (controllers.empty()) readUpwards(hierarchies, group, limits, readUnified);
        if (controls(",memory,")) readUpwards(hierarchies + "/memory", group, limits, readMemory);
        if (controls(",cpu,")) readUpwards(hierarchies + "/cpu", group, limits, readCpu);
    }
    return limits;
}

}  // namespace zel::host
