#pragma once

#include <memory>

#include "FilterPeers.h"

namespace zel::bench {

/// The correlation of a float image with a template written for FFTW directly: both padded to nx by ny, transformed
/// forward, multiplied and transformed back. Nothing else is done with the scores. Plans are made beforehand, without
/// measuring.
/// @param threads  of FFTW, and of the loops between the transforms.
Peer fftwCorrelation(const std::shared_ptr<HostImage>& image, const std::shared_ptr<HostImage>& pattern, int nx, int ny,
                     int threads);

}  // namespace zel::bench
