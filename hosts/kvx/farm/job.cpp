#include "hosts/kvx/farm/job.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hostkit/error.h"
#include "hosts/kvx/input_file.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

using nlohmann::json;
using nlohmann::ordered_json;

namespace {

// More of them stand in a list of their own, of which a piece reads its part.
constexpr int64_t kMostInputsWithin = 1000;
constexpr const char* kKinds[] = {"video", "sequence", "files"};
constexpr const char* kGaps[] = {"close", "hold", "refuse"};

template <typename T>
void Put(ordered_json& to, const char* key, const std::optional<T>& value) {
  if (value) to[key] = *value;
}
void Put(ordered_json& to, const char* key, const std::optional<FrameSize>& size) {
  if (size) to[key] = {size->width, size->height};
}
void Put(ordered_json& to, const char* key, const std::string& text) {
  if (!text.empty()) to[key] = text;
}

template <typename T>
void Take(const json& from, const char* key, T& value) {
  if (from.contains(key)) value = from[key].get<T>();
}
template <typename T>
void Take(const json& from, const char* key, std::optional<T>& value) {
  if (from.contains(key)) value = from[key].get<T>();
}
FrameSize SizeOf(const json& pair) {
  return {pair.at(0), pair.at(1)};
}

template <size_t N>
int PlaceOf(const char* const (&names)[N], const std::string& name) {
  for (size_t i = 0; i < N; ++i) {
    if (name == names[i]) return static_cast<int>(i);
  }
  throw Error(fmt::format("\"{}\" means nothing here", name));
}

ordered_json InputJson(const InputOptions& input) {
  ordered_json to = {{"path", input.path}};
  if (input.path == "demo") Put(to, "size", std::optional(input.demoSize));
  to["fps"] = input.fps;
  Put(to, "frames", input.frames);
  Put(to, "start", input.start);
  Put(to, "end", input.end);
  to["gaps"] = kGaps[static_cast<int>(input.gaps)];
  to["literal"] = input.literal;
  to["deinterlace"] = input.deinterlace;
  return to;
}

InputOptions InputOf(const json& from) {
  InputOptions input;
  input.path = from.at("path");
  if (from.contains("size")) input.demoSize = SizeOf(from["size"]);
  input.fps = from.at("fps");
  Take(from, "frames", input.frames);
  Take(from, "start", input.start);
  Take(from, "end", input.end);
  input.gaps = static_cast<Gaps>(PlaceOf(kGaps, from.at("gaps")));
  input.literal = from.at("literal");
  input.deinterlace = from.at("deinterlace");
  return input;
}

ordered_json OutputJson(const OutputOptions& output) {
  ordered_json to = {{"path", output.path}};
  Put(to, "codec", output.codec);
  Put(to, "crf", output.crf);
  Put(to, "bitrate", output.bitrate);
  Put(to, "preset", output.preset);
  Put(to, "pixelFormat", output.pixelFormat);
  to["encoderThreads"] = output.encoderThreads;
  to["audio"] = output.audio;
  to["subtitles"] = output.subtitles;
  to["overwrite"] = output.overwrite;
  to["literal"] = output.literal;
  Put(to, "startNumber", output.startNumber);
  return to;
}

OutputOptions OutputOf(const json& from) {
  OutputOptions output;
  output.path = from.at("path");
  Take(from, "codec", output.codec);
  Take(from, "crf", output.crf);
  Take(from, "bitrate", output.bitrate);
  Take(from, "preset", output.preset);
  Take(from, "pixelFormat", output.pixelFormat);
  output.encoderThreads = from.at("encoderThreads");
  output.audio = from.at("audio");
  output.subtitles = from.at("subtitles");
  output.overwrite = from.at("overwrite");
  output.literal = from.at("literal");
  Take(from, "startNumber", output.startNumber);
  return output;
}

ordered_json PieceJson(const Piece& piece) {
  ordered_json to = {{"first", piece.first}, {"count", piece.count}, {"inputs", {piece.firstInput, piece.inputs}}};
  if (piece.listPlace > 0) to["listPlace"] = piece.listPlace;
  const Cut& cut = piece.cut;
  if (cut.stamp != 0 || cut.keyDecoded != 0 || cut.keyStamp != 0) {
    to["stamp"] = cut.stamp;
    to["key"] = {cut.keyStamp, cut.keyDecoded};
  }
  if (cut.resultStamp != 0) to["resultStamp"] = cut.resultStamp;
  Put(to, "until", piece.until);
  return to;
}

Piece PieceOf(const json& from) {
  Piece piece;
  piece.first = piece.cut.frame = from.at("first");
  piece.count = from.at("count");
  piece.firstInput = from.at("inputs").at(0);
  piece.inputs = from.at("inputs").at(1);
  Take(from, "listPlace", piece.listPlace);
  Take(from, "stamp", piece.cut.stamp);
  if (from.contains("key")) {
    piece.cut.keyStamp = from["key"].at(0);
    piece.cut.keyDecoded = from["key"].at(1);
  }
  Take(from, "resultStamp", piece.cut.resultStamp);
  Take(from, "until", piece.until);
  return piece;
}

ordered_json ClipJson(const ClipPlan& clip) {
  ordered_json to = {{"frames", clip.frames},
                     {"totalFrames", clip.totalFrames},
                     {"firstStamp", clip.firstStamp},
                     {"firstTimestamp", clip.firstTimestamp},
                     {"size", {clip.size.width, clip.size.height}}};
  Put(to, "whole", clip.whole);
  return to;
}

ClipPlan ClipOf(const json& from) {
  ClipPlan clip;
  clip.frames = from.at("frames");
  clip.totalFrames = from.at("totalFrames");
  clip.firstStamp = from.at("firstStamp");
  clip.firstTimestamp = from.at("firstTimestamp");
  clip.size = SizeOf(from.at("size"));
  Take(from, "whole", clip.whole);
  return clip;
}

ordered_json ChainJson(const Chain& chain) {
  ordered_json to = ordered_json::array();
  for (const ChainLink& link : chain.Links()) {
    ordered_json effect = {{"effect", link.effect->id}, {"name", link.effect->name}, {"opacity", link.opacity}};
    if (!link.settings.empty()) effect["settings"] = link.settings;
    to.push_back(effect);
  }
  return to;
}

}  // namespace

std::string JobPath(const std::string& folder) {
  return folder + "/job.json";
}
std::string InputListPath(const std::string& folder) {
  return folder + "/inputs.jsonl";
}
std::string JoinedPath(const std::string& folder) {
  return folder + "/joined.json";
}

std::string PieceFileName(const std::string& input, int64_t place) {
  return fmt::format("{:06}{}", place, std::filesystem::path(input).extension().string());
}

std::string ResultPath(const Job& job, const std::string& input) {
  namespace fs = std::filesystem;
  return (fs::path(job.output.path) / fs::path(input).lexically_relative(job.input.path)).string();
}

std::string TimeText() {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                     fmt::gmtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

int64_t Job::Total() const {
  return kind == JobKind::kFiles ? inputs : clip.frames;
}

Chain Job::BuildChain(const EffectList& list) const {
  Chain chain;
  for (const EffectStep& step : effects) {
    const EffectInfo* effect = list.WithId(step.effect);
    if (!effect) throw Error(fmt::format("{}: there is no effect {} here", JobPath(folder), step.effect));
    chain.Add(*effect, step.settings, step.opacity);
  }
  chain.SetSeed(seed);
  return chain;
}

void WriteJob(const Job& job, const Chain& chain) {
  ordered_json head = {{"kvx", job.version},
                       {"id", job.id},
                       {"planned", job.planned},
                       {"kind", kKinds[static_cast<int>(job.kind)]},
                       {"effects", ChainJson(chain)},
                       {"input", InputJson(job.input)},
                       {"output", OutputJson(job.output)},
                       {"keepGoing", job.keepGoing}};
  Put(head, "pad", job.pad);
  Put(head, "seed", job.seed);
  if (job.kind != JobKind::kFiles) head["clip"] = ClipJson(job.clip);
  OutputFile file(JobPath(job.folder), false);
  std::string text = head.dump(2);
  text.resize(text.rfind('\n'));
  file.Write(text);
  if (job.inputs <= kMostInputsWithin) {
    file.Write(",\n  \"inputs\": [");
    std::ifstream list(InputListPath(job.folder));
    const char* between = "\n    ";
    for (std::string line; std::getline(list, line); between = ",\n    ") file.Write(between + line);
    file.Write("\n  ]");
  } else {
    file.Write(fmt::format(",\n  \"inputs\": {{\"count\": {}, \"list\": \"inputs.jsonl\"}}", job.inputs));
  }
  file.Write(",\n  \"pieces\": [");
  const char* between = "\n    ";
  for (const Piece& piece : job.pieces) {
    file.Write(between + PieceJson(piece).dump());
    between = ",\n    ";
  }
  file.Write("\n  ]\n}\n");
  file.Commit();
}

Job ReadJob(const std::string& folder) {
  Job job;
  job.folder = AbsolutePath(folder);
  while (job.folder.size() > 1 && job.folder.ends_with('/')) job.folder.pop_back();
  std::error_code error;
  if (!std::filesystem::exists(JobPath(job.folder), error)) {
    throw Error(fmt::format("{}: no job: there is no job.json in it", folder));
  }
  InputFile file(JobPath(job.folder));
  try {
    const json from = json::parse(file.ReadAll(kLargestSmallFile));
    job.version = from.at("kvx");
    job.id = from.at("id");
    job.planned = from.at("planned");
    job.kind = static_cast<JobKind>(PlaceOf(kKinds, from.at("kind")));
    for (const json& effect : from.at("effects")) {
      EffectStep step{effect.at("effect"), effect.at("opacity"), {}};
      Take(effect, "settings", step.settings);
      job.effects.push_back(std::move(step));
    }
    job.input = InputOf(from.at("input"));
    job.output = OutputOf(from.at("output"));
    job.keepGoing = from.at("keepGoing");
    if (from.contains("pad")) job.pad = SizeOf(from["pad"]);
    Take(from, "seed", job.seed);
    if (from.contains("clip")) job.clip = ClipOf(from["clip"]);
    const json& inputs = from.at("inputs");
    job.inputs = inputs.is_array() ? static_cast<int64_t>(inputs.size()) : inputs.at("count").get<int64_t>();
    for (const json& piece : from.at("pieces")) job.pieces.push_back(PieceOf(piece));
    if (job.pieces.empty()) throw Error("it has no pieces");
  } catch (const std::exception& problem) {
    throw Error(fmt::format("{}: cannot be used: {}", JobPath(folder), problem.what()));
  }
  return job;
}

void ForEachInput(const Job& job, const Piece& piece, const std::function<void(const InputRecord&)>& visit) {
  const std::string path = InputListPath(job.folder);
  std::ifstream list(path);
  list.seekg(piece.listPlace);
  std::string line;
  for (int64_t i = 0; i < piece.inputs; ++i) {
    if (!std::getline(list, line)) throw Error(fmt::format("{}: ends too early", path));
    InputRecord record;
    try {
      record = ParseInputLine(line);
    } catch (const nlohmann::json::exception& error) {
      throw Error(fmt::format("{}: cannot be used: {}", path, error.what()));
    }
    visit(record);
  }
}

}  // namespace kvx
