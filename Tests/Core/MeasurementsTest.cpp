#include "zel/Measurements.h"

#include <gtest/gtest.h>

using namespace zel;
using brontal_object_model::TupleX;

TEST(MeasurementArray, KeepsOneNumberPerIndex) {
    CrossCorrelation2dMsr measurement;
    TupleX one(1);
    one[0] = 1;
    measurement.bestPositionX.resize(one);
    measurement.bestPositionX.data()[0] = 42;
    EXPECT_EQ(measurement.bestPositionX.at(TupleX(1)), 42U);

    const std::size_t entries[] = {2, 3};
    MeasurementArray<double> table;
    table.resize(TupleX(entries, 2));
    table.data()[1 * 3 + 2] = 5;
    const std::size_t last[] = {1, 2};
    EXPECT_EQ(table.at(TupleX(last, 2)), 5);
    EXPECT_EQ(table.shape().size(), 2U);
}
