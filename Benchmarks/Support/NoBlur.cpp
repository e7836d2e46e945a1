#include "BlurPeer.h"

namespace zel::bench {

std::function<void()> blurPeer(const std::shared_ptr<HostImage>&, unsigned, unsigned) {
    return {};
}

}  // namespace zel::bench
