// Pictures in rows and columns, each with a caption.
#ifndef KVX_HOSTS_KVX_LABELLED_GRID_H_
#define KVX_HOSTS_KVX_LABELLED_GRID_H_

#include <string>

#include "codecs/picture.h"

namespace kvx {

class LabelledGrid {
 public:
  // Cells are `cellWidth` wide and have the ratio of a picture of `width` by `height`.
  LabelledGrid(int count, int columns, int cellWidth, int32_t width, int32_t height);

  // Puts the picture, over a checkerboard where it is transparent, into the next cell.
  void Add(const Picture& picture, const std::string& caption);

  const Picture& Sheet() const { return sheet_; }

 private:
  int columns_;
  int cellWidth_;
  int cellHeight_;
  int next_ = 0;
  Picture sheet_;
};

// The picture over a checkerboard, opaque.
Picture OverCheckerboard(const Picture& picture);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_LABELLED_GRID_H_
