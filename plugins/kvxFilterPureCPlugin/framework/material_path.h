// Where material images lie.
#ifndef KVX_FRAMEWORK_MATERIAL_PATH_H_
#define KVX_FRAMEWORK_MATERIAL_PATH_H_

#include <string>
#include <string_view>

// The caller's path, then "\Merge\"; empty until `SetMergeImagePath` was called. A material's path is this text
// followed directly by the file name.
std::u16string MergeImageDir();

// The path of the material with this ASCII file name.
std::u16string MaterialPath(std::string_view fileName);

// The caller's path, then "\Shader", without a separator at its end. Nothing in the plug-in reads it.
std::u16string ShaderDir();

#endif  // KVX_FRAMEWORK_MATERIAL_PATH_H_
