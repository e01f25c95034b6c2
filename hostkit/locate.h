// Where plug-in and resources lie.
#ifndef KVX_HOSTKIT_LOCATE_H_
#define KVX_HOSTKIT_LOCATE_H_

#include <string>

namespace kvx {

// The file that this code was linked into: an executable, or the module or library that some program loaded. Links are
// resolved.
std::string OwnBinary();

// Found from where that file lies, going up from its folder, in the build tree and in an installed tree alike. The
// environment's KVX_PLUGIN and KVX_RESOURCES go first. If nothing is found the path is the nearest place looked at.
std::string DefaultPluginPath();
std::string DefaultResourceRoot();

}  // namespace kvx

#endif  // KVX_HOSTKIT_LOCATE_H_
