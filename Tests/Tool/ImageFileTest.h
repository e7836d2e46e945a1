#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Messages.h"
#include "TemporaryFolder.h"
#include "TestImages.h"

namespace zel::test {

using ::testing::HasSubstr;
using tool::FileError;
using tool::imageSizeOf;
using tool::readImageFile;
using tool::writeImageFile;

/// The voxels of an image without gaps, as they lie in memory.
inline std::string bytesOf(const HostImage& image) {
    return {static_cast<const char*>(image.data()), image.extentBytes()};
}

/// What the tests of all file formats do with the files of their own.
class ImageFileTest : public ::testing::Test {
protected:
    /// @param name  of the file, whose extension decides on the format.
    explicit ImageFileTest(std::string name) : name_(std::move(name)) {}

    HostImage read(const std::string& bytes) const { return readImageFile(folder.write(name_, bytes)); }
    std::string refusal(const std::string& bytes) const {
        return messageOf<FileError>([&] { read(bytes); });
    }
    std::string writeRefusal(VoxelTypes type, const ImageSize& size) const {
        return messageOf<FileError>([&] { tool::checkWritable(folder / name_, type, size); });
    }

    void expectEveryPrefixIsRefusedByName(const std::string& whole) const {
        const std::string path = folder.write(name_, whole);
        ASSERT_NO_THROW(readImageFile(path));
        for (std::size_t length = whole.size(); length-- > 0;) {
            std::filesystem::resize_file(path, length);
            ASSERT_THAT(messageOf<FileError>([&] { readImageFile(path); }), HasSubstr("cannot read " + path + ": it"))
                << length;
        }
    }

    void expectRoundTrip(VoxelTypes type, const ImageSize& size, bool isSpacingKept) const {
        SCOPED_TRACE(voxelTypeName(type));
        HostImage image(type, size);
        auto* const raw = static_cast<unsigned char*>(image.data());
        for (std::size_t i = 0; i < image.extentBytes(); ++i) raw[i] = static_cast<unsigned char>(i * i / 7 + i);
        for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, 0.1 * (axis + 1));
        writeImageFile(folder / name_, image);
        const HostImage copy = readImageFile(folder / name_);
        ASSERT_EQ(copy.getDataType(), type);
        ASSERT_EQ(imageSizeOf(copy), size);
        EXPECT_EQ(std::memcmp(copy.data(), image.data(), image.extentBytes()), 0);
        for (int axis = 0; isSpacingKept && axis < 3; ++axis) {
            EXPECT_DOUBLE_EQ(copy.getSpacing(axis), image.getSpacing(axis));
        }
    }

    TemporaryFolder folder;

private:
    std::string name_;
};

}  // namespace zel::test
