#pragma once

#include <memory>
#include <vector>

#include "Comparison.h"

/// OpenCV's ways to do a filter's work, on two threads where it has a use for them, into images that exist, all in
/// memory like ours. None where the program is built without OpenCV.
namespace zel::bench {

using Peers = std::vector<Peer>;

/// The mean over the same windows with a replicated border. Means of integers are rounded to the nearest.
Peers blurPeers(const std::shared_ptr<HostImage>& image, unsigned kernelX, unsigned kernelY);

/// The median of a square, of the types and sizes that OpenCV has. At the image's edge its pixels are repeated, so that
/// the results there are not ours.
Peers openCvMedianPeers(const std::shared_ptr<HostImage>& image, unsigned radius);

enum class MorphologyOperation { erosion, opening };

/// By the square or the diamond as one mask; the diamond also by so many passes of the 3 by 3 cross.
Peers morphologyPeers(const std::shared_ptr<HostImage>& image, MorphologyOperation operation, unsigned radius,
                      bool square);

/// A volume slice by slice along x and y, then as one matrix with a row for each slice along z. Integers once rounded
/// between the two and once kept as float there.
/// @param kernelSize  odd, along each axis.
Peers gaussianPeers(const std::shared_ptr<HostImage>& volume, double sigma, unsigned kernelSize);

/// The template at each place where it lies wholly in the image: the plain correlation, or that less the template's
/// mean. Images of uint8 and float.
Peers matchTemplatePeers(const std::shared_ptr<HostImage>& image, const std::shared_ptr<HostImage>& pattern,
                         bool removesMean);

/// Non-local means of an image of bytes: patches of 5 x 5, a window of 21 x 21.
/// @param h  how much patches may differ; more takes out more noise.
Peers nonLocalMeansPeers(const std::shared_ptr<HostImage>& image, float h);

}  // namespace zel::bench
