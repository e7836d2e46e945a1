#pragma once

#include <string_view>
#include <utility>

namespace zel {

class ImageModel;

/// A named parameter of an algorithm. It reads and is assigned like a plain value.
template <typename T>
class Property {
public:
    explicit Property(std::string_view name, T value = T{}) : name_(name), value_(std::move(value)) {}

    const T& get() const { return value_; }
    operator T() const { return value_; }  // NOLINT(google-explicit-constructor): a property stands for its value

    Property& operator=(T value) {
        value_ = std::move(value);
        return *this;
    }
    /// Takes the value; a property keeps its own name.
    Property& operator=(const Property& other) { return *this = other.value_; }
    Property(const Property&) = delete;

    std::string_view name() const { return name_; }

private:
    std::string_view name_;  // a literal
    T value_;
};

using PropertyReadImage = Property<const ImageModel*>;
using PropertyWriteImage = Property<ImageModel*>;
/// One of several numbered ways of doing a thing.
using PropertySingleChoice = Property<int>;

}  // namespace zel
