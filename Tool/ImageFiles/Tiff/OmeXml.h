#pragma once

#include <string>
#include <string_view>

#include "zel/HostImage.h"

// The few things that are needed of the XML in which OME-TIFF describes its pages.

namespace zel::tool {

/// Whether a page's description is OME's.
bool isOmeXml(std::string_view description);

/// The next start tag "<name ...>", with or without a namespace, from `position` on, which is moved behind it; empty
/// when there is none.
std::string_view nextOmeTag(std::string_view xml, std::string_view name, std::size_t& position);

/// The value of a tag's attribute; empty when it has none.
std::string_view omeAttribute(std::string_view tag, std::string_view name);
/// The same as a whole number.
std::size_t omeNumber(std::string_view tag, std::string_view name, std::size_t ifMissing);

/// OME's name of a voxel type; empty when it has none.
std::string_view omeTypeName(VoxelTypes type);

/// The description for an image of the same axes and another type.
std::string omeXmlWithType(const std::string& xml, VoxelTypes type);

}  // namespace zel::tool
