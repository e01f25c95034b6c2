#include "boundary/registry.h"

#include <atomic>
#include <new>
#include <utility>

#include "boundary/filter_probe.h"
#include "boundary/suite_store.h"
#include "catalogue/catalogue_loader.h"

namespace vizcore {

namespace {

std::atomic<PureCFilter*> g_instance{nullptr};

// Set at every load for those who reach filters through it; nothing in the plug-in does.
NLEPureCFilter* (*g_createFilterByName)(const char* guid) = nullptr;

std::once_flag& InstanceOnce() {
  static std::once_flag once;
  return once;
}

}  // namespace

PureCFilter* PureCFilter::GetInstance() {
  if (PureCFilter* instance = g_instance.load(std::memory_order_acquire)) return instance;
  std::call_once(InstanceOnce(), [] { g_instance.store(new PureCFilter, std::memory_order_release); });
  return g_instance.load(std::memory_order_acquire);
}

void PureCFilter::Destroy() {
  delete g_instance.exchange(nullptr);
}

void PureCFilter::LoadFilters() {
  g_createFilterByName = CreateFilterByName;
  HostUtilSuite* host = SuiteStore::Get().hostUtil;
  if (!host) return;
  try {
    LoadCatalogue(*host, [&](std::shared_ptr<NLEFilterInfo> info) {
      if (CreatePureCFilterFromInfo(host, info, false).exists) AddFilterInfo(std::move(info));
    });
  } catch (const std::bad_alloc&) {
    // Nothing rather than a part: the host can start anew once there is memory.
    byGuid_.clear();
    list_.clear();
    throw;
  }
}

void PureCFilter::AddFilterInfo(std::shared_ptr<NLEFilterInfo> info) {
  const std::lock_guard lock(mutex_);
  if (byGuid_.count(info->Name()) != 0) return;
  byGuid_[info->Guid()] = info;
  list_.push_back(std::move(info));
}

std::shared_ptr<NLEFilterInfo> PureCFilter::GetNLEFilterInfoByName(const std::string& guid) {
  const std::lock_guard lock(mutex_);
  const auto found = byGuid_.find(guid);
  return found == byGuid_.end() ? nullptr : found->second;
}

std::shared_ptr<NLEFilterInfo> PureCFilter::At(size_t index) const {
  return index < list_.size() ? list_[index] : nullptr;
}

NLEPureCFilter* CreateFilterByName(const char* guid) {
  PureCFilter* registry = PureCFilter::GetInstance();
  if (!registry || !guid) return nullptr;
  const std::shared_ptr<NLEFilterInfo> info = registry->GetNLEFilterInfoByName(guid);
  return CreatePureCFilterFromInfo(SuiteStore::Get().hostUtil, info, true).filter.release();
}

}  // namespace vizcore
