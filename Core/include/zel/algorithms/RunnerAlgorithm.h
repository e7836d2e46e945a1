#pragma once

#include <memory>

#include "zel/BaseAlgorithm.h"
#include "zel/CudaContext.h"
#include "zel/ImageModel.h"
#include "zel/Property.h"
#include "zel/Vector.h"

namespace zel {

class AdaptedImages;

/// An algorithm that a registered runner carries out. Images of a voxel type that runners do not know, but whose every
/// value is exact in another type, are handed to the runner as that type; the properties are as before afterwards.
class ZEL_API RunnerAlgorithm : public BaseAlgorithm {
public:
    ~RunnerAlgorithm() override;

protected:
    RunnerAlgorithm();

    void execute() final;
    /// Puts adapters into the image properties for the length of a run; null when none is needed.
    virtual std::unique_ptr<AdaptedImages> adaptImages();
};

}  // namespace zel
