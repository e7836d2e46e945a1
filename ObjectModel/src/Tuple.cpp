#include "brontal_object_model/Tuple.h"

namespace brontal_object_model {

Tuple::~Tuple() = default;

TupleX::TupleX(std::size_t size) : Tuple(std::vector<std::size_t>(size)) {}
TupleX::TupleX(const std::size_t* entries, std::size_t size)
    : Tuple(std::vector<std::size_t>(entries, entries + size)) {}
TupleX::~TupleX() = default;

}  // namespace brontal_object_model
