#include "FilterPeers.h"

namespace zel::bench {

Peers blurPeers(const std::shared_ptr<HostImage>&, unsigned, unsigned) {
    return {};
}

Peers openCvMedianPeers(const std::shared_ptr<HostImage>&, unsigned) {
    return {};
}

Peers morphologyPeers(const std::shared_ptr<HostImage>&, MorphologyOperation, unsigned, bool) {
    return {};
}

Peers gaussianPeers(const std::shared_ptr<HostImage>&, double, unsigned) {
    return {};
}

Peers matchTemplatePeers(const std::shared_ptr<HostImage>&, const std::shared_ptr<HostImage>&, bool) {
    return {};
}

Peers nonLocalMeansPeers(const std::shared_ptr<HostImage>&, float) {
    return {};
}

}  // namespace zel::bench
