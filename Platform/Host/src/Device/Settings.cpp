#include "Device/Settings.h"

#include <unistd.h>

#include <tbb/info.h>
#include <algorithm>
#include <cstdlib>
#include <optional>

#include "Device/Cgroups.h"
#include "Device/WholeNumber.h"

namespace zel::host {
namespace {

/// A variable's value, or nothing where it is unset or no number.
std::optional<std::uint64_t> numberFromEnvironment(const char* variable) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? std::nullopt : wholeNumber(text);
}

}  // namespace

std::uint64_t usableBytes() {
    const auto machine =
        static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return std::min(machine, readCgroupLimits().memoryBytes.value_or(machine));
}

int deviceCountSetting() {
    const auto count = numberFromEnvironment("ZEL_HOST_DEVICES").value_or(1);
    return static_cast<int>(std::min<std::uint64_t>(count, maxDevices));
}

std::uint64_t deviceBytesSetting() {
    constexpr std::uint64_t mebibyte = 1u << 20;
    const auto mebibytes = numberFromEnvironment("ZEL_HOST_DEVICE_MIB");
    if (!mebibytes) return usableBytes() / 4 * 3;
    return std::min(*mebibytes, std::uint64_t{1} << 40) * mebibyte;
}

int threadsSetting() {
    const auto all = static_cast<std::uint64_t>(tbb::info::default_concurrency());
    const std::uint64_t granted = readCgroupLimits().processors.value_or(all);
    const std::uint64_t asked = numberFromEnvironment("ZEL_HOST_THREADS").value_or(granted);
    return static_cast<int>(std::clamp<std::uint64_t>(asked, 1, all));
}

std::uint64_t threadSeedSetting() {
    return numberFromEnvironment("ZEL_HOST_THREAD_SEED").value_or(1);
}

}  // namespace zel::host
