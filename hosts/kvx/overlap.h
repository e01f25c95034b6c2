// Nothing that a run reads may be written by it.
#ifndef KVX_HOSTS_KVX_OVERLAP_H_
#define KVX_HOSTS_KVX_OVERLAP_H_

#include <string>
#include <vector>

namespace kvx {

// Throws a usage error if one of `outputs`, names of files, or a file that the pattern `outputPattern` (may be empty)
// stands for, is one of the files `inputs`: the same file, whatever its path is.
void RefuseOverlap(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs,
                   const std::string& outputPattern = "");

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_OVERLAP_H_
