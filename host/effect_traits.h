// What a person or a pipeline wants to know of an effect and the boundary does not tell.
#ifndef KVX_HOST_EFFECT_TRAITS_H_
#define KVX_HOST_EFFECT_TRAITS_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The family that an effect is listed under, such as "colour looks".
std::string_view FamilyOf(int32_t effectId);

// All families, in the order in which they are shown.
std::span<const std::string_view> Families();

// True if a frame depends on nothing but its own pixels, number and parameters, so that frames can be rendered in any
// order.
bool IsStatelessEffect(int32_t effectId);

// Names of the picture files that the effect reads, below "Merge" of the material directory.
std::vector<std::string> MaterialsOf(int32_t effectId);

// True if the effect reads picture files of the resource root.
bool UsesMaterial(int32_t effectId);

#endif  // KVX_HOST_EFFECT_TRAITS_H_
