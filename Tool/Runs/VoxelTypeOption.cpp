#include "Runs/VoxelTypeOption.h"

namespace zel::tool {

CLI::Option* addVoxelTypeOption(CLI::App& app, const std::string& name, const std::string& description,
                                std::optional<VoxelTypes>& type) {
    const auto parse = [name, &type](const std::string& text) {
        type = voxelTypeFromName(text);
        if (type) return;
        std::string known;
        for (const VoxelTypes one : allVoxelTypes) known.append(known.empty() ? "" : ", ").append(voxelTypeName(one));
        throw CLI::ValidationError(name + " is '" + text + "', but takes one of " + known);
    };
    return app.add_option_function<std::string>(name, parse, description)->type_name("TYPE");
}

}  // namespace zel::tool
