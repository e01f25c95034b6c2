#include "hosts/kvx/gallery.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "hostkit/param_track.h"
#include "hostkit/text.h"
#include "hosts/kvx/frame_cache.h"
#include "hosts/kvx/labelled_grid.h"
#include "hosts/kvx/media/video.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/overlap.h"
#include "hosts/kvx/progress.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr double kFps = 25;

// The page stands alone: styles and script are in it, pictures beside it.
constexpr const char* kHead = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>kvx effects</title>
<link rel="icon" href="data:,">
<style>
:root { color-scheme: dark; --ground: #16181c; --card: #21242b; --text: #e9ebef; --dim: #a3a9b5; --accent: #ffb454; }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
header { position: sticky; top: 0; z-index: 2; padding: 12px 20px; background: var(--ground);
  border-bottom: 1px solid #333842; display: flex; flex-wrap: wrap; gap: 8px 20px; align-items: center; }
h1 { font-size: 1.2rem; margin: 0; }
#search { flex: 1 1 220px; max-width: 480px; padding: 8px 12px; border-radius: 8px; border: 1px solid #474d59;
  background: #0f1013; color: inherit; font: inherit; }
#count { color: var(--dim); }
@media (max-width: 560px) { #search { flex-basis: 100%; order: 1; } }
main { padding: 4px 20px 60px; }
h2 { font-size: 1.05rem; color: var(--accent); margin: 28px 0 10px; }
.grid { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(320px, 100%), 1fr)); gap: 16px; }
article { background: var(--card); border-radius: 10px; overflow: hidden; display: flex; flex-direction: column; }
.pair { position: relative; background: #000; }
.pair img, .pair video { display: block; width: 100%; height: auto; }
.pair .after { position: absolute; inset: 0; height: 100%; clip-path: inset(0 0 0 var(--cut, 0%)); }
.pair::after { content: ""; position: absolute; top: 0; bottom: 0; left: var(--cut, 0%); width: 2px; background: #fff8; }
.slider { width: 100%; margin: 6px 0 0; accent-color: var(--accent); }
.ends { display: flex; justify-content: space-between; padding: 0 14px; font-size: .8rem; color: var(--dim); }
.text { padding: 4px 14px 14px; }
h3 { margin: 4px 0; font-size: 1rem; }
h3 small { color: var(--dim); font-weight: normal; }
table { border-collapse: collapse; font-size: .85rem; color: var(--dim); width: 100%; }
td { padding: 1px 8px 1px 0; }
code { display: block; margin-top: 8px; padding: 6px 8px; background: #0f1013; border-radius: 6px; font-size: .8rem;
  white-space: pre-wrap; overflow-wrap: anywhere; }
[hidden] { display: none !important; }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; }
</style>
</head>
<body>
<header>
<h1>kvx effects</h1>
<input id="search" type="search" placeholder="Search effects, families, parameters" aria-label="Search effects">
<span id="count" role="status"></span>
</header>
<main>
)html";

constexpr const char* kTail = R"html(</main>
<script>
const cards = [...document.querySelectorAll('article')];
const search = document.getElementById('search');
const count = document.getElementById('count');
function filter() {
  const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  for (const card of cards) {
    card.hidden = !words.every(word => card.dataset.words.includes(word));
    if (!card.hidden) ++shown;
  }
  for (const section of document.querySelectorAll('section')) {
    section.hidden = ![...section.querySelectorAll('article')].some(card => !card.hidden);
  }
  count.textContent = shown === cards.length ? `${shown} effects` : `${shown} of ${cards.length} effects`;
}
search.addEventListener('input', filter);
for (const slider of document.querySelectorAll('.slider')) {
  slider.addEventListener('input', () => slider.previousElementSibling.style.setProperty('--cut', slider.value + '%'));
}
// Loops play only while they can be seen.
const watcher = new IntersectionObserver(entries => {
  for (const entry of entries) {
    if (entry.isIntersecting) entry.target.play().catch(() => {});
    else entry.target.pause();
  }
});
document.querySelectorAll('video').forEach(video => watcher.observe(video));
filter();
</script>
</body>
</html>
)html";

std::string Escape(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

void WriteJpeg(const Picture& picture, const fs::path& path, bool overwrite) {
  WritePicture(OverCheckerboard(picture), path.string(), overwrite);
}

void WriteLoop(const std::vector<Picture>& frames, const FrameReader& origin, const fs::path& path, bool overwrite) {
  OutputOptions options;
  options.path = path.string();
  options.overwrite = overwrite;
  options.crf = 26;
  const std::unique_ptr<FrameWriter> writer = CreateVideo(options, origin, kFps);
  Frame frame;
  for (const Picture& picture : frames) {
    frame.picture = OverCheckerboard(picture);
    writer->Write(frame);
    ++frame.number;
    ++frame.timestamp;
  }
  writer->Finish();
}

// Stands for frames without a file of their own.
class NoReader : public FrameReader {
 public:
  bool Read(Frame&) override { return false; }
  std::optional<int64_t> Count() const override { return std::nullopt; }
};

std::string Card(const EffectInfo& effect, const Picture& shape) {
  const std::string file = fmt::format("pictures/{}", effect.id);
  std::string words = Lower(fmt::format("{} {} {}", effect.name, effect.id, effect.family));
  std::string rows;
  std::string sample;
  for (const ParamInfo& param : effect.params) {
    words += " " + Lower(param.name);
    if (param.IsText()) continue;
    rows += fmt::format("<tr><td>{}</td><td>{:g} to {:g}</td><td>default {:g}</td></tr>\n", Escape(param.name),
                        param.minimum, param.maximum, param.defaultValue);
    sample += fmt::format(" -p {}={:g}", param.name, param.defaultValue);
  }
  const std::string alt = fmt::format("The picture through the effect {}", effect.name);
  const std::string after =
      effect.moving
          ? fmt::format(
                "<video class=\"after\" src=\"{0}.mp4\" poster=\"{0}.jpg\" muted loop playsinline preload=\"none\" "
                "aria-label=\"{1}\"></video>",
                file, Escape(alt))
          : fmt::format("<img class=\"after\" src=\"{}.jpg\" alt=\"{}\" loading=\"lazy\" width=\"{}\" height=\"{}\">",
                        file, Escape(alt), shape.width, shape.height);
  return fmt::format(
      "<article data-words=\"{}\">\n<div class=\"pair\"><img src=\"pictures/source.jpg\" alt=\"The picture before\" "
      "width=\"{}\" height=\"{}\">{}</div>\n<input class=\"slider\" type=\"range\" min=\"0\" max=\"100\" "
      "value=\"0\" aria-label=\"Before and after {}\">\n<div class=\"ends\" aria-hidden=\"true\"><span>before</span>"
      "<span>after</span></div>\n<div class=\"text\"><h3>{} <small>{}</small></h3>\n{}"
      "<code>kvx render {}{} in.png out.png</code></div>\n</article>\n",
      Escape(words), shape.width, shape.height, after, Escape(effect.name), Escape(effect.name), effect.id,
      rows.empty() ? std::string() : "<table>\n" + rows + "</table>\n", effect.id, Escape(sample));
}

// Before the first picture: nobody wants to hear of the last one's file after minutes.
void CheckFiles(const Plugin& plugin, const GalleryOptions& options) {
  const fs::path directory(options.directory);
  std::vector<std::string> paths = {(directory / "index.html").string(), (directory / "pictures/source.jpg").string()};
  for (const EffectInfo& effect : plugin.Effects().All()) {
    paths.push_back((directory / fmt::format("pictures/{}.jpg", effect.id)).string());
    if (effect.moving) paths.push_back((directory / fmt::format("pictures/{}.mp4", effect.id)).string());
  }
  for (const std::string& path : paths) CheckReplaceable(path, options.overwrite);
  RefuseOverlap({options.input}, paths);
}

}  // namespace

void WriteGallery(Plugin& plugin, const GalleryOptions& options) {
  const fs::path directory(options.directory);
  std::error_code error;
  CheckFiles(plugin, options);
  fs::create_directories(directory / "pictures", error);
  if (error) throw Error(fmt::format("{}: {}", options.directory, error.message()));
  // Even sizes, so that every player shows the loops.
  const int32_t width = options.width / 2 * 2;
  FrameCache source(options.input, {width, width * 9 / 16 / 2 * 2}, std::nullopt, width);
  FrameSize even{source.At(0).width / 2 * 2, source.At(0).height / 2 * 2};
  FrameCache cropped(source, FrameSize{std::max(2, even.width), std::max(2, even.height)}, width);
  const Picture first = cropped.At(0);
  WriteJpeg(first, directory / "pictures/source.jpg", options.overwrite);

  std::string page = kHead;
  Progress progress("effect", static_cast<int64_t>(plugin.Effects().All().size()));
  for (const std::string& family : Families()) {
    std::string cards;
    for (const EffectInfo& effect : plugin.Effects().All()) {
      if (effect.family != family) continue;
      ThrowIfStopAsked();
      Picture output;
      std::vector<Picture> frames;
      RenderSample(plugin, effect, ParamTracks(effect, {}, 100), cropped, SampleLength(effect), output,
                   effect.moving ? &frames : nullptr);
      WriteJpeg(output, directory / fmt::format("pictures/{}.jpg", effect.id), options.overwrite);
      if (effect.moving) {
        WriteLoop(frames, NoReader(), directory / fmt::format("pictures/{}.mp4", effect.id), options.overwrite);
      }
      cards += Card(effect, first);
      progress.Advance();
    }
    if (cards.empty()) continue;
    page += fmt::format("<section aria-label=\"{0}\">\n<h2>{0}</h2>\n<div class=\"grid\">\n{1}</div>\n</section>\n",
                        family, cards);
  }
  page += kTail;
  progress.Finish();
  WriteWholeFile((directory / "index.html").string(), page, options.overwrite);
}

}  // namespace kvx
