// The effects that a user marked, kept from run to run.
#ifndef KVX_HOSTS_KVX_STUDIO_FAVOURITES_H_
#define KVX_HOSTS_KVX_STUDIO_FAVOURITES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

// In $XDG_CONFIG_HOME/kvx/favourites.json, or below ~/.config. No file, or one that is none of ours: no favourites.
std::vector<int32_t> ReadFavourites();
// Throws Error.
void WriteFavourites(const std::vector<int32_t>& ids);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_FAVOURITES_H_
