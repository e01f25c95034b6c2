// Standard output that tells when it could not be written.
#ifndef KVX_HOSTS_KVX_STANDARD_OUTPUT_H_
#define KVX_HOSTS_KVX_STANDARD_OUTPUT_H_

#include <cstddef>
#include <string_view>

namespace kvx {

// Makes sure that the three standard streams stand for something, so that no file of the run takes a closed one's
// place.
void GuardStandardStreams();

// All throw Error with the cause.
void WriteStandardOutput(const void* bytes, size_t size);
void FlushStandardOutput();
void Print(std::string_view text);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STANDARD_OUTPUT_H_
