#pragma once

#include <memory>

#include "zel/BaseAlgorithm.h"
#include "zel/CudaContext.h"
#include "zel/ImageModel.h"
#include "zel/Property.h"
#include "zel/RunPlan.h"
#include "zel/Vector.h"

namespace zel {

class AdaptedImages;

/// An algorithm that the first available runner of its class carries out. Each class tells which voxel types its input
/// may have: those that runners have kernels for, and those whose every value is exact in float32. Images of the latter
/// are handed to the runner as float32; the properties are as before afterwards. All other types are refused.
class ZEL_API RunnerAlgorithm : public BaseAlgorithm {
public:
    using InstanceTypes = KernelTypes;
    using TypesAsFloat = TypeList<>;

    ~RunnerAlgorithm() override;

    /// Steps, tiles and device memory of a run with the properties as they are. Of the images only size, type and place
    /// are looked at. Not while the object is running.
    /// @throws RuntimeError as run() does where properties are bad or no runner is available.
    RunPlan plan();

protected:
    explicit RunnerAlgorithm(AbstractPrivateImplementation* parent = nullptr);

    void execute() final;
    /// Puts adapters into the image properties for the length of a run; null when none is needed.
    virtual std::unique_ptr<AdaptedImages> adaptImages();
};

}  // namespace zel
