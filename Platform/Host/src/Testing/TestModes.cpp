#include <host_device.h>

#include "Device/HeldWork.h"
#include "Device/Modes.h"
#include "Device/Streams.h"

namespace zel::host {

namespace {

void setModes(const TestModes& wanted) {
    runHeldWork();
    static_cast<void>(runAllDeferredWork());
    modes.deferredStreams = wanted.deferredStreams;
    modes.protectedMemory = wanted.protectedMemory;
    modes.poison = wanted.poison;
    modes.redZones = wanted.redZones || alwaysRedZones;
    modes.blockShuffleSeed = wanted.blockShuffleSeed;
    modes.strictReleases = wanted.strictReleases;
    modes.separateMemory = wanted.separateMemory;
}

}  // namespace

TestModes testModes() {
    return {modes.deferredStreams,  modes.protectedMemory, modes.poison,        modes.redZones,
            modes.blockShuffleSeed, modes.strictReleases,  modes.separateMemory};
}

ScopedTestModes::ScopedTestModes(const TestModes& wanted) : previous_(testModes()) {
    setModes(wanted);
}
ScopedTestModes::~ScopedTestModes() {
    setModes(previous_);
}

}  // namespace zel::host
