// Whether our adapters for other programs are there, beside this binary or where those programs look.
#ifndef KVX_HOSTS_KVX_STUDIO_ADAPTERS_H_
#define KVX_HOSTS_KVX_STUDIO_ADAPTERS_H_

namespace kvx {

bool HasGstModule();
bool HasMltModule();

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_ADAPTERS_H_
