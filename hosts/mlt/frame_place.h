// Where a frame stands in what a filter is put on.
#ifndef KVX_HOSTS_MLT_FRAME_PLACE_H_
#define KVX_HOSTS_MLT_FRAME_PLACE_H_

#include <framework/mlt.h>

#include "hostkit/plugin.h"
#include "hosts/mlt/values.h"

namespace kvx {

struct FilterPlace {
  FramePlace frame;         // counted from the filter's `in`, or from the start of the clip that it is put on
  KeyframePlace keyframes;  // as MLT's own filters count
  double fps;               // 0 if unknown
};

// For a frame that the filter has processed.
FilterPlace FindPlace(mlt_filter filter, mlt_frame frame);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_FRAME_PLACE_H_
