#include "DeviceChecks.h"
#include "GeometryAndMatching/TransformTemplate_CUDA.h"
#include "MatchingRun.h"
#include "Messages.h"

using namespace zel;
using namespace zel::test;

namespace {

/// The steps that are done while the run still holds device memory: its own, before the core reports the end.
struct OwnSteps : InteractionInterface {
    void progress(std::uint64_t done, std::uint64_t ofAll) override {
        total = ofAll;
        if (host::deviceUse().liveBytes > before) last = done;
    }
    std::uint64_t before = host::deviceUse().liveBytes, last = 0, total = 0;
};

}  // namespace

TEST(MatchingStepsTest, TheRunItselfTakesAllThatItPromises) {
    onEachWay([](MatchingRun& run, const MatchingWay&) {
        OwnSteps steps;
        run.filter.run(&steps);
        EXPECT_EQ(steps.last, steps.total);
    });
}

TEST(MatchingStepsTest, ATemplateThatOutgrowsItsRoomIsRefused) {
    struct Run : AbstractPrivateImplementation {
        explicit Run(BaseAlgorithm* algorithm) : AbstractPrivateImplementation(algorithm) {}
        void run() override {}
    };
    cuda::CudaTemplateMatching3d algorithm;
    Run run(&algorithm);
    cuda::TemplateTransformation context(&run);
    const HostImage source = randomImage<float>({10, 20, 30}, 1);
    const auto destination = TemporaryImage::New(LocationMode::hostMemory);
    context.maskFollows = true;
    context.imageSpacing = {1, 1, 1};
    context.info.phi = M_PI / 2;
    context.info.hasRotation = true;
    context.resampleAlgorithm = ResampleAffine3d::New(&run);
    for (const auto& [room, fits] : {std::pair{cuda::Size3{20, 10, 30}, true}, {{19, 10, 30}, false}}) {
        context.paddedSize = room;
        const std::string message =
            messageOf([&] { transformTemplate(context, source, *destination->getImageModel()); });
        EXPECT_EQ(message, fits ? "(nothing was raised)"
                                : "The transformation generates a greater template (20 x 10 x 30 > 19 x 10 x 30).");
    }
}
