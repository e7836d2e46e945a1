#include <functional>
#include <thread>

#include "Helper/safe_cast.h"
#include "Messages.h"
#include "TestImages.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BaseAlgorithm.h"
#include "zel/algorithms.h"

using namespace zel;
using test::messageOf;

namespace {

/// An algorithm with a registry entry of its own.
struct PlainAlgorithm : RunnerAlgorithm {
    explicit PlainAlgorithm(AlgoInfo& entry, AbstractPrivateImplementation* parent = nullptr)
        : RunnerAlgorithm(parent), info(entry) {}
    AlgoInfo* classInfo() const override { return &info; }
    void validate() const override {}
    AlgoInfo& info;
};

/// A runner whose implementation does what the test wants.
struct FakeRunner : Runnable {
    using Work = std::function<void(AbstractPrivateImplementation&)>;

    explicit FakeRunner(Work wanted) : work(std::move(wanted)) {}
    void run(BaseAlgorithm* algorithm) override {
        struct Implementation : AbstractPrivateImplementation {
            explicit Implementation(BaseAlgorithm* owner) : AbstractPrivateImplementation(owner) {}
            void run() override {}
        } implementation(algorithm);
        work(implementation);
    }
    bool isAvailable() override { return available(); }
    int runnerKind() override { return 3; }

    Work work;
    std::function<bool()> available = [] { return true; };
};

using Reports = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

class AlgorithmRunTest : public ::testing::Test {
protected:
    /// The algorithm runs a child, and makes a step behind it.
    void addRunnerWithChild(FakeRunner::Work childsWork) {
        childInfo_.addRunner(new FakeRunner(std::move(childsWork)));
        info_.addRunner(new FakeRunner([this](AbstractPrivateImplementation& implementation) {
            implementation.setNumberOfSteps(3);
            PlainAlgorithm child(childInfo_, &implementation);
            implementation.runChildAlgo(&child);
            implementation.nextStep();
        }));
    }
    Reports reportsOfRun() {
        struct : InteractionInterface {
            void progress(std::uint64_t done, std::uint64_t total) override { reports.emplace_back(done, total); }
            Reports reports;
        } progress;
        algorithm_.run(&progress);
        return progress.reports;
    }

    AlgoInfo info_{"Plain"}, childInfo_{"Child"};
    PlainAlgorithm algorithm_{info_};
};

}  // namespace

TEST_F(AlgorithmRunTest, TakesTheFirstAvailableRunnerAndDeletesRemovedOnes) {
    EXPECT_THAT(
        messageOf([&] { algorithm_.run(); }),
        testing::StartsWith("No runner is available for Plain: no back end is loaded; link libbrontal_zel_cuda"));
    const auto order = std::make_shared<std::vector<int>>();  // each runner owns it too
    FakeRunner* runners[3];
    for (int i = 0; i < 3; ++i) {
        runners[i] = new FakeRunner([order, i](const auto&) { order->push_back(i); });
        info_.addRunner(runners[i]);
    }
    runners[0]->available = [] { return false; };
    algorithm_.run();
    info_.removeRunner(runners[1]);
    EXPECT_EQ(order.use_count(), 3);
    algorithm_.run();
    EXPECT_EQ(*order, (std::vector<int>{1, 2}));
    FakeRunner stranger({});
    info_.removeRunner(&stranger);
    EXPECT_EQ(info_.runnerCount(), 2U);
}

TEST_F(AlgorithmRunTest, ReportsStepsAndEndsComplete) {
    info_.addRunner(new FakeRunner([](AbstractPrivateImplementation& implementation) {
        implementation.setNumberOfSteps(6);
        implementation.nextStep();
        implementation.incrementStep(2);
    }));
    const Reports expected{{0, 6}, {1, 6}, {3, 6}, {6, 6}};
    EXPECT_EQ(reportsOfRun(), expected);
    EXPECT_EQ(reportsOfRun(), expected);
}

TEST_F(AlgorithmRunTest, CountsAChildAsOneStep) {
    addRunnerWithChild([](AbstractPrivateImplementation& implementation) {
        implementation.setNumberOfSteps(50);
        implementation.incrementStep(50);
    });
    EXPECT_EQ(reportsOfRun(), (Reports{{0, 3}, {1, 3}, {2, 3}, {3, 3}}));
}

TEST_F(AlgorithmRunTest, IsCancelledFromAnotherThreadWithItsChild) {
    addRunnerWithChild([&](AbstractPrivateImplementation& implementation) {
        EXPECT_NO_THROW(implementation.throwIfCancelled());
        std::thread([&] { algorithm_.cancel(); }).join();
        implementation.throwIfCancelled();
        ADD_FAILURE() << "the child went on";
    });
    EXPECT_THROW(algorithm_.run(), ExceptionCancelation);
    EXPECT_THROW(algorithm_.run(), ExceptionCancelation) << "a cancelled run leaves the object fit for another";
}

TEST_F(AlgorithmRunTest, KeepsACancellationUntilTheImplementationExists) {
    bool cancelEarly = true;
    auto* const runner = new FakeRunner([](const auto& implementation) { implementation.throwIfCancelled(); });
    runner->available = [&] {
        if (cancelEarly) algorithm_.cancel();
        return true;
    };
    info_.addRunner(runner);
    EXPECT_THROW(algorithm_.run(), ExceptionCancelation);
    cancelEarly = false;
    algorithm_.cancel();  // nothing is running, so this reaches nothing
    EXPECT_NO_THROW(algorithm_.run());
}

TEST_F(AlgorithmRunTest, OfOneObjectTwiceAtOnceIsRefused) {
    std::string message;
    info_.addRunner(new FakeRunner([&](const auto&) { message = messageOf([&] { algorithm_.run(); }); }));
    algorithm_.run();
    EXPECT_EQ(message, "this Plain is running already; use another object to run two at once");
}

TEST(SafeCastTest, NamesBothTypesWhenItFails) {
    cuda::CudaErosion2d erosion;
    BaseAlgorithm* const base = &erosion;
    const std::string from = typeid(base).name(), to = typeid(cuda::CudaDilation2d*).name();
    EXPECT_EQ(messageOf<UnexpectedError>([&] { safe_cast<cuda::CudaDilation2d*>(base); }),
              "bad cast when casting " + from + " into " + to);
}

// A voxel type that no runner knows, but that is exact in float, is seen by the runner as float and by nobody else.
TEST(AdaptedImagesTest, AreSeenByTheRunnerOnly) {
    HostImage input = test::randomImage<std::int8_t>({5, 2}, 1), output(VoxelTypes::int8, {5, 2});
    cuda::CudaBoxFilter2d filter;
    filter.inputImage = &input;
    filter.outputImage = &output;
    auto* const runner = new FakeRunner([&](const auto&) {
        EXPECT_EQ(filter.inputImage.get()->getDataType(), VoxelTypes::float32);
        EXPECT_EQ(filter.outputImage.get()->getDataType(), VoxelTypes::float32);
        const float row[] = {-1.9F, 2, 3, 4, 5};
        EXPECT_TRUE(filter.outputImage.get()->writeRow(5, row, 0, 0, 0, 0, 0));
        throw ExceptionCancelation();
    });
    cuda::CudaBoxFilter2d::getClassInfo()->addRunner(runner);
    EXPECT_THROW(filter.run(), ExceptionCancelation);
    cuda::CudaBoxFilter2d::getClassInfo()->removeRunner(runner);
    EXPECT_EQ(test::voxels<std::int8_t>(output)[0], -1);
    EXPECT_EQ(filter.inputImage.get(), &input);
    EXPECT_EQ(filter.outputImage.get(), &output);
}
