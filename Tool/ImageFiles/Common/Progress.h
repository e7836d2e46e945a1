#pragma once

#include <functional>

namespace zel::tool {

/// Told from time to time how much of a piece of work is done, from 0 to 1. May be empty.
using Progress = std::function<void(double fraction)>;

/// For a part of the work, from one fraction of the whole to another.
inline Progress partOf(const Progress& progress, double from, double to) {
    if (!progress) return {};
    return [=](double fraction) { progress(from + fraction * (to - from)); };
}

}  // namespace zel::tool
