#include "zel/Property.h"

#include "Helper/raise.h"

namespace zel {

std::string toText(const Allowed<unsigned>& allowed) {
    return plainText("from ", allowed.low, " to ", allowed.high);
}

std::string toText(const Allowed<double>& allowed) {
    std::string low = plainText(allowed.excludesLow ? "above " : "of at least ", allowed.low);
    if (allowed.high == std::numeric_limits<double>::max()) return low;
    return plainText(low, " and at most ", allowed.high);
}

}  // namespace zel
