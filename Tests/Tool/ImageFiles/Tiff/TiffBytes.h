#pragma once

#include <algorithm>

#include "ByteText.h"

namespace zel::test {

/// A TIFF file put together by hand, without libtiff: header, then for each page its segments (strips or tiles) and its
/// directory.
class TiffBytes {
public:
    explicit TiffBytes(bool isLittle = true, bool isBig = false)
        : isLittle_(isLittle), offsetSize_(isBig ? 8 : 4), bytes_(isLittle ? "II" : "MM") {
        bytes_ += isBig ? number(43, 2) + number(8, 2) + number(0, 2) : number(42, 2);
        nextLink_ = append(offset(0));
    }

    struct Tag {
        std::uint16_t id;
        std::vector<std::uint64_t> values;
    };

    /// Adds a page of uncompressed 8-bit grey in one strip, unless further tags say otherwise: they replace those of
    /// the same id.
    TiffBytes& page(std::uint64_t width, std::uint64_t height, const std::vector<std::string>& segments,
                    const std::vector<Tag>& furtherTags = {}) {
        const bool isTiled = std::ranges::find(furtherTags, 322, &Tag::id) != furtherTags.end();
        std::vector<Tag> tags{{256, {width}}, {257, {height}}, {258, {8}}, {259, {1}}, {262, {1}}, {277, {1}}};
        Tag offsets{std::uint16_t(isTiled ? 324 : 273), {}}, counts{std::uint16_t(isTiled ? 325 : 279), {}};
        for (const std::string& segment : segments) {
            offsets.values.push_back(append(segment));
            counts.values.push_back(segment.size());
        }
        tags.insert(tags.end(), {offsets, counts});
        for (const Tag& tag : furtherTags) {
            std::erase_if(tags, [&](const Tag& known) { return known.id == tag.id; });
            tags.push_back(tag);
        }
        std::ranges::sort(tags, {}, &Tag::id);
        addDirectory(tags);
        return *this;
    }

    /// Links the last page to an offset in the file, where a further page has to be.
    TiffBytes& linkTo(std::uint64_t to) {
        bytes_.replace(nextLink_, offsetSize_, offset(to));
        return *this;
    }
    /// Where the last page's directory begins.
    std::uint64_t directory() const { return directory_; }
    const std::string& bytes() const { return bytes_; }

private:
    std::string number(std::uint64_t value, std::size_t size) const { return numberBytes(value, size, isLittle_); }
    std::string offset(std::uint64_t value) const { return number(value, offsetSize_); }

    void addDirectory(const std::vector<Tag>& tags) {
        std::string entries = number(tags.size(), offsetSize_ == 8 ? 8 : 2);
        for (const Tag& tag : tags) {
            const bool isLong = std::ranges::max(tag.values) > 0xFFFF;
            std::string values;
            for (const std::uint64_t value : tag.values) values += number(value, isLong ? 4 : 2);
            // Values that do not fit into their field are put elsewhere, shorter ones are padded.
            if (values.size() > offsetSize_) values = offset(append(values));
            values.resize(offsetSize_);
            entries += number(tag.id, 2) + number(isLong ? 4 : 3, 2) + offset(tag.values.size()) + values;
        }
        directory_ = append(entries);
        linkTo(directory_);
        nextLink_ = append(offset(0));
    }

    /// Appends at an even offset, and returns that.
    std::uint64_t append(const std::string& part) {
        bytes_.resize(bytes_.size() + bytes_.size() % 2);
        bytes_ += part;
        return bytes_.size() - part.size();
    }

    bool isLittle_;
    std::size_t offsetSize_;
    std::string bytes_;
    std::size_t nextLink_ = 0;
    std::uint64_t directory_ = 0;
};

}  // namespace zel::test
