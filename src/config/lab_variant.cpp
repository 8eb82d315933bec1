#include "config/lab_variant.h"

std::vector<const LabVariant*> labVariantTypes()
{
    std::vector<const LabVariant*> types;
    for (const auto& variant : Registry<LabVariant>::all())
        types.push_back(variant.get());
    return types;
}
