// Memory probe, text, files, clock, picture files.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "codecs/picture.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/memory_probe.h"
#include "platform/text.h"
#include "tests/support/fake_host.h"

using namespace kvx;

namespace {

TEST(MemoryProbe, SeesEveryPage) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* base =
      static_cast<uint8_t*>(mmap(nullptr, 5 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(base, MAP_FAILED);
  EXPECT_FALSE(IsBadReadPtr(base + 1, 5 * page - 1));
  EXPECT_FALSE(IsBadWritePtr(base, 5 * page));
  mprotect(base + 2 * page, page, PROT_READ);
  EXPECT_FALSE(IsBadReadPtr(base, 5 * page));
  EXPECT_TRUE(IsBadWritePtr(base, 5 * page));
  EXPECT_FALSE(IsBadWritePtr(base, 2 * page));
  EXPECT_TRUE(IsBadWritePtr(base, 2 * page + 1));
  mprotect(base + 2 * page, page, PROT_NONE);
  EXPECT_TRUE(IsBadReadPtr(base + page, page + 1));
  munmap(base + 4 * page, page);
  EXPECT_FALSE(IsBadReadPtr(base + 3 * page, page));
  EXPECT_TRUE(IsBadReadPtr(base + 3 * page, page + 1));
  munmap(base, 4 * page);
  EXPECT_TRUE(IsBadReadPtr(nullptr, 1));
  EXPECT_FALSE(IsBadReadPtr(nullptr, 0));
  EXPECT_TRUE(IsBadReadPtr(base, SIZE_MAX)) << "the range wraps";
}

TEST(MemoryProbe, SeesTheEndOfAMappedFile) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const int file = memfd_create("short", 0);
  ASSERT_EQ(ftruncate(file, static_cast<off_t>(page)), 0);
  auto* base = static_cast<uint8_t*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
  ASSERT_NE(base, MAP_FAILED);
  base[0] = 7;
  EXPECT_FALSE(IsBadReadPtr(base, page));
  EXPECT_FALSE(IsBadWritePtr(base, page));
  EXPECT_TRUE(IsBadReadPtr(base, page + 1));
  EXPECT_TRUE(IsBadWritePtr(base + page, 1));
  EXPECT_EQ(base[0], 7);
  munmap(base, 2 * page);
  close(file);
}

TEST(Text, ConvertsAndRefuses) {
  const std::string mixed = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
  const auto wide = WidenUtf8(mixed);
  ASSERT_TRUE(wide);
  EXPECT_EQ(*wide, u"a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(NarrowUtf8(*wide), mixed);
  for (const char* bad : {"\x80", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFF"}) {
    EXPECT_FALSE(WidenUtf8(bad)) << bad;
  }
  EXPECT_EQ(NarrowUtf8(u"\xDC00x"), "\xEF\xBF\xBDx");
}

TEST(Files, SeparatorsOrderAndMissingNames) {
  const TemporaryDirectory dir;
  dir.Write("b/\xC3\xA9 x.conf", "content");
  dir.Write("b/a.conf", "");
  dir.Write("b/C/d", "");
  const std::string root = dir.Path().string();
  EXPECT_EQ(ReadFile(root + "\\b\\\xC3\xA9 x.conf"), "content");
  EXPECT_FALSE(ReadFile(root + "/b"));
  EXPECT_FALSE(ReadFile(root + "/missing"));
  dir.Write("huge", "");
  std::filesystem::resize_file(root + "/huge", (uintmax_t{1} << 30) + 1);  // takes no room
  EXPECT_FALSE(ReadFile(root + "/huge"));
  EXPECT_FALSE(ReadFile(root + "/\xFF"));
  const auto entries = ListDirectory(root + "/b");
  ASSERT_TRUE(entries);
  ASSERT_EQ(entries->size(), 3u);
  EXPECT_EQ((*entries)[0].name, "C");
  EXPECT_TRUE((*entries)[0].isDirectory);
  EXPECT_EQ((*entries)[1].name, "a.conf");
  EXPECT_FALSE(ListDirectory(root + "/b/a.conf"));
}

TEST(Clock, CanBePinned) {
  PinCalendarSeconds(1234);
  EXPECT_EQ(CalendarSeconds(), 1234u);
  PinCalendarSeconds(0);
  EXPECT_GT(CalendarSeconds(), 1'700'000'000u);
}

TEST(PictureFiles, RoundTrip) {
  Picture picture(13, 7);
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = static_cast<uint8_t>(i * 37);
  const std::string png = EncodePng(picture);
  Picture decoded;
  std::string error;
  ASSERT_TRUE(DecodePicture(png, decoded, error)) << error;
  EXPECT_EQ(decoded.pixels, picture.pixels) << "alpha included";

  Picture smooth(40, 30);
  for (int32_t y = 0; y < 30; ++y) {
    for (int32_t x = 0; x < 40; ++x) {
      uint8_t* p = smooth.Row(y) + 4 * x;
      p[0] = static_cast<uint8_t>(x * 6);
      p[1] = static_cast<uint8_t>(y * 8);
      p[2] = 128;
      p[3] = 255;
    }
  }
  const std::string jpeg = EncodeJpeg(smooth);
  ASSERT_TRUE(DecodePicture(jpeg, decoded, error)) << error;
  ASSERT_EQ(decoded.pixels.size(), smooth.pixels.size());
  for (size_t i = 0; i < decoded.pixels.size(); ++i) ASSERT_NEAR(decoded.pixels[i], smooth.pixels[i], 8);
}

}  // namespace
