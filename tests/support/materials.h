// Material directories for tests.
#ifndef KVX_TESTS_SUPPORT_MATERIALS_H_
#define KVX_TESTS_SUPPORT_MATERIALS_H_

#include <string>

#include "codecs/picture.h"
#include "framework/factory/effect_table.h"
#include "kvx/exports.h"
#include "platform/text.h"
#include "tests/support/fake_host.h"

// The material directory for the length of a test: empty at first, and none at all afterwards.
class TemporaryMaterials {
 public:
  TemporaryMaterials() { SetMergeImagePath(WidenUtf8(directory_.Path().string())->c_str()); }
  ~TemporaryMaterials() { SetMergeImagePath(nullptr); }

  std::string Directory() const { return (directory_.Path() / "Merge").string(); }
  void Write(const std::string& name, const std::string& content) const { directory_.Write("Merge/" + name, content); }
  void Write(const std::string& name, const kvx::Picture& picture) const {
    Write(name, name.ends_with(".png") ? kvx::EncodePng(picture) : kvx::EncodeJpeg(picture));
  }

 private:
  const TemporaryDirectory directory_;
};

// A small picture under every name in the effect table. All are PNG inside: content decides, not the name.
class SmallMaterials : public TemporaryMaterials {
 public:
  SmallMaterials() {
    FrameBuffer frame(24, 16);
    kvx::Picture picture(24, 16);
    uint32_t seed = 0;
    for (const EffectRow& row : EffectRows()) {
      for (const char* name : row.materials) {
        if (!name) continue;
        frame.FillTestPicture(++seed);
        picture.pixels = frame.Packed();
        Write(name, kvx::EncodePng(picture));
      }
    }
  }
};

// Every pixel the same.
inline kvx::Picture PlainPicture(int32_t width, int32_t height, uint8_t b, uint8_t g, uint8_t r, uint8_t a) {
  kvx::Picture picture(width, height);
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    picture.pixels[i] = b;
    picture.pixels[i + 1] = g;
    picture.pixels[i + 2] = r;
    picture.pixels[i + 3] = a;
  }
  return picture;
}

#endif  // KVX_TESTS_SUPPORT_MATERIALS_H_
