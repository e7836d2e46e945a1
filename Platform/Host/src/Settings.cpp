#include "Settings.h"

#include <unistd.h>

#include <tbb/info.h>
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace zel::host {
namespace {

/// A variable's value, or nothing where it is unset or no number.
std::optional<std::uint64_t> numberFromEnvironment(const char* variable) {
    const char* const text = std::getenv(variable);
    if (text == nullptr) return std::nullopt;
    const char* const end = text + std::strlen(text);
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(text, end, number);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

}  // namespace

std::uint64_t machineBytes() {
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

int deviceCountSetting() {
    const auto count = numberFromEnvironment("ZEL_HOST_DEVICES").value_or(1);
    return static_cast<int>(std::min<std::uint64_t>(count, maxDevices));
}

std::uint64_t deviceBytesSetting() {
    constexpr std::uint64_t mebibyte = 1u << 20;
    const auto mebibytes = numberFromEnvironment("ZEL_HOST_DEVICE_MIB");
    if (!mebibytes) return machineBytes() / 4 * 3;
    return std::min(*mebibytes, std::uint64_t{1} << 40) * mebibyte;
}

int threadsSetting() {
    const auto all = static_cast<std::uint64_t>(tbb::info::default_concurrency());
    return static_cast<int>(std::clamp<std::uint64_t>(numberFromEnvironment("ZEL_HOST_THREADS").value_or(all), 1, all));
}

}  // namespace zel::host
