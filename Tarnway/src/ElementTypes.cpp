#include "tarnway/ElementTypes.h"

#include <stdexcept>
#include <string>

namespace tarnway {

std::size_t elementSize(ElementType type) {
    switch (type) {
#define TARNWAY_SIZE(name, code, type) \
    case ElementType::name:            \
        return sizeof(type);
        TARNWAY_FOR_EACH_ELEMENT_TYPE(TARNWAY_SIZE)
#undef TARNWAY_SIZE
    }
    throw std::invalid_argument("no element type has the code " + std::to_string(static_cast<int>(type)));
}

}  // namespace tarnway
