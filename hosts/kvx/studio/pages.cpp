#include "hosts/kvx/studio/pages.h"

#include <algorithm>
#include <cctype>
#include <chrono>

namespace kvx {

namespace {

int64_t Now() {
  using std::chrono::milliseconds;
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool IsPlain(const std::string& name) {
  return !name.empty() && name.size() <= 40 &&
         std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) || c == '-'; });
}

}  // namespace

bool Page::IsGone(int64_t graceMilliseconds) const {
  return streams == 0 && Now() - closedAt > graceMilliseconds;
}

void Page::Seen() {
  closedAt = Now();
}

void Page::Ask(uint64_t number) {
  uint64_t known = newest;
  while (known < number && !newest.compare_exchange_weak(known, number)) {
  }
}

std::shared_ptr<Page> Pages::Find(const std::string& name) {
  if (!IsPlain(name)) return nullptr;
  const std::lock_guard lock(mutex_);
  auto found = pages_.find(name);
  if (found == pages_.end()) {
    if (pages_.size() >= kMost) {
      auto oldest = pages_.end();
      for (auto at = pages_.begin(); at != pages_.end(); ++at) {
        if (at->second->streams > 0) continue;
        if (oldest == pages_.end() || at->second->closedAt < oldest->second->closedAt) oldest = at;
      }
      if (oldest == pages_.end()) return nullptr;
      pages_.erase(oldest);
    }
    found = pages_.emplace(name, std::make_shared<Page>()).first;
  }
  found->second->Seen();
  return found->second;
}

bool Pages::OpenStream(Page& page) {
  const std::lock_guard lock(mutex_);
  if (streams_ >= kMostStreams) return false;
  ++streams_;
  ++page.streams;
  return true;
}

void Pages::CloseStream(Page& page) {
  const std::lock_guard lock(mutex_);
  --streams_;
  page.Seen();
  --page.streams;
}

}  // namespace kvx
