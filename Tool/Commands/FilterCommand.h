#pragma once

#include <optional>

#include "Commands/Command.h"
#include "Runs/FilterFiles.h"
#include "Runs/FilterRun.h"

namespace zel::tool {

/// A command that filters an image file, with any algorithm.
class AnyFilterCommand : public Command {
public:
    void addOptions(CLI::App& app) final;
    int run() final;

    /// Adds the options that set the algorithm's own parameters.
    virtual void addParameters(CLI::App& app) = 0;
    /// Whether the algorithm takes images of that type.
    virtual bool takesType(VoxelTypes type) const = 0;
    /// Whether there is a --tile.
    virtual bool takesTiles() const = 0;
    /// What a run of the algorithm covers.
    virtual RunPart part() const = 0;

    /// An image for the result: of the input's size and position, and of the type that the options ask for.
    HostImage makeOutput(const ImageModel& input) const;
    /// Filters an image in memory. @throws as runFilter does.
    virtual RunReport filter(const ImageModel& input, ImageModel& output, const RunOptions& options) = 0;

protected:
    /// What options together may not say, found before a file is read. @throws CLI::ValidationError
    virtual void checkOptions() const {}
    /// The same, when the input is known, and whatever depends on it.
    virtual void takeInput(const ImageModel&) {}

    std::optional<VoxelTypes> outputType_;  ///< default: the input's type

private:
    void filterFile(const FilterFiles& files);
    void warnOfOddAxes(const std::string& path, const HostImage& input, const FileDetails& details) const;

    const CLI::App* app_ = nullptr;
    FileArguments files_;
    FileDetails details_;
    RunOptions options_;
};

/// A filter's command says its name, its description and its parameters' options, which set the algorithm's properties
/// directly.
template <typename Algorithm>
class FilterCommand : public AnyFilterCommand {
public:
    RunReport filter(const ImageModel& input, ImageModel& output, const RunOptions& options) override {
        return runFilter(algorithm_, input, output, options, [this](const ImageModel& part) { prepare(part); });
    }
    bool takesTiles() const final { return TakesTiles<Algorithm>; }
    RunPart part() const final { return partOf(algorithm_); }

    bool takesType(VoxelTypes type) const final {
        const auto isAmong = [&]<typename... T>(TypeList<T...>) { return ((type == voxelTypeOf<T>) || ...); };
        return isAmong(typename Algorithm::InstanceTypes{}) || isAmong(typename Algorithm::TypesAsFloat{});
    }

protected:
    /// Before each run of the algorithm: on a slice, or on a volume.
    virtual void prepare(const ImageModel&) {}

    Algorithm algorithm_;
};

}  // namespace zel::tool
