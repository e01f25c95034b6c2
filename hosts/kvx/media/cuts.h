// Which of the frames where a clip may be cut are taken.
#ifndef KVX_HOSTS_KVX_MEDIA_CUTS_H_
#define KVX_HOSTS_KVX_MEDIA_CUTS_H_

#include <vector>

#include "hosts/kvx/media/video_pieces.h"

namespace kvx {

// Is offered the places in order and holds some thousands of them, however long the clip is.
class CutPicker {
 public:
  explicit CutPicker(const CutWish& wish) : wish_(wish) {}
  void Offer(const Cut& cut);
  // For a clip of so many frames.
  std::vector<Cut> Pick(int64_t frames) const;

 private:
  CutWish wish_;
  std::vector<Cut> places_;
  int64_t stride_ = 1;  // between two places that are held, where the number of pieces is wished
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_CUTS_H_
