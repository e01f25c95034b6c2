#include "hosts/mlt/frame_place.h"

#include <algorithm>

namespace kvx {

namespace {

// A clip, a cut of one, a track or a timeline.
mlt_producer AsProducer(mlt_service service) {
  switch (service ? mlt_service_identify(service) : mlt_service_invalid_type) {
    case mlt_service_producer_type:
    case mlt_service_playlist_type:
    case mlt_service_tractor_type:
    case mlt_service_multitrack_type:
    case mlt_service_chain_type:
      return reinterpret_cast<mlt_producer>(service);
    default:
      return nullptr;
  }
}

// What the filter is attached to, or planted behind; null if unknown.
mlt_producer FindHost(mlt_filter filter) {
  // MLT notes it when it attaches a filter.
  mlt_properties properties = MLT_FILTER_PROPERTIES(filter);
  auto service = static_cast<mlt_service>(mlt_properties_get_data(properties, "service", nullptr));
  if (!service) service = mlt_service_producer(MLT_FILTER_SERVICE(filter));
  while (service && !AsProducer(service)) service = mlt_service_producer(service);
  return AsProducer(service);
}

}  // namespace

FilterPlace FindPlace(mlt_filter filter, mlt_frame frame) {
  FilterPlace place{};
  place.keyframes = {mlt_filter_get_position(filter, frame), mlt_filter_get_length2(filter, frame)};
  const int in = mlt_filter_get_in(filter);
  const int out = mlt_filter_get_out(filter);
  const int position = place.keyframes.position + in;
  int start = in;
  int total = 0;
  if (out > 0) {
    total = out - in + 1;
  } else if (const mlt_producer host = FindHost(filter)) {
    // Frames of a cut count from the start of the whole clip, frames of anything else from its own start.
    if (mlt_producer_is_cut(host)) start = std::max(in, mlt_producer_get_in(host));
    const int end = mlt_producer_is_cut(host) ? mlt_producer_get_out(host) + 1 : mlt_producer_get_playtime(host);
    total = end - start;
  }
  place.frame = {std::max(0, position - start), std::max(0, total)};
  const mlt_profile profile = mlt_service_profile(MLT_FILTER_SERVICE(filter));
  place.fps = profile ? mlt_profile_fps(profile) : 0;
  return place;
}

}  // namespace kvx
