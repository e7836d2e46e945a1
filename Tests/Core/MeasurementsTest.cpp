#include "zel/Measurements.h"

#include <gtest/gtest.h>

using namespace zel;
using brontal_object_model::TupleX;

TEST(MeasurementArrayTest, RunsFastestAlongItsLastIndex) {
    const std::size_t entries[] = {2, 3};
    MeasurementArray<double> table;
    table.resize(TupleX(entries, 2));
    table.data()[1 * 3 + 2] = 5;
    const std::size_t last[] = {1, 2};
    EXPECT_EQ(table.at(TupleX(last, 2)), 5);
}
