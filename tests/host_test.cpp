// The kvx command: as a person types it, and its pieces.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hostkit/param_track.h"
#include "hosts/kvx/commands.h"
#include "hosts/kvx/demo_picture.h"
#include "tests/support/fake_host.h"

using namespace kvx;

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
  while (const size_t count = std::fread(block.data(), 1, block.size(), pipe))
    result.output.append(block.data(), count);
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

TEST(KvxCommand, ListsAndShowsEffects) {
  const nlohmann::json all = nlohmann::json::parse(Kvx("list --json").output);
  ASSERT_GE(all.size(), 8u);
  EXPECT_EQ(all[0].at("id"), 25);
  EXPECT_EQ(all[0].at("params")[0].at("name"), "Bringhtness");
  EXPECT_EQ(Kvx("list brightn").output.find("colour and tone\n    25  Brightness"), 0u);
  EXPECT_EQ(nlohmann::json::parse(Kvx("list --json --family 'colour and tone' --moving").output).size(), 0u);
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
      {"render Brightness demo", 2, "the input and the output are wanted"},
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
      {"render Brightness demo " + at + "o.txt --size 8x8", 2, "neither a picture"},
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

TEST(KvxCommand, VideosKeepLengthRateAndAreFinishedWhole) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  ASSERT_EQ(Kvx("render Invert --frames 12 --fps 10 --size 64x36 demo " + at + "a.mp4").status, 0);
  EXPECT_EQ(Kvx("render Invert " + at + "a.mp4 " + at + "a.mp4 --overwrite").status, 2) << "the output is the input";
  EXPECT_EQ(Kvx("render Invert demo --size 64x36 " + at + "a.mp4").status, 2) << "exists";
  ASSERT_EQ(Kvx("render Invert --progress " + at + "p.txt " + at + "a.mp4 " + at + "f_%02d.png").status, 0);
  EXPECT_TRUE(std::filesystem::exists(at + "f_11.png"));
  EXPECT_FALSE(std::filesystem::exists(at + "f_12.png"));
  // Inverted twice, apart from what the codec loses.
  const Picture back = ReadPicture(at + "f_11.png");
  const Picture demo = DrawDemoPicture(64, 36, 11);
  double sum = 0;
  for (size_t i = 0; i < demo.pixels.size(); ++i) sum += std::abs(back.pixels[i] - demo.pixels[i]);
  EXPECT_LT(sum / static_cast<double>(demo.pixels.size()), 8);
  std::ifstream progress(at + "p.txt");
  const std::string blocks((std::istreambuf_iterator<char>(progress)), std::istreambuf_iterator<char>());
  EXPECT_NE(blocks.find("frame=12\ntotal=12\n"), std::string::npos) << blocks;
  EXPECT_TRUE(blocks.ends_with("progress=end\n"));
  ASSERT_EQ(Kvx("render Invert --start 0.5 --end 0.9 " + at + "a.mp4 " + at + "c_%d.png").status, 0);
  EXPECT_TRUE(std::filesystem::exists(at + "c_3.png"));
  EXPECT_FALSE(std::filesystem::exists(at + "c_4.png"));

  dir.Write("text.mp4", "this is no video");
  EXPECT_EQ(Kvx("render Invert " + at + "text.mp4 " + at + "o.mp4").status, 1);
  EXPECT_FALSE(std::filesystem::exists(at + "o.mp4"));
  EXPECT_FALSE(std::filesystem::exists(at + "o.mp4.part"));
  std::ifstream whole(at + "a.mp4", std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(whole)), std::istreambuf_iterator<char>());
  for (size_t length = 1; length < bytes.size(); length += bytes.size() / 9) {
    dir.Write("cut.mp4", bytes.substr(0, length));
    EXPECT_LE(Kvx("render Invert --overwrite " + at + "cut.mp4 " + at + "o.png").status, 1) << length;
  }
}

TEST(KvxCommand, PipesCarryFrames) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  const std::string kvx = std::string(KVX_TEST_COMMAND) + " ";
  const auto shell = [](const std::string& line) { return WEXITSTATUS(std::system((line + " 2>/dev/null").c_str())); };
  ASSERT_EQ(shell(kvx + "render Invert --frames 3 --size 16x8 demo " + at + "x_%d.png"), 0);
  ASSERT_EQ(shell(kvx + "render Invert --frames 3 --raw 16x8 --size 16x8 demo - | " + kvx +
                  "render Invert --raw 16x8 - - | " + kvx + "render Invert --raw 16x8 - " + at + "y_%d.png"),
            0);
  for (const char* name : {"_0.png", "_1.png", "_2.png"}) {
    EXPECT_EQ(ReadPicture(at + "x" + name).pixels, ReadPicture(at + "y" + name).pixels) << name;
  }
  ASSERT_EQ(shell(kvx + "render Invert --frames 3 --size 16x8 demo - | " + kvx + "render Invert - " + at + "z_%d.png"),
            0);
  EXPECT_TRUE(std::filesystem::exists(at + "z_2.png"));
  EXPECT_EQ(shell("head -c 100 /dev/zero | " + kvx + "render Invert --raw 16x8 - " + at + "w_%d.png"), 1);
}

TEST(KvxCommand, ChainsAndRecipesAgree) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  const std::string chain = " -e Invert -e 'Brightness:Bringhtness=70;opacity=50' ";
  ASSERT_EQ(Kvx("render --size 32x18" + chain + "demo " + at + "a.png").status, 0);
  ASSERT_EQ(Kvx("recipe write" + chain + at + "r.json").status, 0);
  ASSERT_EQ(Kvx("recipe check " + at + "r.json").status, 0);
  ASSERT_EQ(Kvx("render --size 32x18 --recipe " + at + "r.json demo " + at + "b.png").status, 0);
  EXPECT_EQ(ReadPicture(at + "a.png").pixels, ReadPicture(at + "b.png").pixels);
  ASSERT_EQ(Kvx("render --size 32x18 Invert demo " + at + "i.png").status, 0);
  ASSERT_EQ(Kvx("render Brightness -p Bringhtness=70 --opacity 50 " + at + "i.png " + at + "c.png").status, 0);
  EXPECT_EQ(ReadPicture(at + "a.png").pixels, ReadPicture(at + "c.png").pixels);
  const struct {
    const char *text, *part;
  } broken[] = {{"{", "not JSON at line 1"},
                {"{\"effects\": []}", "effects: must be a list"},
                {"{\"effects\": [{\"effect\": \"Nobody\"}]}", "effects[0].effect: no effect"},
                {"{\"effects\": [{\"effect\": 71}, {\"effect\": 25, \"params\": {\"x\": 1}}]}",
                 "effects[1].params.x: Brightness has no parameter"},
                {"{\"effects\": [{\"effect\": 25, \"params\": {\"Bringhtness\": {\"0\": 500}}}]}",
                 "effects[0].params.Bringhtness: 500 is out of range"},
                {"{\"effects\": [{\"effect\": 71, \"opacity\": 101}]}", "effects[0].opacity"},
                {"{\"effects\": [{\"effect\": 71, \"color\": 1}]}", "effects[0]: unknown key"}};
  for (const auto& b : broken) {
    dir.Write("bad.json", b.text);
    const Result result = Kvx("recipe check " + at + "bad.json", true);
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.output.find(b.part), std::string::npos) << result.output;
  }
}

TEST(KvxCommand, JobsDoNotChangeTheFrames) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  for (const char* jobs : {"1", "3"}) {
    ASSERT_EQ(
        Kvx(std::string("render Warm --size 48x27 --frames 9 -j ") + jobs + " demo " + at + jobs + "_%d.png").status,
        0);
  }
  for (int i = 0; i < 9; ++i) {
    const std::string tail = "_" + std::to_string(i) + ".png";
    EXPECT_EQ(ReadPicture(at + "1" + tail).pixels, ReadPicture(at + "3" + tail).pixels) << i;
  }
}

TEST(KvxCommand, GalleryPreviewAndDoctor) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  EXPECT_EQ(Kvx("doctor").status, 0);
  dir.Write("root/kvx_effect/material/PureCFilter.conf", "[{\"GUID\": \"none\", \"DATAPATH\": \"/\"}, 5]");
  const Result sick = Kvx("--resources " + at + "root doctor");
  EXPECT_EQ(sick.status, 1);
  EXPECT_NE(sick.output.find("entry 1 has no GUID"), std::string::npos) << sick.output;
  ASSERT_EQ(Kvx("preview Brightness demo " + at + "p.png").status, 0);
  EXPECT_GT(ReadPicture(at + "p.png").width, 1400) << "four values side by side";
}

TEST(KvxCommand, ContactSheetShowsEveryEffect) {
  const TemporaryDirectory dir;
  const std::string at = dir.Path().string() + "/";
  ASSERT_EQ(Kvx("contact-sheet --size 64x36 demo " + at + "sheet.png Bright* --each " + at + "each").status, 0);
  EXPECT_TRUE(std::filesystem::exists(at + "each/0025_Brightness.png"));
  EXPECT_GT(ReadPicture(at + "sheet.png").width, 200);
}

TEST(HostLibrary, WhatAnEffectLeavesAloneShowsTheSource) {
  PluginOptions options;
  options.path = KVX_TEST_PLUGIN;
  options.resourceRoot = KVX_TEST_RESOURCES;
  Plugin plugin(options);
  const Picture source = DrawDemoPicture(61, 37, 0);
  int tried = 0;
  for (const EffectInfo& info : plugin.Effects().All()) {
    if (!info.leavesPixels || info.random) continue;
    ++tried;
    std::vector<uint8_t> results[2];
    for (const uint8_t before : {0x00, 0xAA}) {
      std::vector<uint8_t>& result = results[before != 0];
      result.assign(source.pixels.size(), before);
      const ConstImageView from{source.pixels.data(), source.width, source.height, source.Step()};
      const ImageView to{result.data(), source.width, source.height, source.Step()};
      plugin.Create(info)->Render(from, to, {0, 1}, {});
    }
    EXPECT_EQ(results[0], results[1]) << info.name << " shows what was in the buffer";
  }
  EXPECT_GT(tried, 5);
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
