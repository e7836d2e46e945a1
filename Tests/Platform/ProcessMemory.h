#pragma once

#include <cstdint>
#include <fstream>

namespace zel::test {

/// What this process has of memory.
struct ProcessMemory {
    std::int64_t addressSpaceBytes = 0;
    std::int64_t residentBytes = 0;

    ProcessMemory() {
        constexpr std::int64_t pageBytes = 4096;
        std::ifstream("/proc/self/statm") >> addressSpaceBytes >> residentBytes;
        addressSpaceBytes *= pageBytes;
        residentBytes *= pageBytes;
    }

    /// Whether a sanitizer has set terabytes aside and keeps freed memory.
    bool isSanitized() const { return addressSpaceBytes >> 40 != 0; }
};

}  // namespace zel::test
