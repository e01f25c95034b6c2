// The materials: every file with its painter, grouped by idea.
#ifndef KVX_PAINTER_MATERIALS_H_
#define KVX_PAINTER_MATERIALS_H_

#include <span>

#include "painter/canvas.h"

// Which row of the file the effect puts on top. Merge effects turn their material upside down, so theirs is stored
// bottom row first.
enum class Mount { kTopFirst, kBottomFirst };

struct Material {
  const char* fileName;
  Mount mount;
  Canvas (*paint)(cv::Size size);
};

std::span<const Material> Vignettes();
std::span<const Material> Lights();
std::span<const Material> Textures();
std::span<const Material> Water();
std::span<const Material> Sketches();
std::span<const Material> Finders();
std::span<const Material> Stages();

#endif  // KVX_PAINTER_MATERIALS_H_
