#include "PeerCheck.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "zel/ImageModelAdapter.h"

namespace zel::bench {

namespace {

void readRow(const ImageModel& image, std::vector<double>& row, std::size_t y, std::size_t z) {
    if (!image.readRow(row.size(), row.data(), 0, y, z, 0, 0)) throw std::runtime_error("a result cannot be read");
}

double largestDifference(const ImageModel& one, const ImageModel& other) {
    const ImageModelAdapter a(&one, VoxelTypes::float64, DataConvertionTypes::cast);
    const ImageModelAdapter b(&other, VoxelTypes::float64, DataConvertionTypes::cast);
    std::vector<double> rowOfA(one.getDimension(0)), rowOfB(one.getDimension(0));
    double largest = 0;
    for (std::size_t z = 0; z < one.getDimension(2); ++z) {
        for (std::size_t y = 0; y < one.getDimension(1); ++y) {
            readRow(a, rowOfA, y, z);
            readRow(b, rowOfB, y, z);
            for (std::size_t x = 0; x < rowOfA.size(); ++x) {
                largest = std::max(largest, std::abs(rowOfA[x] - rowOfB[x]));
            }
        }
    }
    return largest;
}

}  // namespace

std::vector<double> runPeersOnce(const std::string& caseName, const Comparison& comparison) {
    const ImageModel* const ours = comparison.agreement.result ? &comparison.agreement.result() : nullptr;
    std::vector<double> seconds;
    for (const Peer& peer : comparison.peers) {
        seconds.push_back(peer.run());
        if (ours == nullptr || !peer.result) continue;
        const double difference = largestDifference(*ours, *peer.result());
        if (difference <= comparison.agreement.tolerance) continue;
        throw std::runtime_error(caseName + ": the result of " + peer.name + " differs from ours by " +
                                 std::to_string(difference));
    }
    return seconds;
}

}  // namespace zel::bench
