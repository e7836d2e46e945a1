#pragma once

#include <cstddef>
#include <utility>
#include <vector>

/// Marks what the object model offers to others.
#define BRONTAL_OBJECT_MODEL_API __attribute__((visibility("default")))

namespace brontal_object_model {

/// An ordered set of indices or sizes.
class BRONTAL_OBJECT_MODEL_API Tuple {
public:
    virtual ~Tuple();

    std::size_t& operator[](std::size_t entry) { return entries_[entry]; }
    std::size_t operator[](std::size_t entry) const { return entries_[entry]; }
    std::size_t size() const { return entries_.size(); }

protected:
    explicit Tuple(std::vector<std::size_t> entries) : entries_(std::move(entries)) {}
    Tuple(const Tuple&) = default;
    Tuple& operator=(const Tuple&) = default;

private:
    std::vector<std::size_t> entries_;
};

/// A tuple whose length is known when the program runs.
class BRONTAL_OBJECT_MODEL_API TupleX : public Tuple {
public:
    /// All entries 0.
    explicit TupleX(std::size_t size);
    TupleX(const std::size_t* entries, std::size_t size);
    ~TupleX() override;
    TupleX(const TupleX&) = default;
    TupleX& operator=(const TupleX&) = default;
};

}  // namespace brontal_object_model
