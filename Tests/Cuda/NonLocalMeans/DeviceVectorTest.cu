#include "DeviceVectorOperations.h"

namespace zel::test {
namespace {

TEST(DeviceVectorTest, ThrustWorksOnVectorsOfTheDevice) {
    for (const VectorOperation& operation : vectorOperations) {
        SCOPED_TRACE(operation.name);
        operation.run();
    }
}

}  // namespace
}  // namespace zel::test
