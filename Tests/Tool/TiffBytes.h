#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace zel::test {

/// A TIFF file put together by hand, without libtiff: header, then for each page its blocks and its directory.
class TiffBytes {
public:
    explicit TiffBytes(bool isLittle = true, bool isBig = false) : isLittle_(isLittle), isBig_(isBig) {
        bytes_ = isLittle ? "II" : "MM";
        bytes_ += isBig ? number(43, 2) + number(8, 2) + number(0, 2) : number(42, 2);
        nextLink_ = bytes_.size();
        bytes_ += number(0, offsetSize());
    }

    struct Tag {
        std::uint16_t id;
        std::vector<std::uint64_t> values;
    };

    /// Adds a page of one uncompressed strip of 8-bit grey, or what further tags make of it: they replace those of the
    /// same number.
    TiffBytes& page(std::uint64_t width, std::uint64_t height, const std::vector<std::string>& blocks,
                    const std::vector<Tag>& furtherTags = {}) {
        Tag offsets{273, {}}, counts{279, {}};
        if (std::ranges::find(furtherTags, 322, &Tag::id) != furtherTags.end()) {
            offsets.id = 324;
            counts.id = 325;
        }
        for (const std::string& block : blocks) {
            offsets.values.push_back(bytes_.size());
            counts.values.push_back(block.size());
            bytes_ += block;
        }
        std::vector<Tag> tags{{256, {width}}, {257, {height}}, {258, {8}}, {259, {1}},
                              {262, {1}},     {277, {1}},      offsets,    counts};
        for (const Tag& tag : furtherTags) {
            std::erase_if(tags, [&](const Tag& known) { return known.id == tag.id; });
            tags.push_back(tag);
        }
        std::ranges::sort(tags, {}, &Tag::id);
        addDirectory(tags);
        return *this;
    }

    /// Makes the last page lead on to a place in the file.
    TiffBytes& linkTo(std::uint64_t place) {
        bytes_.replace(nextLink_, offsetSize(), number(place, offsetSize()));
        return *this;
    }
    /// Where the last page's directory begins.
    std::uint64_t directory() const { return directory_; }
    const std::string& bytes() const { return bytes_; }

    std::string number(std::uint64_t value, std::size_t size) const {
        std::string text;
        for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(value >> 8 * (isLittle_ ? i : size - 1 - i));
        return text;
    }

private:
    std::size_t offsetSize() const { return isBig_ ? 8 : 4; }

    void addDirectory(const std::vector<Tag>& tags) {
        std::string entries;
        for (const Tag& tag : tags) {
            constexpr std::uint64_t shortType = 3, longType = 4;
            const bool isLong = std::ranges::max(tag.values) > 0xFFFF;
            std::string values;
            for (const std::uint64_t value : tag.values) values += number(value, isLong ? 4 : 2);
            // Values that do not fit into their field stand elsewhere, short ones at its beginning.
            if (values.size() > offsetSize()) values = number(append(values), offsetSize());
            values.resize(offsetSize());
            entries += number(tag.id, 2) + number(isLong ? longType : shortType, 2) +
                       number(tag.values.size(), offsetSize()) + values;
        }
        directory_ = append(number(tags.size(), isBig_ ? 8 : 2) + entries);
        linkTo(directory_);
        nextLink_ = append(number(0, offsetSize()));
    }

    /// At an even place. Answers which.
    std::uint64_t append(const std::string& part) {
        bytes_.resize(bytes_.size() + bytes_.size() % 2);
        const std::size_t place = bytes_.size();
        bytes_ += part;
        return place;
    }

    bool isLittle_;
    bool isBig_;
    std::string bytes_;
    std::size_t nextLink_ = 0;
    std::uint64_t directory_ = 0;
};

}  // namespace zel::test
