// The image layer: what it decodes, what it refuses, how it stretches.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>
#include <turbojpeg.h>

#include <array>
#include <cstring>

#include "codecs/picture.h"
#include "platform/image.h"
#include "platform/stretch.h"
#include "platform/text.h"
#include "tests/support/fake_host.h"
#include "tests/support/targets.h"

using namespace kvx;

namespace {

void Append(png_structp png, png_bytep bytes, size_t count) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), count);
}

// A PNG of any kind; `rows` holds its packed rows one after the other.
std::string MakePng(uint32_t width, uint32_t height, int depth, int colorType, const std::string& rows,
                    bool interlaced = false) {
  std::string out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &out, Append, nullptr);
  png_set_IHDR(png, info, width, height, depth, colorType, interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (colorType == PNG_COLOR_TYPE_PALETTE) {
    const png_color palette[] = {{10, 20, 30}, {200, 100, 50}};
    const png_byte alpha[] = {255, 64};
    png_set_PLTE(png, info, palette, 2);
    png_set_tRNS(png, info, alpha, 2, nullptr);
  }
  png_write_info(png, info);
  const size_t step = png_get_rowbytes(png, info);
  for (int pass = 0; pass < png_set_interlace_handling(png); ++pass) {
    for (uint32_t y = 0; y < height; ++y) png_write_row(png, reinterpret_cast<png_const_bytep>(rows.data()) + y * step);
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return out;
}

std::string MakeJpeg(int width, int height, int format, int subsampling, int flags) {
  std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, 100);
  tjhandle handle = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(handle, pixels.data(), width, 0, height, format, &bytes, &size, subsampling, 95, flags), 0);
  const std::string out(reinterpret_cast<char*>(bytes), size);
  tjFree(bytes);
  tjDestroy(handle);
  return out;
}

std::vector<int> BytesOf(QKImage* image) {
  const uint8_t* bits = QK_ImageBits(image);
  const ptrdiff_t count = static_cast<ptrdiff_t>(QK_ImageStep(image)) * QK_ImageHeight(image);
  return std::vector<int>(bits, bits + count);
}

class ImageLayer : public testing::Test {
 protected:
  int32_t Load(const std::string& content) {
    dir_.Write("Merge/picture", content);
    return QK_ImageLoad(image_.get(), Path("picture"));
  }
  // With the backslashes of the material directory.
  std::u16string Path(const std::string& name) { return *WidenUtf8(dir_.Path().string() + "\\Merge\\" + name); }
  bool Empty() const { return !QK_ImageBits(image_.get()) && QK_ImageWidth(image_.get()) == 0; }

  const TemporaryDirectory dir_;
  const ImageHandle image_{QK_ImageCreate()};
};

TEST_F(ImageLayer, DecodesEveryKindOfPng) {
  ASSERT_TRUE(Load(MakePng(2, 1, 8, PNG_COLOR_TYPE_PALETTE, std::string("\0\1", 2))));
  EXPECT_EQ(BytesOf(image_.get()), (std::vector<int>{30, 20, 10, 255, 50, 100, 200, 64}));
  ASSERT_TRUE(Load(MakePng(2, 1, 1, PNG_COLOR_TYPE_GRAY, "\x40")));
  EXPECT_EQ(BytesOf(image_.get()), (std::vector<int>{0, 0, 0, 255, 255, 255, 255, 255}));
  ASSERT_TRUE(Load(MakePng(1, 1, 8, PNG_COLOR_TYPE_GRAY_ALPHA, "\x30\x60")));
  EXPECT_EQ(BytesOf(image_.get()), (std::vector<int>{0x30, 0x30, 0x30, 0x60}));
  ASSERT_TRUE(Load(MakePng(1, 1, 16, PNG_COLOR_TYPE_RGB_ALPHA, "\x11\xFF\x22\xFF\x33\xFF\x44\xFF")));
  EXPECT_EQ(BytesOf(image_.get()), (std::vector<int>{0x33, 0x22, 0x11, 0x44}));
  const std::string ramp = "abcdefghijklmnopqrstuvwxyz0";
  ASSERT_TRUE(Load(MakePng(3, 3, 8, PNG_COLOR_TYPE_RGB, ramp)));
  const std::vector<int> plain = BytesOf(image_.get());
  ASSERT_TRUE(Load(MakePng(3, 3, 8, PNG_COLOR_TYPE_RGB, ramp, true)));
  EXPECT_EQ(BytesOf(image_.get()), plain) << "interlaced";
  EXPECT_EQ(plain[35], 255);
}

TEST_F(ImageLayer, DecodesJpegsByContent) {
  for (const std::string& jpeg : {MakeJpeg(5, 3, TJPF_BGRX, TJSAMP_420, 0), MakeJpeg(5, 3, TJPF_BGRX, TJSAMP_GRAY, 0),
                                  MakeJpeg(5, 3, TJPF_BGRX, TJSAMP_444, TJFLAG_PROGRESSIVE)}) {
    ASSERT_TRUE(Load(jpeg));
    EXPECT_EQ(QK_ImageWidth(image_.get()), 5);
    EXPECT_EQ(QK_ImageHeight(image_.get()), 3);
    EXPECT_EQ(QK_ImageStep(image_.get()), 20);
    const std::vector<int> bytes = BytesOf(image_.get());
    EXPECT_NEAR(bytes[0], 100, 2);
    EXPECT_EQ(bytes[3], 255);
  }
  EXPECT_FALSE(Load(MakeJpeg(5, 3, TJPF_CMYK, TJSAMP_444, 0)));
}

TEST_F(ImageLayer, RefusesWhatIsNoPictureAndStaysUsable) {
  Picture noise(61, 47);
  for (size_t i = 0; i < noise.pixels.size(); ++i) noise.pixels[i] = static_cast<uint8_t>(i * i >> 5);
  const std::string png = EncodePng(noise), jpeg = EncodeJpeg(noise);
  for (const std::string& whole : {png, jpeg}) {
    ASSERT_TRUE(Load(whole));
    for (size_t length = 0; length < whole.size(); length += 997) {
      EXPECT_FALSE(Load(whole.substr(0, length))) << length;
      EXPECT_TRUE(Empty()) << "what it held before is gone";
    }
  }
  dir_.Write("Merge/folder/file", png);
  EXPECT_FALSE(QK_ImageLoad(image_.get(), Path("folder")));
  EXPECT_FALSE(QK_ImageLoad(image_.get(), Path("missing")));
  EXPECT_FALSE(QK_ImageLoad(image_.get(), u""));
  EXPECT_FALSE(Load(MakePng(20000, 20000, 1, PNG_COLOR_TYPE_GRAY, std::string(2500 * 20000, '\0'))));
  std::string huge = jpeg;  // 65500 by 65500 in the frame header
  const size_t frame = huge.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  huge.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
  EXPECT_FALSE(Load(huge));
  EXPECT_TRUE(Empty());
  ASSERT_TRUE(Load(png));
  EXPECT_TRUE(std::equal(noise.pixels.begin(), noise.pixels.end(), QK_ImageBits(image_.get())));
}

int64_t PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST_F(ImageLayer, MemoryFollowsTheFileAndNotItsClaims) {
  const int64_t before = PeakMegabytes();
  const std::string png = EncodePng(Picture(4, 4));
  const size_t afterHeader = png.find("IDAT") - 4;
  for (const char* kind : {"tEXt", "zTXt", "iTXt", "iCCP", "sPLT", "eXIf"}) {
    EXPECT_FALSE(Load(png.substr(0, afterHeader) + "\x7F\xFF\xFF\xF0" + kind + "abc")) << kind;
  }
  std::string late = png;  // something before the header
  EXPECT_FALSE(Load(late.insert(8, png.substr(png.size() - 12).replace(4, 4, "tEXt"))));
  for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
    std::string jpeg = MakeJpeg(5, 3, TJPF_BGRX, TJSAMP_420, flags);
    const size_t frame = jpeg.find(flags ? "\xFF\xC2" : "\xFF\xC0");
    ASSERT_NE(frame, std::string::npos);
    jpeg.replace(frame + 5, 4, std::string("\x40\0\x40\0", 4));
    EXPECT_FALSE(Load(jpeg));
  }
  EXPECT_LT(PeakMegabytes() - before, 200);
}

// The fewest bytes for the most pixels: nothing but one grey.
TEST_F(ImageLayer, DecodesTheSmallestJpegOfALargePicture) {
  for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
    ASSERT_TRUE(Load(MakeJpeg(2048, 2048, TJPF_BGRX, TJSAMP_GRAY, flags)));
    EXPECT_EQ(QK_ImageHeight(image_.get()), 2048);
  }
}

TEST_F(ImageLayer, StretchesOntoTheAllocatedSize) {
  Picture source(4, 2);
  for (size_t i = 0; i < source.pixels.size(); ++i) source.pixels[i] = static_cast<uint8_t>(i % 4 == 3 ? 255 : i * 5);
  ASSERT_TRUE(Load(EncodePng(source)));
  const ImageHandle onto(QK_ImageCreate());
  EXPECT_FALSE(QK_ImageStretch(image_.get(), onto.get(), 2)) << "nothing to stretch onto";
  QK_ImageAlloc(onto.get(), 2, 1, 32);
  EXPECT_EQ(BytesOf(onto.get()), std::vector<int>(8, 0));
  EXPECT_FALSE(QK_ImageStretch(image_.get(), onto.get(), 1));
  ASSERT_TRUE(QK_ImageStretch(image_.get(), onto.get(), 2));
  // Means of 2 by 2: columns 20 apart, rows 80 apart.
  EXPECT_EQ(BytesOf(onto.get()), (std::vector<int>{50, 55, 60, 255, 90, 95, 100, 255}));
  QK_ImageAlloc(onto.get(), 8, 2, 32);
  ASSERT_TRUE(QK_ImageStretch(image_.get(), onto.get(), 2));
  const std::vector<int> grown = BytesOf(onto.get());
  EXPECT_EQ((std::array{grown[0], grown[4], grown[8], grown[12]}), (std::array{0, 5, 15, 25}))
      << "linear between centres";
  QK_ImageAlloc(onto.get(), 4, 2, 32);
  ASSERT_TRUE(QK_ImageStretch(image_.get(), onto.get(), 2));
  EXPECT_EQ(BytesOf(onto.get()), BytesOf(image_.get()));
  const ImageHandle empty(QK_ImageCreate());
  EXPECT_FALSE(QK_ImageStretch(empty.get(), onto.get(), 2));
  EXPECT_EQ(BytesOf(onto.get()), BytesOf(image_.get())) << "left as it was";
}

// Noise at another size. The sums are those of OpenCV's resize on x86-64, which once did this.
TEST(Stretch, GivesTheSameBytesOnEveryMachine) {
  enum Way { kLinear, kAreas };
  constexpr struct {
    Way way;
    int32_t channels, width, height, ontoWidth, ontoHeight;
    uint64_t sum;
  } kCases[] = {
      {kLinear, 4, 37, 23, 61, 40, 0x3FCB7EDE9333D005},     // grows
      {kLinear, 4, 61, 40, 37, 90, 0xDB12503F7F208600},     // grows and shrinks
      {kLinear, 4, 301, 170, 100, 56, 0xB4B28E4A84B4BEC3},  // shrinks
      {kLinear, 4, 1, 1, 19, 5, 0xEDD700B83A91EAE8},        // nothing between which to lie
      {kLinear, 4, 80, 44, 40, 22, 0xA475C36B81A00130},     // half
      {kLinear, 1, 64, 48, 119, 83, 0xD6ADE7C2457EFDAA},    // one channel
      {kLinear, 1, 64, 48, 32, 24, 0x263304029C2F479E},     // and half of it
      {kAreas, 4, 97, 61, 53, 40, 0xC05C88F386A8B9C0},      // cells
      {kAreas, 4, 97, 61, 97, 40, 0x3FDAA296D9348331},      // of full width
      {kAreas, 4, 80, 44, 40, 22, 0xA475C36B81A00130},      // half
      {kAreas, 4, 90, 44, 30, 11, 0xFF30E21598C17141},      // boxes
      {kAreas, 4, 98, 49, 2, 1, 0x70512DF80D1FE2A0},        // a whole ratio whose quotients are not whole
  };
  for (const auto& c : kCases) {
    const auto bytes = [&](int32_t width, int32_t height) { return static_cast<size_t>(width * height * c.channels); };
    std::vector<uint8_t> from(bytes(c.width, c.height)), onto(bytes(c.ontoWidth, c.ontoHeight));
    uint32_t noise = 7;
    for (uint8_t& byte : from) byte = static_cast<uint8_t>((noise = noise * 1664525u + 1013904223u) >> 24);
    const StretchSource source{from.data(), c.width, c.height, ptrdiff_t{c.width} * c.channels};
    const StretchTarget target{onto.data(), c.ontoWidth, c.ontoHeight, ptrdiff_t{c.ontoWidth} * c.channels};
    OnEveryTarget([&] {
      std::fill(onto.begin(), onto.end(), 0xCD);
      c.way == kLinear ? StretchLinear(source, target, c.channels) : StretchAreas(source, target);
      uint64_t sum = 14695981039346656037u;
      for (const uint8_t byte : onto) sum = (sum ^ byte) * 1099511628211u;
      EXPECT_EQ(sum, c.sum) << c.width << " by " << c.height << " onto " << c.ontoWidth << " by " << c.ontoHeight;
    });
  }
}

TEST(ImageHandles, BearOddCalls) {
  QK_ImageDestroy(nullptr);
  const ImageHandle image(QK_ImageCreate());
  for (const auto [width, height, bits] :
       {std::array{0, 4, 32}, {4, -1, 32}, {4, 4, 24}, {40000, 1, 32}, {32768, 32768, 32}}) {
    EXPECT_FALSE(QK_ImageAlloc(image.get(), width, height, bits));
    EXPECT_FALSE(QK_ImageBits(image.get()));
    EXPECT_EQ(QK_ImageStep(image.get()), 0);
  }
}

}  // namespace
