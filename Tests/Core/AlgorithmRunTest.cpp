#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "Helper/safe_cast.h"
#include "Messages.h"
#include "TestImages.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/BaseAlgorithm.h"
#include "zel/algorithms.h"

using namespace zel;
using test::messageOf;

namespace {

/// An algorithm of a class with a registry entry of its own for each test.
class PlainAlgorithm : public RunnerAlgorithm {
public:
    explicit PlainAlgorithm(AlgoInfo& info, AbstractPrivateImplementation* parent = nullptr)
        : RunnerAlgorithm(parent), info_(info) {}
    AlgoInfo* classInfo() const override { return &info_; }

protected:
    void validate() const override {}

private:
    AlgoInfo& info_;
};

/// A runner that does what the test wants, and tells when it is deleted.
class FakeRunner : public Runnable {
public:
    explicit FakeRunner(std::function<void(BaseAlgorithm*)> work, bool available = true, bool* deleted = nullptr)
        : work_(std::move(work)), available_(available), deleted_(deleted) {}
    ~FakeRunner() override {
        if (deleted_ != nullptr) *deleted_ = true;
    }
    void run(BaseAlgorithm* algorithm) override { work_(algorithm); }
    bool isAvailable() override { return available_; }
    int runnerKind() override { return 3; }

private:
    std::function<void(BaseAlgorithm*)> work_;
    bool available_;
    bool* deleted_;
};

class FakeImplementation : public AbstractPrivateImplementation {
public:
    FakeImplementation(BaseAlgorithm* algorithm, std::function<void(FakeImplementation&)> work)
        : AbstractPrivateImplementation(algorithm), work_(std::move(work)) {}
    void run() override { work_(*this); }

private:
    std::function<void(FakeImplementation&)> work_;
};

Runnable* implementedBy(std::function<void(FakeImplementation&)> work) {
    return new FakeRunner([work](BaseAlgorithm* algorithm) { FakeImplementation(algorithm, work).run(); });
}

class RecordedProgress : public InteractionInterface {
public:
    void progress(std::uint64_t done, std::uint64_t total) override { reports.emplace_back(done, total); }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
};

using Reports = decltype(RecordedProgress::reports);

}  // namespace

TEST(RunnersTest, TheFirstAvailableOneRunsAndRemovedOnesAreDeleted) {
    AlgoInfo info("Plain");
    PlainAlgorithm algorithm(info);
    EXPECT_EQ(messageOf<RuntimeError>([&] { algorithm.run(); }), "No runner is available for Plain");

    std::vector<int> order;
    bool deleted = false;
    info.addRunner(new FakeRunner([&](BaseAlgorithm*) { order.push_back(0); }, false));
    Runnable* const first = new FakeRunner([&](BaseAlgorithm*) { order.push_back(1); }, true, &deleted);
    info.addRunner(first);
    info.addRunner(new FakeRunner([&](BaseAlgorithm*) { order.push_back(2); }));
    algorithm.run();
    info.removeRunner(first);
    EXPECT_TRUE(deleted);
    algorithm.run();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    FakeRunner stranger([](BaseAlgorithm*) {});
    info.removeRunner(&stranger);
    EXPECT_EQ(info.runnerCount(), 2U);
}

TEST(StepsTest, AreReportedAndEndComplete) {
    AlgoInfo info("Plain");
    info.addRunner(implementedBy([](FakeImplementation& implementation) {
        implementation.setNumberOfSteps(6);
        implementation.nextStep();
        implementation.incrementStep(2);
    }));
    PlainAlgorithm algorithm(info);
    for (int repeat = 0; repeat < 2; ++repeat) {
        RecordedProgress progress;
        algorithm.run(&progress);
        EXPECT_EQ(progress.reports, (Reports{{0, 6}, {1, 6}, {3, 6}, {6, 6}}));
    }
}

TEST(StepsTest, AChildIsOneStepOfItsParent) {
    AlgoInfo childInfo("Child");
    childInfo.addRunner(implementedBy([](FakeImplementation& implementation) {
        implementation.setNumberOfSteps(50);
        implementation.incrementStep(50);
    }));
    AlgoInfo info("Parent");
    info.addRunner(implementedBy([&](FakeImplementation& implementation) {
        implementation.setNumberOfSteps(2);
        PlainAlgorithm child(childInfo, &implementation);
        implementation.runChildAlgo(&child);
        implementation.nextStep();
    }));
    RecordedProgress progress;
    PlainAlgorithm(info).run(&progress);
    EXPECT_EQ(progress.reports, (Reports{{0, 2}, {1, 2}, {2, 2}}));
}

TEST(CancellingTest, ReachesARunFromAnotherThreadAndItsChild) {
    AlgoInfo childInfo("Child");
    PlainAlgorithm* running = nullptr;
    childInfo.addRunner(implementedBy([&](FakeImplementation& implementation) {
        EXPECT_NO_THROW(implementation.throwIfCancelled());
        std::thread([&] { running->cancel(); }).join();
        implementation.throwIfCancelled();
    }));
    AlgoInfo info("Parent");
    info.addRunner(implementedBy([&](FakeImplementation& implementation) {
        PlainAlgorithm child(childInfo, &implementation);
        implementation.runChildAlgo(&child);
        ADD_FAILURE() << "the child went on";
    }));
    PlainAlgorithm algorithm(info);
    running = &algorithm;
    EXPECT_THROW(algorithm.run(), ExceptionCancelation);
    EXPECT_THROW(algorithm.run(), ExceptionCancelation) << "a cancelled run leaves the object fit for another";
}

TEST(CancellingTest, IsKeptUntilTheImplementationExists) {
    AlgoInfo info("Plain");
    bool cancelEarly = true;
    info.addRunner(new FakeRunner([&](BaseAlgorithm* algorithm) {
        if (cancelEarly) algorithm->cancel();
        FakeImplementation(algorithm, [](FakeImplementation& implementation) {
            implementation.throwIfCancelled();
        }).run();
    }));
    PlainAlgorithm algorithm(info);
    EXPECT_THROW(algorithm.run(), ExceptionCancelation);
    cancelEarly = false;
    algorithm.cancel();  // nothing is running, so this reaches nothing
    EXPECT_NO_THROW(algorithm.run());
}

TEST(RunningTest, OneObjectTwiceAtOnceIsRefused) {
    AlgoInfo info("Plain");
    std::string message;
    info.addRunner(new FakeRunner(
        [&](BaseAlgorithm* algorithm) { message = messageOf<RuntimeError>([=] { algorithm->run(); }); }));
    PlainAlgorithm algorithm(info);
    algorithm.run();
    EXPECT_EQ(message, "this Plain is running already; use another object to run two at once");
}

TEST(SafeCastTest, NamesBothTypesWhenItFails) {
    cuda::CudaErosion2d erosion;
    BaseAlgorithm* const base = &erosion;
    EXPECT_EQ(safe_cast<cuda::CudaErosion2d*>(base), &erosion);
    EXPECT_EQ(messageOf<UnexpectedError>([&] { safe_cast<cuda::CudaDilation2d*>(base); }),
              std::string("bad cast when casting ") + typeid(BaseAlgorithm*).name() + " into " +
                  typeid(cuda::CudaDilation2d*).name());
}

TEST(ExceptionsTest, AreCaughtAsTheirBases) {
    EXPECT_THROW(throw RuntimeError({"text", "file", 3}), ProcessingException);
    EXPECT_THROW(throw UnexpectedError({"text", "file", 3}), Exception);
    EXPECT_THROW(throw ExceptionCancelation(), std::exception);
}

// A voxel type that no runner knows, but that is exact in float, is seen by the runner as float and by nobody else.
TEST(AdaptedImagesTest, AreSeenByTheRunnerOnly) {
    HostImage input = test::randomImage<std::int8_t>({5, 2}, 1);
    HostImage output(VoxelTypes::int8, {5, 2});
    cuda::CudaBoxFilter2d filter;
    filter.inputImage = &input;
    filter.outputImage = &output;

    bool fail = false;
    auto* const runner = new FakeRunner([&](BaseAlgorithm* algorithm) {
        auto* const box = safe_cast<cuda::CudaBoxFilter2d*>(algorithm);
        EXPECT_EQ(box->inputImage.get()->getDataType(), VoxelTypes::float32);
        EXPECT_EQ(box->outputImage.get()->getDataType(), VoxelTypes::float32);
        const float row[] = {-1.9F, 2, 3, 4, 5};
        EXPECT_TRUE(box->outputImage.get()->writeRow(5, row, 0, 0, 0, 0, 0));
        if (fail) throw ExceptionCancelation();
    });
    cuda::CudaBoxFilter2d::getClassInfo()->addRunner(runner);
    filter.run();
    EXPECT_EQ(test::voxels<std::int8_t>(output)[0], -1);
    fail = true;
    EXPECT_THROW(filter.run(), ExceptionCancelation);
    EXPECT_EQ(filter.inputImage.get(), &input);
    EXPECT_EQ(filter.outputImage.get(), &output);
    cuda::CudaBoxFilter2d::getClassInfo()->removeRunner(runner);
}
