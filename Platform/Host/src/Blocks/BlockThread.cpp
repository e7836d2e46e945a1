#include "Blocks/BlockThread.h"

#include <boost/context/protected_fixedsize_stack.hpp>
#include <memory>
#include <utility>

namespace zel::host {
namespace {

struct Abandoned {};

}  // namespace

BlockThread::BlockThread()
    : fiber_(std::allocator_arg, boost::context::protected_fixedsize_stack(256 << 10),
             [this](boost::context::fiber&& caller) { return run(std::move(caller)); }) {}

BlockThread::~BlockThread() {
    dismissed_ = true;
    resume();
}

void BlockThread::enter(const KernelCall& kernel, uint3 index, LaunchOrder& launch, BlockOrder& block) {
    kernel_ = &kernel;
    index_ = index;
    launch_ = &launch;
    block_ = &block;
    barriers_ = 0;
    ended_ = abandoned_ = false;
    failure_ = nullptr;
    sanitized_.rename(blockIdx, index);
}

void BlockThread::resume() {
    threadIdx = index_;
    sanitized_.enter();
    fiber_ = std::move(fiber_).resume();
}

void BlockThread::abandon() {
    abandoned_ = true;
    resume();
}

void BlockThread::wait(std::source_location place) {
    SyncPoint& barrier = block_->barriers[barriers_ % 2];
    ++barriers_;
    place_ = place;
    barrier.release();
    yield();
    barrier.acquire();
    if (abandoned_) throw Abandoned();
}

void BlockThread::yield() {
    sanitized_.leave();
    caller_ = std::move(caller_).resume();
}

boost::context::fiber BlockThread::run(boost::context::fiber&& caller) {
    caller_ = std::move(caller);
    while (!dismissed_) {
        runKernel();
        yield();
    }
    sanitized_.leave();
    return std::move(caller_);
}

void BlockThread::runKernel() {
    launch_->begin.acquire();
    try {
        kernel_->runParts(kernel_->call, 1);
    } catch (const Abandoned&) {
    } catch (...) {
        failure_ = std::current_exception();
    }
    launch_->end.release();
    ended_ = true;
}

}  // namespace zel::host
