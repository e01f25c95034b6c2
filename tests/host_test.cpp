// The kvx command: as a person types it, and its pieces.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "demo_picture.h"
#include "fake_host.h"
#include "param_track.h"

namespace {

struct Result {
  int status;
  std::string output;  // stdout, or stderr where asked for
};

// Runs kvx with these words; `2>&1 >/dev/null` in front of the pipe gives stderr.
Result Kvx(const std::string& words, bool wantErrors = false) {
  const std::string command =
      std::string(KVX_TEST_COMMAND) + " " + words + (wantErrors ? " 2>&1 >/dev/null" : " 2>/dev/null");
  FILE* pipe = popen(command.c_str(), "r");
  Result result{-1, {}};
  std::array<char, 4096> block;
  while (const size_t count = std::fread(block.data(), 1, block.size(), pipe)) result.output.append(block.data(), count);
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

TEST(KvxCommand, ListsAndShowsEffects) {
  const nlohmann::json all = nlohmann::json::parse(Kvx("list --json").output);
  ASSERT_GE(all.size(), 8u);
  EXPECT_EQ(all[0].at("id"), 25);
  EXPECT_EQ(all[0].at("params")[0].at("name"), "Bringhtness");
  EXPECT_EQ(Kvx("list brightn").output.find("   25  Brightness"), 0u);
  EXPECT_NE(Kvx("info 25").output.find("0 to 100"), std::string::npos);
  EXPECT_EQ(Kvx("--help").status, 0);
  EXPECT_EQ(Kvx("--version").status, 0);
}

TEST(KvxCommand, RendersPicturesSequencesAndOpacity) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  const Picture demo = DrawDemoPicture(64, 36, 0);
  WritePicture(demo, at + "in.png");
  ASSERT_EQ(Kvx("render Invert " + at + "in.png " + at + "out.png").status, 0);
  const Picture inverted = ReadPicture(at + "out.png");
  for (size_t i = 0; i < demo.pixels.size(); i += 4) ASSERT_EQ(inverted.pixels[i], 255 - demo.pixels[i]);
  ASSERT_EQ(Kvx("render Invert --opacity 0 " + at + "in.png " + at + "same.png").status, 0);
  EXPECT_EQ(ReadPicture(at + "same.png").pixels, demo.pixels);

  ASSERT_EQ(Kvx("render 25 -p Bringhtness=0:0,4:100 --frames 5 --size 16x9 demo " + at + "f_%03d.png").status, 0);
  EXPECT_EQ(ReadPicture(at + "f_000.png").pixels[0], 0);
  EXPECT_EQ(ReadPicture(at + "f_004.png").pixels[0], 255);
  ASSERT_EQ(Kvx("render Invert " + at + "f_%03d.png " + at + "g_%d.jpg").status, 0);
  EXPECT_NEAR(ReadPicture(at + "g_4.jpg").pixels[0], 0, 2);

  ASSERT_EQ(Kvx("render Invert --pad 40x80 " + at + "in.png " + at + "padded.png").status, 0);
  const Picture padded = ReadPicture(at + "padded.png");
  EXPECT_EQ(padded.width, 40);
  EXPECT_EQ(padded.pixels[3], 0) << "transparent around the picture";
  EXPECT_EQ(padded.Row(40)[4 * 20 + 3], 255);
}

TEST(KvxCommand, SaysInOneLineWhatIsWrong) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  dir.Write("broken.png", "\x89PNG\r\n\x1a\nrest");
  dir.Write("empty.jpg", "");
  dir.Write("kvx_effect/material/PureCFilter.conf", "[{\"DATAPATH\": 1}]");
  const std::string out = " " + at + "o.png";
  const struct {
    std::string words;
    int status;
    const char* part;
  } cases[] = {
      {"", 2, "subcommand"},
      {"render Brihgtness demo" + out, 2, "did you mean Brightness"},
      {"render Brightness -p Brightness=5 demo" + out, 2, "has no parameter \"Brightness\"; it has Bringhtness"},
      {"render Brightness -p Bringhtness=101 demo" + out, 2, "out of range for \"Bringhtness\": 0 to 100"},
      {"render Brightness -p Bringhtness=nan demo" + out, 2, "not a number"},
      {"render Brightness -p Bringhtness demo" + out, 2, "not NAME=VALUE"},
      {"render Brightness --opacity 101 demo" + out, 2, "opacity"},
      {"render Brightness --size 0x5 demo" + out, 2, "not a size"},
      {"render Brightness " + at + "none.png" + out, 1, "no such file"},
      {"render Brightness " + at + "broken.png" + out, 1, "broken PNG"},
      {"render Brightness " + at + "empty.jpg" + out, 1, "empty"},
      {"render Brightness " + at + "i_%d.png" + out, 1, "no files match"},
      {"render Brightness demo " + at + "o.gif --size 8x8", 2, "written as .png"},
      {"render Brightness demo " + at + "no/such/dir/o.png --size 8x8", 1, "cannot be written"},
      {"--resources " + at + "none list", 1, "no resource directory"},
      {"--resources " + at + " list", 1, "malformed: [json.exception.type_error.302] type must be string"},
      {"--resources / list", 1, "no effects in the catalogue"},
      {"--plugin " + at + "none.so list", 1, "cannot be loaded"},
      {"contact-sheet demo" + out + " nosucheffect", 2, "no effect matches"},
  };
  for (const auto& c : cases) {
    const Result result = Kvx(c.words, true);
    EXPECT_EQ(result.status, c.status) << c.words;
    EXPECT_NE(result.output.find(c.part), std::string::npos) << c.words << "\n" << result.output;
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1) << result.output;
  }
  EXPECT_FALSE(std::filesystem::exists(at + "o.png"));
  EXPECT_FALSE(std::filesystem::exists(at + "o.png.part"));
}

TEST(KvxCommand, ContactSheetShowsEveryEffect) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  ASSERT_EQ(Kvx("contact-sheet --size 64x36 demo " + at + "sheet.png Bright* --each " + at + "each").status, 0);
  EXPECT_TRUE(std::filesystem::exists(at + "each/0025_Brightness.png"));
  EXPECT_GT(ReadPicture(at + "sheet.png").width, 200);
}

TEST(ParamTracks, InterpolateAndFeedTime) {
  EffectInfo effect;
  effect.name = "x";
  effect.params = {{"Level", ParamType::kFloat, 0, 100, 7}, {"Time", ParamType::kFloat, 0, 36000000, 0}};
  const ParamTracks tracks(effect, {"Level=10:20,20:40"}, 80);
  const auto level = [&](int64_t frame) { return tracks.At(frame, 0).numbers.at("Level"); };
  EXPECT_EQ(level(0), 20);
  EXPECT_EQ(level(15), 30);
  EXPECT_EQ(level(99), 40);
  EXPECT_EQ(tracks.At(3, 120).numbers.at("Time"), 120);
  EXPECT_EQ(tracks.At(3, 120).numbers.at("alpha"), 80);
  EXPECT_EQ(ParamTracks(effect, {"Time=5"}, 100).At(3, 120).numbers.at("Time"), 5);
}

TEST(DemoPicture, DrawsAnySizeAndMoves) {
  for (const auto& [w, h] : {std::pair{1, 1}, {3, 200}, {200, 3}, {160, 90}}) {
    const Picture picture = DrawDemoPicture(w, h, 3);
    ASSERT_EQ(picture.pixels.size(), static_cast<size_t>(w) * static_cast<size_t>(h) * 4);
    for (size_t i = 3; i < picture.pixels.size(); i += 4) ASSERT_EQ(picture.pixels[i], 255);
  }
  EXPECT_EQ(DrawDemoPicture(80, 45, 5).pixels, DrawDemoPicture(80, 45, 5).pixels);
  EXPECT_NE(DrawDemoPicture(80, 45, 5).pixels, DrawDemoPicture(80, 45, 6).pixels);
}

}  // namespace
