// What a video passes between its decoder and its encoder: the conversion of pixels, and the stages of a chain.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

#include "hosts/kvx/media/pixels.h"
#include "hosts/kvx/stage_queue.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace {

using kvx::Chain;
using kvx::Frame;
using kvx::Picture;
using kvx::StageQueue;

constexpr int kUpFlags = SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
constexpr int kDownFlags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

kvx::AvFramePtr NewFrame(AVPixelFormat format, int width, int height) {
  kvx::AvFramePtr frame = kvx::NewAvFrame();
  frame->format = format;
  frame->width = width;
  frame->height = height;
  EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
  return frame;
}

struct Plane {
  int width, height;
};
Plane PlaneOf(const AVFrame& frame, int plane) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (plane == 0) return {frame.width, frame.height};
  return {AV_CEIL_RSHIFT(frame.width, desc.log2_chroma_w), AV_CEIL_RSHIFT(frame.height, desc.log2_chroma_h)};
}

std::vector<uint8_t> BytesOf(const AVFrame& frame) {
  std::vector<uint8_t> bytes;
  for (int plane = 0; plane < 3; ++plane) {
    const Plane size = PlaneOf(frame, plane);
    for (int y = 0; y < size.height; ++y) {
      const uint8_t* row = frame.data[plane] + y * frame.linesize[plane];
      bytes.insert(bytes.end(), row, row + size.width);
    }
  }
  return bytes;
}

using Form = std::tuple<AVPixelFormat, AVColorSpace, AVColorRange>;
class Conversion : public testing::TestWithParam<Form> {};

// Samples as codecs may have them, colours of every kind, and sizes that are no multiple of a vector.
TEST_P(Conversion, GivesTheLibrarysBytes) {
  const auto [format, matrix, range] = GetParam();
  const bool full = range == AVCOL_RANGE_JPEG;
  // Both number the matrices alike.
  const int* table = sws_getCoefficients(matrix);
  std::mt19937 random(7);
  const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
  for (const auto& [width, height] : {std::pair{2, 4}, {34, 6}, {130, 10}, {646, 50}, {33, 7}}) {
    const kvx::AvFramePtr coded = NewFrame(format, width, height);
    for (int plane = 0; plane < 3; ++plane) {
      const Plane size = PlaneOf(*coded, plane);
      for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
          const int sample = full ? below(256) : 16 + below(plane == 0 ? 220 : 225);
          coded->data[plane][y * coded->linesize[plane] + x] = static_cast<uint8_t>(sample);
        }
      }
    }
    Picture ours(width, height), theirs(width, height);
    kvx::PixelConverter().ToPicture(*coded, {matrix, range}, ours);
    SwsContext* up =
        sws_getContext(width, height, format, width, height, AV_PIX_FMT_BGRA, kUpFlags, nullptr, nullptr, nullptr);
    sws_setColorspaceDetails(up, table, full, table, 1, 0, 1 << 16, 1 << 16);
    uint8_t* planes[] = {theirs.pixels.data()};
    const int steps[] = {theirs.Step()};
    sws_scale(up, coded->data, coded->linesize, 0, height, planes, steps);
    sws_freeContext(up);
    for (size_t i = 3; i < theirs.pixels.size(); i += 4) theirs.pixels[i] = 255;
    EXPECT_TRUE(ours.pixels == theirs.pixels) << width << " by " << height;

    for (uint8_t& byte : ours.pixels) byte = static_cast<uint8_t>(below(256));
    const kvx::AvFramePtr mine = NewFrame(format, width, height), wanted = NewFrame(format, width, height);
    EXPECT_FALSE(kvx::PixelConverter().ToFrame(ours, {matrix, range}, *mine)) << "alpha is below 255 somewhere";
    SwsContext* down =
        sws_getContext(width, height, AV_PIX_FMT_BGRA, width, height, format, kDownFlags, nullptr, nullptr, nullptr);
    sws_setColorspaceDetails(down, table, 1, table, full, 0, 1 << 16, 1 << 16);
    const uint8_t* from[] = {ours.pixels.data()};
    sws_scale(down, from, steps, 0, height, wanted->data, wanted->linesize);
    sws_freeContext(down);
    EXPECT_TRUE(BytesOf(*mine) == BytesOf(*wanted)) << width << " by " << height;
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, Conversion,
                         testing::Combine(testing::Values(AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P),
                                          testing::Values(AVCOL_SPC_BT709, AVCOL_SPC_FCC, AVCOL_SPC_SMPTE170M,
                                                          AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT2020_NCL),
                                          testing::Values(AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG)));

// Where the library overflows and shows black.
TEST(Conversion, SamplesBeyondTheRangeSaturate) {
  const kvx::AvFramePtr coded = NewFrame(AV_PIX_FMT_YUV444P, 16, 1);
  for (int x = 0; x < 16; ++x) {
    for (uint8_t* plane : coded->data) {
      if (plane) plane[x] = 255;
    }
  }
  Picture picture(16, 1);
  kvx::PixelConverter().ToPicture(*coded, {AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG}, picture);
  EXPECT_EQ(picture.pixels[0], 255) << "blue";
  EXPECT_EQ(picture.pixels[2], 255) << "red";
}

// a: any order. o: ordered. r: random. m: moves the stream. d: as o, but of one id with every other d.
std::string StagesOf(const std::string& effects) {
  std::vector<kvx::EffectInfo> infos(effects.size());
  Chain chain;
  for (size_t i = 0; i < effects.size(); ++i) {
    infos[i].id = effects[i] == 'd' ? 1000 : static_cast<int32_t>(i);
    infos[i].ordered = effects[i] == 'o' || effects[i] == 'r' || effects[i] == 'd';
    infos[i].random = effects[i] == 'r';
    infos[i].movesStream = effects[i] == 'r' || effects[i] == 'm';
    chain.Add(infos[i], {}, 100);
  }
  std::string text;
  for (const Chain::Stage& stage : chain.Stages()) {
    if (!text.empty()) text += ' ';
    text += (stage.ordered ? "[" : "") + effects.substr(stage.first, stage.count) + (stage.ordered ? "]" : "");
  }
  return text;
}

TEST(Stages, SplitWhatMayOverlapAndKeepTogetherWhatMayNot) {
  EXPECT_EQ(StagesOf("aaa"), "aaa");
  EXPECT_EQ(StagesOf("aoaao"), "a [o] aa [o]");
  EXPECT_EQ(StagesOf("oo"), "[o] [o]");
  EXPECT_EQ(StagesOf("araara"), "a [raar] a") << "one stream";
  EXPECT_EQ(StagesOf("marm"), "[marm]") << "the others move the stream of the random one";
  EXPECT_EQ(StagesOf("mam"), "mam") << "nobody sees the stream";
  EXPECT_EQ(StagesOf("adad"), "a [dad]") << "one counter";
  EXPECT_EQ(StagesOf("rdard"), "[rdard]") << "both, crosswise";
}

// Four threads on three stages: an ordered one sees 0, 1, 2 ... by one thread at a time, and no more frames are inside
// than may be.
TEST(StageQueue, KeepsOrderAndBounds) {
  constexpr int64_t kFrames = 300;
  constexpr size_t kCapacity = 6;
  const std::vector<Chain::Stage> stages = {{0, 1, false}, {1, 1, true}, {2, 1, false}};
  StageQueue queue(stages, kCapacity);
  std::atomic<int> inside{0}, most{0}, inOrdered{0};
  std::atomic<int64_t> next{0};
  std::atomic<bool> good{true};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      StageQueue::Task task;
      while (queue.TakeTask(task)) {
        if (task.stage == 1) {
          if (++inOrdered != 1 || next++ != task.frame.number) good = false;
          std::this_thread::yield();
          --inOrdered;
        }
        queue.FinishTask(task);
      }
    });
  }
  threads.emplace_back([&] {
    Frame frame;
    for (int64_t i = 0; i < kFrames; ++i) {
      frame.number = i;
      if (!queue.Put(frame)) break;
      const int now = ++inside;
      if (now > most) most = now;
    }
    queue.EndInput();
  });
  Frame frame;
  int64_t taken = 0;
  while (queue.TakeFinished(frame)) {
    --inside;
    if (frame.number != taken++) good = false;
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(good);
  EXPECT_EQ(taken, kFrames);
  EXPECT_EQ(next, kFrames);
  EXPECT_LE(most, static_cast<int>(kCapacity) + 1) << "one may have been counted late";
}

TEST(StageQueue, AFailureEndsEverybody) {
  StageQueue queue({{0, 1, true}}, 1);
  Frame frame;
  ASSERT_TRUE(queue.Put(frame));
  std::thread reader([&] {
    Frame second;
    second.number = 1;
    EXPECT_FALSE(queue.Put(second)) << "it waited for room";
  });
  queue.Fail(std::make_exception_ptr(kvx::Error("first")));
  queue.Fail(std::make_exception_ptr(kvx::Error("second")));
  reader.join();
  StageQueue::Task task;
  EXPECT_FALSE(queue.TakeTask(task));
  EXPECT_FALSE(queue.TakeFinished(frame));
  try {
    std::rethrow_exception(queue.Failure());
  } catch (const kvx::Error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
}

}  // namespace
