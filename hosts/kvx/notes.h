// What a run tells beside its result: one line each on stderr.
#ifndef KVX_HOSTS_KVX_NOTES_H_
#define KVX_HOSTS_KVX_NOTES_H_

#include <string>

namespace kvx {

// Something that could not be kept, or was done otherwise than asked. Said once: the same line is not repeated.
void Note(const std::string& line);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_NOTES_H_
