#pragma once

#include <functional>
#include <memory>

#include "zel/HostImage.h"

namespace zel::bench {

/// OpenCV's mean over the same windows with a replicated border, into an image that exists, both in memory like ours.
/// Empty where the program is built without OpenCV. Its integer means are rounded to the nearest; ours are truncated.
std::function<void()> blurPeer(const std::shared_ptr<HostImage>& image, unsigned kernelX, unsigned kernelY);

}  // namespace zel::bench
