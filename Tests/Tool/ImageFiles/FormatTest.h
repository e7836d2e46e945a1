#pragma once

#include "ByteText.h"
#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/ImageFile.h"
#include "Messages.h"
#include "TemporaryFolder.h"
#include "TestImages.h"

namespace zel::test {

using ::testing::HasSubstr;
using tool::imageSizeOf;
using tool::readImageFile;
using tool::writeImageFile;

/// The voxels of an image without gaps, as they lie in memory.
inline std::string bytesOf(const HostImage& image) {
    return {static_cast<const char*>(image.data()), image.extentBytes()};
}

inline std::string readError(const std::string& path) {
    return messageOf<tool::FileError>([&] { readImageFile(path); });
}

/// The file can be read, but not when it is truncated, at any byte; the messages name it.
inline void expectTruncationsAreRefused(const std::string& path) {
    ASSERT_NO_THROW(readImageFile(path));
    for (std::size_t length = std::filesystem::file_size(path); length-- > 0;) {
        std::filesystem::resize_file(path, length);
        ASSERT_THAT(readError(path), HasSubstr("cannot read " + path + ": it")) << length;
    }
}

/// What the tests of all file formats share.
class FormatTest : public ::testing::Test {
protected:
    /// @param name  of the file, whose extension decides on the format.
    explicit FormatTest(std::string name) : name_(std::move(name)) {}

    std::string write(const std::string& bytes) const { return folder.write(name_, bytes); }
    HostImage read(const std::string& bytes) const { return readImageFile(write(bytes)); }

    /// @param makeFile  makeFile(voxels, isLittle): a file of the values' bytes in that byte order.
    template <typename T, typename MakeFile>
    void expectRead(const std::vector<T>& values, const MakeFile& makeFile) const {
        for (const bool isLittle : {true, false}) {
            SCOPED_TRACE(::testing::Message() << voxelTypeName(voxelTypeOf<T>) << (isLittle ? " little" : " big"));
            std::string voxels;
            for (const T& value : values) voxels += voxelBytes(value, isLittle);
            const HostImage image = read(makeFile(voxels, isLittle));
            ASSERT_EQ(image.getDataType(), voxelTypeOf<T>);
            EXPECT_EQ(readAll<T>(image), values);
        }
    }

    /// Each file is refused with a message that holds the text.
    void expectRefusals(const std::vector<std::pair<std::string, std::string>>& cases) const {
        for (const auto& [bytes, text] : cases) EXPECT_THAT(readError(write(bytes)), HasSubstr(text));
    }

    TemporaryFolder folder;

private:
    std::string name_;
};

}  // namespace zel::test
