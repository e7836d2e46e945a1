#include "Demo/DemoPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

namespace zel::tool {

namespace {

constexpr int sizeOfPicture = 512;

bool isInDisk(int x, int y, int centreX, int centreY, int radius) {
    const int dx = x - centreX, dy = y - centreY;
    return dx * dx + dy * dy <= radius * radius;
}

bool isInBox(int x, int y, int left, int top, int width, int height) {
    return x >= left && x < left + width && y >= top && y < top + height;
}

/// Rings that grow finer outwards.
double ringValue(int x, int y, int centreX, int centreY) {
    const double dx = x - centreX, dy = y - centreY;
    return 128 + 100 * std::cos((dx * dx + dy * dy) / 60);
}

double sceneValue(int x, int y) {
    if (isInDisk(x, y, 128, 128, 90) && !isInDisk(x, y, 150, 110, 40)) return 215;
    if (isInDisk(x, y, 384, 128, 96)) return ringValue(x, y, 384, 128);
    if (isInBox(x, y, 48, 288, 160, 160)) return (x / 16 + y / 16) % 2 == 0 ? 40 : 200;  // checks
    if (isInBox(x, y, 256, 272, 224, 80)) {
        const int period = 2 + (480 - x) / 16;  // stripes that grow finer to the right
        return x % (2 * period) < period ? 230 : 30;
    }
    for (int letter = 0; letter < 7; ++letter) {  // strokes 1 to 7 pixels wide
        if (isInBox(x, y, 264 + letter * 30, 384, letter + 1, 80)) return 250;
    }
    return 60.0 + 80.0 * x / sizeOfPicture + 40.0 * y / sizeOfPicture;
}

}  // namespace

HostImage makeDemoPicture() {
    HostImage picture(VoxelTypes::uint8, {sizeOfPicture, sizeOfPicture});
    auto* const pixels = static_cast<std::uint8_t*>(picture.data());
    // The generator's numbers are fixed by the standard; those of the library's distributions are not.
    std::mt19937 random(20);  // NOLINT(bugprone-random-generator-seed): the same picture every time
    for (int y = 0; y < sizeOfPicture; ++y) {
        for (int x = 0; x < sizeOfPicture; ++x) {
            const std::uint32_t bits = random();
            // The sum of four bytes is nearly normal.
            const int sum =
                static_cast<int>((bits & 255U) + (bits >> 8U & 255U) + (bits >> 16U & 255U) + (bits >> 24U));
            double value = sceneValue(x, y) + (sum - 510) / 12.0;
            const std::uint32_t speck = random() % 500;
            if (speck < 2) value = speck == 0 ? 0 : 255;
            pixels[y * sizeOfPicture + x] = static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
        }
    }
    return picture;
}

}  // namespace zel::tool
