// The browser pages that are open, so that what nobody waits for any more is not worked on.
#ifndef KVX_HOSTS_KVX_STUDIO_PAGES_H_
#define KVX_HOSTS_KVX_STUDIO_PAGES_H_

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace kvx {

// One page. It is open as long as it holds a stream of events.
struct Page {
  std::atomic<int> streams{0};
  std::atomic<int64_t> closedAt{0};  // milliseconds; the last time that the page was seen
  std::atomic<uint64_t> newest{0};   // number of its newest request for a preview

  // Closed for so long that it is not being loaded anew.
  bool IsGone(int64_t graceMilliseconds) const;
  void Seen();
  // `number` is the page's newest request from now on, unless there is a newer one.
  void Ask(uint64_t number);
};

class Pages {
 public:
  static constexpr size_t kMost = 16;
  static constexpr int kMostStreams = 8;

  // The page of this name, which is made if it is not known. The longest closed one is forgotten if there are too many;
  // null if all are open. Names are short and plain, else null.
  std::shared_ptr<Page> Find(const std::string& name);
  // False if there are too many streams.
  bool OpenStream(Page& page);
  void CloseStream(Page& page);

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<Page>> pages_;
  int streams_ = 0;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_PAGES_H_
