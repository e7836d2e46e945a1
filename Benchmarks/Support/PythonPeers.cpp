#include "PythonPeers.h"

#include <filesystem>
#include <nlohmann/json.hpp>

#include "ChildProcess.h"

namespace zel::bench {

namespace {

using Json = nlohmann::json;
using Images = std::vector<std::shared_ptr<HostImage>>;

bool hasPython() {
    return std::filesystem::exists(ZEL_PEERS_PYTHON);
}

/// peers.py, which tells the requests.
class PythonProcess {
public:
    /// @returns the peers' names, and whether their results can be compared.
    Json begin(const std::string& work, const Images& images, const Json& parameters) {
        Json request{{"work", work}, {"parameters", parameters}, {"images", Json::array()}};
        for (const auto& image : images) {
            Json shape{image->getDimension(1), image->getDimension(0)};
            if (image->getDimension(2) > 1) shape.insert(shape.begin(), image->getDimension(2));
            request["images"].push_back({{"type", voxelTypeName(image->getDataType())}, {"shape", shape}});
        }
        process_.sendLine(request.dump());
        for (const auto& image : images) process_.send(image->data(), image->extentBytes());
        return answer();
    }

    /// @returns its seconds.
    double run(std::size_t peer) {
        process_.sendLine(Json{{"run", peer}}.dump());
        return answer();
    }

    void readResult(std::size_t peer, HostImage& result) {
        process_.sendLine(Json{{"result", peer}}.dump());
        process_.receive(result.data(), result.extentBytes());
    }

private:
    Json answer() { return Json::parse(process_.receiveLine()); }

    ChildProcess process_{{ZEL_PEERS_PYTHON, ZEL_PEERS_SCRIPT}};
};

}  // namespace

void addPythonPeers(Comparison& comparison, const std::string& work, const Images& images, const Json& parameters) {
    if (!hasPython()) return;
    static const auto process = std::make_shared<PythonProcess>();
    const Json peers = process->begin(work, images, parameters);
    const HostImage& image = *images.front();
    const ImageSize size{image.getDimension(0), image.getDimension(1), image.getDimension(2)};
    for (std::size_t i = 0; i < peers.size(); ++i) {
        Peer peer{peers[i]["name"], [i] { return process->run(i); }, {}};
        if (peers[i]["comparable"]) {
            peer.result = [i, size, type = image.getDataType()] {
                const auto result = std::make_shared<HostImage>(type, size);
                process->readResult(i, *result);
                return result;
            };
        }
        comparison.peers.push_back(std::move(peer));
    }
}

void addFirstRunOfPythonPeer(Comparison& comparison, const std::string& work, const Images& images,
                             const Json& parameters) {
    if (!hasPython()) return;
    const std::string name = PythonProcess().begin(work, images, parameters)[0]["name"];
    const auto firstRun = [=] {
        PythonProcess fresh;
        fresh.begin(work, images, parameters);
        return fresh.run(0);
    };
    comparison.peers.push_back({name, firstRun, {}});
}

}  // namespace zel::bench
