// `kvx farm join`: the results of all pieces, put where they belong.
#ifndef KVX_HOSTS_KVX_FARM_JOIN_H_
#define KVX_HOSTS_KVX_FARM_JOIN_H_

#include <string>

namespace kvx {

// Everything is checked before it counts: frames, sizes and checksums. `wait`: until every piece is there. Can be done
// again. False if an input was damaged, which is said. Throws Error, which names the pieces that are missing or
// damaged.
bool JoinJob(const std::string& folder, bool wait);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_JOIN_H_
