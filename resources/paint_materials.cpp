// Paints the pictures that the overlay effects read. Run by the build; the same pictures every time.
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "codecs/picture.h"
#include "painter/materials.h"

namespace {

struct Group {
  std::string_view name;
  std::span<const Material> (*materials)();
};
constexpr Group kGroups[] = {{"vignettes", Vignettes}, {"lights", Lights},   {"textures", Textures}, {"water", Water},
                             {"sketches", Sketches},   {"finders", Finders}, {"stages", Stages}};

cv::Size SizeOf(std::string_view fileName) {
  return fileName.find("4_3") == std::string_view::npos ? cv::Size(1920, 1080) : cv::Size(1440, 1080);
}

// Half a step of noise keeps slow gradients free of bands.
kvx::Picture ToBytes(const Canvas& canvas, Mount mount) {
  kvx::Picture picture(canvas.cols, canvas.rows);
  Dice dice(20);
  for (int y = 0; y < canvas.rows; ++y) {
    const Pixel* in = canvas[mount == Mount::kTopFirst ? y : canvas.rows - 1 - y];
    uint8_t* out = picture.Row(y);
    for (int x = 0; x < canvas.cols; ++x) {
      const float dither = dice.Next();
      for (int c = 0; c < 4; ++c) *out++ = static_cast<uint8_t>(Clamp01(in[x][c]) * 254.999f + (c < 3 ? dither : 0.5f));
    }
  }
  return picture;
}

bool Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !bytes.empty() && file.good();
}

bool PaintGroup(const Group& group, const std::filesystem::path& directory) {
  for (const Material& material : group.materials()) {
    const std::string_view name = material.fileName;
    const kvx::Picture picture = ToBytes(material.paint(SizeOf(name)), material.mount);
    const std::string bytes = name.ends_with(".png") ? kvx::EncodeSmallPng(picture) : kvx::EncodeJpeg(picture, 93);
    if (!Write(directory / name, bytes)) {
      std::fprintf(stderr, "paint_materials: cannot write %s\n", (directory / name).c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

// paint_materials DIRECTORY GROUP...
int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: paint_materials DIRECTORY GROUP...\n");
    return 2;
  }
  cv::setNumThreads(1);  // the build runs the groups side by side
  try {
    std::filesystem::create_directories(argv[1]);
    for (int i = 2; i < argc; ++i) {
      bool found = false;
      for (const Group& group : kGroups) {
        if (group.name != argv[i]) continue;
        found = true;
        if (!PaintGroup(group, argv[1])) return 1;
      }
      if (!found) {
        std::fprintf(stderr, "paint_materials: no group %s\n", argv[i]);
        return 2;
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "paint_materials: %s\n", error.what());
    return 1;
  }
  return 0;
}
