#include "Runs/VoxelTypeOption.h"

#include "Runs/ChoiceOption.h"

namespace zel::tool {

CLI::Option* addVoxelTypeOption(CLI::App& app, const OptionWords& words, std::optional<VoxelTypes>& type) {
    std::vector<Choice<VoxelTypes>> choices;
    for (const VoxelTypes one : allVoxelTypes) choices.push_back({std::string(voxelTypeName(one)), one});
    return addChoiceOption(app, words, choices, [&type](VoxelTypes chosen) { type = chosen; });
}

}  // namespace zel::tool
