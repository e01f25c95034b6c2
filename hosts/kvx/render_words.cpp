#include "hosts/kvx/render_words.h"

#include <fmt/format.h>

#include <charconv>
#include <functional>
#include <memory>

#include "hosts/kvx/command_line.h"

namespace kvx {

namespace {

// "4M", "800k" or a plain number: bits per second.
int64_t ParseBitrate(const std::string& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const std::string unit(end, text.data() + text.size());
  const double factor = unit.empty() ? 1 : unit == "k" || unit == "K" ? 1e3 : unit == "M" ? 1e6 : 0;
  if (error != std::errc() || value * factor < 1000 || value * factor > 1e10) {
    throw UsageError(fmt::format("\"{}\" is not a bitrate such as 800k or 4M", text));
  }
  return static_cast<int64_t>(value * factor);
}

}  // namespace

void RenderWords::AddTo(CLI::App& sub, const std::string& names, const std::string& help) {
  sub.add_option(names, chain.words, help);
  chain.AddTo(sub);
  sub.add_option("--recipe", chain.recipe, "File with the effects");
  sub.add_option("--frames", frames, "Number of frames")->check(CLI::Range(int64_t{1}, int64_t{10000000}));
  sub.add_option("--start", start, "Seconds to leave out at the beginning")->check(CLI::NonNegativeNumber);
  sub.add_option("--end", end, "Second at which to end")->check(CLI::NonNegativeNumber);
  sub.add_option("--fps", options.input.fps, "Frames per second of what has no rate of its own: pictures, demo, raw")
      ->check(CLI::Range(0.001, 100000.0));
  sub.add_option("--size", size, "Size of the demo, such as 1920x1080");
  sub.add_option("--pad", pad, "Fit the input into a transparent frame of this size");
  sub.add_option("--raw", raw, "Pipes carry raw BGRA frames of this size instead of Y4M");
  sub.add_option("--start-number", startNumber, "Number of a sequence's first file; else the input's numbers")
      ->check(CLI::Range(int64_t{0}, int64_t{1000000000}));
  sub.add_option("--gaps", gaps, "Numbers that a sequence lacks: close (leave out), hold (the frame before) or refuse")
      ->check(CLI::IsMember({"close", "hold", "refuse"}));
  sub.add_flag("--literal", literal, "A % in the names stands for itself");
  sub.add_flag("--deinterlace", options.input.deinterlace, "Make whole frames of interlaced ones");
  sub.add_option("--codec", options.output.codec, "Encoder of a video, such as libx265");
  sub.add_option("--crf", crf, "Quality of a video: lower is better; 18 unless given")->check(CLI::Range(0, 63));
  sub.add_option("--bitrate", bitrate, "Bits per second of a video, such as 4M, instead of a quality");
  sub.add_option("--preset", options.output.preset, "The encoder's preset, such as slow");
  sub.add_option("--pix-fmt", options.output.pixelFormat, "Pixel format of a video, such as yuv422p");
  sub.add_flag("--no-audio", noAudio, "Leave sound out");
  sub.add_flag("--no-subtitles", noSubtitles, "Leave subtitles out");
  sub.add_flag("--overwrite", options.output.overwrite, "Replace existing files");
  sub.add_flag("--keep-going", options.keepGoing, "A damaged input is no failure");
  sub.add_option("-j,--jobs", options.jobs, "Threads that render")->check(CLI::Range(1, 256));
  sub.add_flag("-q,--quiet", options.quiet, "No progress line");
  sub.add_option("--progress", options.progressFile, "Write progress as key=value blocks into this file");
}

void RenderWords::TakeOptions(const CLI::App& sub) {
  const auto given = [&](const char* name) { return sub.get_option(name)->count() > 0; };
  options.recipe = chain.recipe;
  options.input.path = chain.words[0];
  options.output.path = chain.words[1];
  if (given("--frames")) options.input.frames = frames;
  if (given("--start")) options.input.start = start;
  if (given("--end")) options.input.end = end;
  options.fpsGiven = given("--fps");
  if (given("--crf")) options.output.crf = crf;
  if (given("--start-number")) options.output.startNumber = startNumber;
  if (given("--bitrate")) options.output.bitrate = ParseBitrate(bitrate);
  if (given("--size")) options.input.demoSize = ParseFrameSize(size);
  if (given("--pad")) options.pad = ParseFrameSize(pad);
  if (given("--raw")) {
    options.input.rawSize = ParseFrameSize(raw);
    options.output.rawPipe = true;
  }
  if (gaps == "hold") options.input.gaps = Gaps::kHold;
  if (gaps == "refuse") options.input.gaps = Gaps::kRefuse;
  options.input.literal = options.output.literal = literal;
  options.output.audio = !noAudio;
  options.output.subtitles = !noSubtitles;
  if (given("--start") && given("--end") && end <= start) throw UsageError("--end comes before --start");
  if (given("--crf") && given("--bitrate")) throw UsageError("--crf and --bitrate contradict each other");
}

void RenderWords::RefuseIdleOptions(const CLI::App& sub) const {
  const std::string& from = options.input.path;
  const std::string& to = options.output.path;
  const bool fromDemo = from == "demo";
  const bool fromSequence = IsSequenceName(options.input);
  const bool toVideo = IsVideoName(to);
  const bool toSequence = IsSequenceName(options.output) && IsPictureName(to);
  const auto refuse = [&](bool works, std::initializer_list<const char*> names, const char* wants) {
    for (const char* name : names) {
      if (!works && sub.get_option(name)->count() > 0) throw UsageError(fmt::format("{} {}", name, wants));
    }
  };
  refuse(fromDemo, {"--size"}, "is for the input demo; files have a size of their own");
  refuse(from == "-" || to == "-", {"--raw"}, "is for pipes: INPUT or OUTPUT must be -");
  refuse(toVideo, {"--codec", "--crf", "--bitrate", "--preset", "--pix-fmt", "--no-audio", "--no-subtitles"},
         "is for an OUTPUT that is a video file");
  refuse(toSequence, {"--start-number"}, "is for an OUTPUT that is a sequence");
  refuse(fromSequence, {"--gaps"}, "is for an INPUT that is a sequence");
  refuse(to != "-", {"--overwrite"}, "is for files: OUTPUT is a pipe");
  refuse(from.find('%') != std::string::npos || to.find('%') != std::string::npos, {"--literal"},
         "is for names with a %");
}

void AddRender(CommandLine& line) {
  auto words = std::make_shared<RenderWords>();
  CLI::App* sub = line.App().add_subcommand("render", "Render a picture, a sequence or a video through effects");
  words->AddTo(*sub, "EFFECT INPUT OUTPUT",
               "EFFECT is a name, id or GUID (not given with -e or --recipe); INPUT and OUTPUT are pictures, "
               "sequences (in_%04d.png), videos or - for a pipe; INPUT may be demo");
  sub->callback([&line, words, sub] {
    words->chain.ReadRecipeText();
    line.OfferSeed(words->chain.RecipeSeed());
    line.Choose([words, sub](Plugin& plugin) {
      const Chain chain = words->chain.Build(plugin.Effects(), 2);
      words->TakeOptions(*sub);
      words->RefuseIdleOptions(*sub);
      return RenderFrames(plugin, chain, words->options);
    });
  });
}

}  // namespace kvx
