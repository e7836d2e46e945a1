#pragma once

#include "MatchingGeometry.h"
#include "zel/AbstractPrivateImplementation.h"
#include "zel/TemplateTransformation.h"
#include "zel/TemporaryImage.h"
#include "zel/children/ResampleAffine3d.h"
#include "zel/children/Resize3d.h"

namespace zel::cuda {

/// What bringing a template or a mask into its form under one row of the table needs, and what comes out of it.
struct TemplateTransformation {
    explicit TemplateTransformation(AbstractPrivateImplementation* run) : implementation(run) {}

    AbstractPrivateImplementation* implementation;
    bool maskFollows = false;  ///< whether the mask turns with the template
    Size3 paddedSize{};        ///< what a transformed template has to fit in
    Spacing3 imageSpacing{};
    Size3 currentTemplateSize{};      ///< of the result
    TemplateTransformationInfo info;  ///< the row
    RefImpl<Resize3d> resizeAlgorithm;
    RefImpl<ResampleAffine3d> resampleAlgorithm;
    RefImpl<TemporaryImage> resizedTemplate;  ///< in between resizing and turning
};

/// Voxels of an image under the row's scale, brought from one voxel size to another.
Size3 scaledSize(const Size3& size, const TemplateTransformationInfo& info, const Spacing3& from, const Spacing3& to);

/// Resizes an image to the row's scale and the searched image's voxel size, and turns it about its centre by
/// Rz(phi) Rx(theta) Rz(psi). Under a turn the result keeps its size unless the mask follows or the row scales; then it
/// is the bounding box of the turned image. On the host; two steps of the run.
/// @param source       lies at the world's origin.
/// @param destination  image of a TemporaryImage.
/// @throws RuntimeError when the result is larger than paddedSize.
void transformTemplate(TemplateTransformation& context, const ImageModel& source, ImageModel& destination);

}  // namespace zel::cuda
