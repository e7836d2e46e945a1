#include "Demo/DemoCases.h"

#include "Demo/DemoPicture.h"
#include "Demo/DemoVolume.h"

namespace zel::tool {

std::string DemoCase::title(const char* separator) const {
    return std::string(command) + (*variant != '\0' ? separator : "") + variant;
}

// A new filter needs a line for each subject that it is for.
std::vector<DemoSection> demoSections() {
    return {
        {{"picture", "", ".png", makeDemoPicture},
         {
             {"box-filter", "--kernel 9,9"},
             {"median-filter", "--radius 3"},
             {"gaussian-filter", "--sigma 3,3,0"},
             {"gaussian-filter", "--sigma 8,0,0", "x"},
             {"non-local-means", "--range-sigma 0.15"},
             {"erosion", "--radius 3 --neighborhood square", "square"},
             {"erosion", "--radius 5 --neighborhood diamond", "diamond"},
             {"dilation", "--radius 3 --neighborhood square", "square"},
             {"dilation", "--radius 5 --neighborhood diamond", "diamond"},
             {"opening", "--radius 3 --neighborhood square", "square"},
             {"opening", "--radius 5 --neighborhood diamond", "diamond"},
             {"closing", "--radius 3 --neighborhood square", "square"},
             {"closing", "--radius 5 --neighborhood diamond", "diamond"},
         },
         {
             {"--mode mean-removed", 356, 98, 64, 60},  // the middle of the rings
         }},
        {{"volume", "volume-", ".tif", makeDemoVolume},
         {
             {"box-filter", "--kernel 9,9"},
             {"median-filter", "--radius 3"},
             {"gaussian-filter", "--sigma 1.5,1.5,1.5"},
             {"non-local-means", "--range-sigma 0.2"},
             {"opening", "--radius 2 --neighborhood square", "square"},
         },
         {
             {"", 22, 66, 20, 20, 9, 20},  // a piece of the rod
         }},
    };
}

}  // namespace zel::tool
