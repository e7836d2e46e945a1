#include "Device/Streams.h"

#include <algorithm>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Device/Devices.h"
#include "Device/ExceptionStatus.h"
#include "Device/Settings.h"

namespace zel::host {
namespace {

struct QueuedWork {
    CUstream_st* stream;
    std::function<void()> work;
};

/// A device's default stream and, in deferred mode, the queued work of all of its streams in the order of the calls.
struct DeviceQueue {
    explicit DeviceQueue(int device) : defaultStream(device) {}

    CUstream_st defaultStream;
    std::mutex mutex;
    std::list<QueuedWork> queue;
};

struct StreamTable {
    std::mutex mutex;
    std::unordered_map<CUstream_st*, std::unique_ptr<CUstream_st>> live;
    /// Ended by a reset. Kept, so that no new stream takes an old handle.
    std::vector<std::unique_ptr<CUstream_st>> retired;
    std::vector<std::unique_ptr<DeviceQueue>> devices;

    StreamTable() {
        for (int device = 0; device < maxDevices; ++device) devices.push_back(std::make_unique<DeviceQueue>(device));
    }
};

StreamTable& table() {
    static StreamTable& streams = *new StreamTable;
    return streams;
}

DeviceQueue& queueOf(const CUstream_st& stream) {
    return *table().devices[stream.device];
}

void keepFirst(cudaError_t& status, cudaError_t next) {
    if (status == cudaSuccess) status = next;
}

/// Takes one piece of work off the queue and runs it.
cudaError_t runQueued(DeviceQueue& device, std::list<QueuedWork>::iterator item) {
    const std::function<void()> work = std::move(item->work);
    device.queue.erase(item);
    return guarded<CallFamily::runtime>([&] {
        const OpenMemory opened;
        work();
        return cudaSuccess;
    });
}

cudaError_t runAll(DeviceQueue& device) {
    const std::lock_guard lock(device.mutex);
    cudaError_t status = cudaSuccess;
    while (!device.queue.empty()) keepFirst(status, runQueued(device, device.queue.begin()));
    return status;
}

}  // namespace

std::uint64_t liveStreams() {
    const std::lock_guard lock(table().mutex);
    return table().live.size();
}

cudaStream_t createStream(int device) {
    auto stream = std::make_unique<CUstream_st>(device);
    CUstream_st* const handle = stream.get();
    const std::lock_guard lock(table().mutex);
    table().live.emplace(handle, std::move(stream));
    return handle;
}

cudaError_t destroyStream(cudaStream_t stream) {
    const cudaError_t status = synchronizeStream(*stream);
    const std::lock_guard lock(table().mutex);
    table().live.erase(stream);
    return status;
}

bool isRetiredStream(cudaStream_t stream) {
    const std::lock_guard lock(table().mutex);
    return std::ranges::any_of(table().retired, [&](const auto& old) { return old.get() == stream; });
}

bool isStream(cudaStream_t stream) {
    if (stream == nullptr) return true;
    const std::lock_guard lock(table().mutex);
    return table().live.contains(stream);
}

CUstream_st& streamOf(cudaStream_t stream) {
    return stream != nullptr ? *stream : table().devices[currentDevice()]->defaultStream;
}

void enqueue(cudaStream_t stream, std::function<void()> work) {
    submit(stream, std::move(work));
}

void defer(CUstream_st& stream, std::function<void()> work) {
    DeviceQueue& device = queueOf(stream);
    const std::lock_guard lock(device.mutex);
    device.queue.push_back({&stream, std::move(work)});
}

// The default stream waits for all earlier work of the device, and all later work for it. So all that was queued before
// the last default work which this stream waits for runs in order, and behind it only the stream's own.
cudaError_t synchronizeStream(CUstream_st& stream) {
    DeviceQueue& device = queueOf(stream);
    const std::lock_guard lock(device.mutex);
    cudaError_t status = cudaSuccess;
    auto& queue = device.queue;
    const auto ofStream = [&](const QueuedWork& item) { return item.stream == &stream; };
    const auto ofDefault = [&](const QueuedWork& item) { return item.stream == &device.defaultStream; };
    const auto last = std::find_if(queue.rbegin(), queue.rend(), ofStream);
    const auto barrier = std::find_if(last, queue.rend(), ofDefault).base();
    while (queue.begin() != barrier) keepFirst(status, runQueued(device, queue.begin()));
    for (auto item = queue.begin(); item != queue.end();) {
        const auto next = std::next(item);
        if (ofStream(*item)) keepFirst(status, runQueued(device, item));
        item = next;
    }
    return status;
}

cudaError_t synchronizeDevice(int device) {
    return runAll(*table().devices[device]);
}

cudaError_t runAllDeferredWork() {
    cudaError_t status = cudaSuccess;
    for (const auto& device : table().devices) keepFirst(status, runAll(*device));
    return status;
}

void discardStreams(int device) {
    StreamTable& streams = table();
    {
        DeviceQueue& queue = *streams.devices[device];
        const std::lock_guard lock(queue.mutex);
        queue.queue.clear();
    }
    const std::lock_guard lock(streams.mutex);
    for (auto it = streams.live.begin(); it != streams.live.end();) {
        if (it->first->device != device) {
            ++it;
            continue;
        }
        streams.retired.push_back(std::move(it->second));
        it = streams.live.erase(it);
    }
}

}  // namespace zel::host
