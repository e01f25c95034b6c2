// What stands behind the handles of kvx.h, and how failures reach the caller.
#ifndef KVX_HOSTS_C_HANDLES_H_
#define KVX_HOSTS_C_HANDLES_H_

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "hostkit/plugin.h"
#include "kvx/kvx.h"

namespace kvx {

// A share of the plug-in, of which a process has one. The last share that ends unloads it; nobody opens meanwhile.
class SharedPlugin {
 public:
  explicit SharedPlugin(const PluginOptions& options);
  SharedPlugin(const SharedPlugin& other);
  ~SharedPlugin();
  SharedPlugin& operator=(const SharedPlugin&) = delete;

  Plugin* operator->() const { return plugin_.get(); }

 private:
  std::shared_ptr<Plugin> plugin_;
};

// Remembers `line` as the calling thread's last failure and returns `status`. Allocates nothing.
int32_t Fail(int32_t status, const char* line) noexcept;
int32_t StatusOf(const Error& error) noexcept;

// Runs `work`, whose result is a status or an index. Whatever it throws becomes a status.
template <typename Work>
int32_t Guarded(Work work) noexcept {
  try {
    return work();
  } catch (const Error& error) {
    return Fail(StatusOf(error), error.what());
  } catch (const std::bad_alloc&) {
    return Fail(KVX_NO_MEMORY, "not enough memory");
  } catch (const std::exception& error) {
    return Fail(KVX_FAILED, error.what());
  } catch (...) {
    return Fail(KVX_FAILED, "an unknown failure");
  }
}

// `from` as this library knows the structure: what the caller's form does not have stays as in `defaults`.
template <typename Struct>
Struct TakeStruct(const Struct* from, Struct defaults) {
  if (!from) return defaults;
  if (from->size < sizeof from->size) throw UsageError("the structure's size is not set");
  std::memcpy(&defaults, from, std::min<size_t>(from->size, sizeof defaults));
  return defaults;
}

// `to` gets what its size has room for, and zeros where it is larger than the structure that this library knows.
template <typename Struct>
void FillStruct(Struct* to, Struct known) {
  if (!to || to->size < sizeof to->size) throw UsageError("the structure's size is not set");
  known.size = to->size;
  const size_t filled = std::min<size_t>(to->size, sizeof known);
  std::memcpy(to, &known, filled);
  std::memset(reinterpret_cast<uint8_t*>(to) + filled, 0, to->size - filled);
}

}  // namespace kvx

struct kvx_library {
  kvx::SharedPlugin plugin;
};

#endif  // KVX_HOSTS_C_HANDLES_H_
