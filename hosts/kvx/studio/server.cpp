#include "hosts/kvx/studio/server.h"

#include <fmt/format.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "hostkit/recipe.h"
#include "hosts/kvx/studio/adapters.h"
#include "hosts/kvx/studio/command_lines.h"
#include "hosts/kvx/studio/favourites.h"
#include "hosts/kvx/studio/page_files.h"

namespace kvx {

using nlohmann::ordered_json;

namespace {

constexpr size_t kMostBody = size_t{1} << 20;
constexpr size_t kMostEffects = 32;
constexpr int64_t kMostFrames = 10000;
constexpr int32_t kLargestResult = 4096;
constexpr int32_t kLargestPad = 8192;
constexpr int kThreads = 24;
constexpr int64_t kReloadGrace = 5000;  // milliseconds that a page may take to come back
constexpr auto kHeartbeat = std::chrono::milliseconds(250);

std::string RandomToken() {
  unsigned char bytes[16];
  if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) throw Error("the system gives no random numbers");
  std::string token;
  for (const unsigned char byte : bytes) token += fmt::format("{:02x}", byte);
  return token;
}

// Takes the same time wherever the two differ.
bool SameToken(std::string_view given, std::string_view token) {
  unsigned difference = given.size() != token.size();
  for (size_t i = 0; i < token.size(); ++i) {
    difference |= static_cast<unsigned char>(i < given.size() ? given[i] : 0) ^ static_cast<unsigned char>(token[i]);
  }
  return difference == 0;
}

// Names of files need not be UTF-8.
std::string Dump(const ordered_json& value) {
  return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

void SendJson(httplib::Response& response, const ordered_json& value, int status = 200) {
  response.status = status;
  response.set_content(Dump(value), "application/json");
}

void Refuse(httplib::Response& response, int status, const std::string& why) {
  SendJson(response, {{"error", why}}, status);
  response.set_header("Connection", "close");  // what else was sent is not read
}

ordered_json ParseBody(const httplib::Request& request) {
  ordered_json body = ordered_json::parse(request.body, nullptr, false);
  if (!body.is_object()) throw UsageError("the request is not a JSON object");
  return body;
}

int64_t NumberOf(const ordered_json& object, const char* key, int64_t fallback, int64_t least, int64_t most) {
  const auto found = object.find(key);
  if (found == object.end() || found->is_null()) return fallback;
  if (!found->is_number()) throw UsageError(fmt::format("\"{}\" must be a number", key));
  const double value = found->get<double>();
  if (!(value >= static_cast<double>(least) && value <= static_cast<double>(most))) {
    throw UsageError(fmt::format("\"{}\" must be from {} to {}", key, least, most));
  }
  return static_cast<int64_t>(value);
}

std::string TextOf(const ordered_json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return "";
  if (!found->is_string()) throw UsageError(fmt::format("\"{}\" must be a text", key));
  return found->get<std::string>();
}

bool FlagOf(const ordered_json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_boolean() && found->get<bool>();
}

ordered_json JobJson(const JobState& state) {
  static constexpr const char* kPhases[] = {"none", "running", "done", "cancelled", "failed"};
  const double rate = state.seconds > 0 ? static_cast<double>(state.done) / state.seconds : 0;
  ordered_json json = {{"phase", kPhases[static_cast<size_t>(state.phase)]},
                       {"file", state.file},
                       {"message", state.message},
                       {"done", state.done},
                       {"total", state.total},
                       {"seconds", std::round(state.seconds * 10) / 10},
                       {"fps", std::round(rate * 10) / 10}};
  if (rate > 0 && state.total > state.done) {
    json["left"] = std::ceil(static_cast<double>(state.total - state.done) / rate);
  }
  return json;
}

// Pixels as a page's canvas takes them.
std::string RgbaOf(const Picture& picture, bool& opaque) {
  std::string bytes(picture.pixels.size(), '\0');
  uint8_t alpha = 255;
  for (size_t i = 0; i < bytes.size(); i += 4) {
    bytes[i] = static_cast<char>(picture.pixels[i + 2]);
    bytes[i + 1] = static_cast<char>(picture.pixels[i + 1]);
    bytes[i + 2] = static_cast<char>(picture.pixels[i]);
    bytes[i + 3] = static_cast<char>(picture.pixels[i + 3]);
    alpha &= picture.pixels[i + 3];
  }
  opaque = alpha == 255;
  return bytes;
}

}  // namespace

StudioServer::StudioServer(Plugin& plugin, Clip& clip, int port)
    : plugin_(plugin),
      clip_(clip),
      previewer_(plugin, clip),
      thumbnails_(plugin, clip, [this] { return previewer_.Idle() > 300; }),
      job_(plugin),
      token_(RandomToken()) {
  http_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
  // Without SO_REUSEPORT, with which two studios could share a port.
  http_.set_socket_options([](int socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  http_.set_tcp_nodelay(true);
  http_.set_keep_alive_max_count(100000);
  http_.set_keep_alive_timeout(2);
  http_.set_read_timeout(5);
  http_.set_write_timeout(5);
  http_.set_payload_max_length(kMostBody);
  http_.set_default_headers(
      {{"Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
        "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
       {"X-Content-Type-Options", "nosniff"},
       {"Referrer-Policy", "no-referrer"},
       {"Cross-Origin-Resource-Policy", "same-origin"},
       {"Cross-Origin-Opener-Policy", "same-origin"}});
  http_.set_pre_routing_handler([this](const Request& request, Response& response) {
    return Admit(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                    : httplib::Server::HandlerResponse::Handled;
  });
  http_.set_error_handler([](const Request&, Response& response) {
    if (response.body.empty()) SendJson(response, {{"error", "there is nothing here"}}, response.status);
  });
  AddPageFiles();
  AddRoutes();
  port_ = port == 0 ? http_.bind_to_any_port("127.0.0.1") : http_.bind_to_port("127.0.0.1", port) ? port : -1;
  if (port_ <= 0) throw Error(fmt::format("port {} cannot be listened on: it is taken or not allowed", port));
}

StudioServer::~StudioServer() = default;

std::string StudioServer::Address() const {
  return fmt::format("http://127.0.0.1:{}/{}/", port_, token_);
}

void StudioServer::Run() {
  http_.listen_after_bind();
  stopping_ = true;
}

void StudioServer::Stop() {
  stopping_ = true;
  job_.Cancel();
  http_.stop();
}

bool StudioServer::Admit(const Request& request, Response& response) const {
  const std::string here = fmt::format("127.0.0.1:{}", port_);
  const std::string local = fmt::format("localhost:{}", port_);
  const std::string host = request.get_header_value("Host");
  if (request.get_header_value_count("Host") != 1 || (host != here && host != local)) {
    Refuse(response, 403, "this server answers to its own address only");
    return false;
  }
  const std::string origin = request.get_header_value("Origin");
  if (request.has_header("Origin") && origin != "http://" + here && origin != "http://" + local) {
    Refuse(response, 403, "requests of other pages are refused");
    return false;
  }
  const std::string_view path = request.path;
  const size_t end = std::min(path.find('/', 1), path.size());
  if (path.empty() || !SameToken(path.substr(1, end - 1), token_)) {
    Refuse(response, 403, "the address needs the token that kvx studio printed");
    return false;
  }
  if (request.method != "GET" && request.method != "POST") {
    Refuse(response, 405, "this cannot be done here");
    return false;
  }
  const bool plainBody = request.has_header("Content-Length") && !request.has_header("Transfer-Encoding") &&
                         !request.has_header("Content-Encoding") &&
                         request.get_header_value("Content-Type").starts_with("application/json");
  if (request.method == "POST" && !plainBody) {
    Refuse(response, 415, "a body of JSON with its length is wanted");
    return false;
  }
  return true;
}

StudioServer::Handler StudioServer::Guarded(Handler handler) const {
  return [handler = std::move(handler)](const Request& request, Response& response) {
    response.set_header("Cache-Control", "no-store");
    try {
      handler(request, response);
    } catch (const Error& error) {
      const bool outdated = std::string_view(error.what()) == "stopped";
      SendJson(response, {{"error", error.what()}}, outdated ? 409 : error.IsUsage() ? 400 : 500);
    } catch (const std::bad_alloc&) {
      SendJson(response, {{"error", "there is not enough memory for that"}}, 500);
    } catch (const std::exception& error) {
      SendJson(response, {{"error", error.what()}}, 500);
    }
  };
}

void StudioServer::AddPageFiles() {
  for (const PageFile& file : PageFiles()) {
    const std::string path =
        fmt::format("/{}/{}", token_, std::string_view(file.name) == "index.html" ? "" : file.name);
    http_.Get(path, [file](const Request&, Response& response) {
      response.set_header("Cache-Control", "no-store");
      response.set_content(file.text, std::char_traits<char>::length(file.text), file.type);
    });
  }
}

void StudioServer::AddRoutes() {
  const auto get = [this](const char* name, void (StudioServer::*handler)(const Request&, Response&)) {
    http_.Get(fmt::format("/{}/{}", token_, name), Guarded([this, handler](const Request& request, Response& response) {
                (this->*handler)(request, response);
              }));
  };
  const auto post = [this](const char* name, Handler handler) {
    http_.Post(fmt::format("/{}/{}", token_, name), Guarded(std::move(handler)));
  };
  http_.Get(fmt::format("/{}/describe", token_),
            Guarded([this](const Request&, Response& response) { Describe(response); }));
  get("thumbnail", &StudioServer::Thumbnail);
  get("events", &StudioServer::Events);
  post("preview", [this](const Request& request, Response& response) { Preview(request, response); });
  post("picture", [this](const Request& request, Response& response) { SavePicture(request, response); });
  post("lines", [this](const Request& request, Response& response) { Lines(request, response); });
  post("render", [this](const Request& request, Response& response) { StartRender(request, response); });
  post("favourites", [this](const Request& request, Response& response) { KeepFavourites(request, response); });
  post("cancel", [this](const Request&, Response& response) {
    job_.Cancel();
    SendJson(response, ordered_json::object());
  });
  // Looks at a recipe and gives it back as the page keeps it.
  post("recipe", [this](const Request& request, Response& response) {
    const Chain chain = ParseRecipe(plugin_.Effects(), TextOf(ParseBody(request), "text"), "the recipe");
    if (chain.Links().size() > kMostEffects) {
      throw UsageError(fmt::format("the recipe has more than {} effects", kMostEffects));
    }
    response.set_content(RecipeText(chain), "application/json");
  });
}

Project StudioServer::ParseProject(const ordered_json& value) const {
  Project project;
  const auto recipe = value.find("recipe");
  if (recipe != value.end()) {
    const bool empty = recipe->is_object() && recipe->contains("effects") && (*recipe)["effects"].is_array() &&
                       (*recipe)["effects"].empty();
    if (!empty) project.chain = ParseRecipe(plugin_.Effects(), recipe->dump(), "the chain");
  }
  if (project.chain.Links().size() > kMostEffects) {
    throw UsageError(fmt::format("at most {} effects can stand in a chain", kMostEffects));
  }
  if (const std::string pad = TextOf(value, "pad"); !pad.empty()) {
    project.pad = ParseFrameSize(pad);
    if (project.pad->width > kLargestPad || project.pad->height > kLargestPad) {
      throw UsageError(fmt::format("frames of at most {0} by {0} can be padded to", kLargestPad));
    }
  }
  project.frames = NumberOf(value, "frames", 1, 1, kMostFrames);
  return project;
}

std::shared_ptr<Page> StudioServer::PageOf(const Request& request) {
  std::shared_ptr<Page> page = pages_.Find(request.get_param_value("page"));
  if (!page) throw UsageError("too many pages are open, or this one has no name");
  return page;
}

void StudioServer::Describe(Response& response) const {
  ordered_json effects = ordered_json::array();
  for (const EffectInfo& effect : plugin_.Effects().All()) {
    ordered_json params = ordered_json::array();
    for (const ParamInfo& param : effect.params) {
      ordered_json entry = {{"name", param.name}, {"kind", ParamTypeName(param.type)}, {"hidden", param.hidden}};
      if (!param.IsText()) {
        entry["min"] = param.minimum;
        entry["max"] = param.maximum;
        entry["default"] = param.defaultValue;
        entry["whole"] = !param.TakesFractions();
      }
      params.push_back(std::move(entry));
    }
    const bool twice = effect.slug != Slug(effect.name);
    effects.push_back({{"id", effect.id},
                       {"name", twice ? fmt::format("{} {}", effect.name, effect.id) : effect.name},
                       {"family", effect.family},
                       {"moving", effect.moving},
                       {"ordered", effect.ordered},
                       {"random", effect.random},
                       {"params", std::move(params)}});
  }
  const bool demo = clip_.Input() == "demo";
  SendJson(response, {{"clip",
                       {{"name", demo ? "demo" : std::filesystem::path(clip_.Input()).filename().string()},
                        {"endless", clip_.IsEndless()},
                        {"width", clip_.Size().width},
                        {"height", clip_.Size().height},
                        {"frames", clip_.Count()},
                        {"fps", clip_.Fps()}}},
                      {"families", Families()},
                      {"effects", std::move(effects)},
                      {"favourites", ReadFavourites()},
                      {"stripFrames", Thumbnails::kStripFrames},
                      {"mostEffects", kMostEffects}});
}

void StudioServer::Preview(const Request& request, Response& response) {
  const ordered_json body = ParseBody(request);
  const Project project = ParseProject(body);
  const std::shared_ptr<Page> page = PageOf(request);
  const auto number = static_cast<uint64_t>(NumberOf(body, "number", 0, 0, int64_t{1} << 53));
  PreviewRequest preview;
  preview.frame = NumberOf(body, "frame", 0, 0, int64_t{1} << 40);
  preview.frame = std::min(preview.frame, project.Total(clip_) - 1);
  preview.x = static_cast<int32_t>(NumberOf(body, "x", 0, 0, 32768));
  preview.y = static_cast<int32_t>(NumberOf(body, "y", 0, 0, 32768));
  preview.region.width = static_cast<int32_t>(NumberOf(body, "width", 0, 0, 32768));
  preview.region.height = static_cast<int32_t>(NumberOf(body, "height", 0, 0, 32768));
  preview.fit.width = static_cast<int32_t>(NumberOf(body, "fitWidth", 1280, 1, kLargestResult));
  preview.fit.height = static_cast<int32_t>(NumberOf(body, "fitHeight", 1280, 1, kLargestResult));
  preview.draft = FlagOf(body, "draft");
  preview.before = FlagOf(body, "before");
  const bool latest = !FlagOf(body, "keep");  // outdated as soon as the page asks for another
  if (latest) page->Ask(number);
  preview.stopped = [this, page, number, latest] {
    return stopping_ || (latest && page->newest > number) || page->IsGone(kReloadGrace);
  };
  const PreviewResult result = previewer_.Render(project, preview);
  bool opaque = true;
  response.body = RgbaOf(result.picture, opaque);
  response.set_header("Content-Type", "application/octet-stream");
  response.set_header("X-Kvx-Width", std::to_string(result.picture.width));
  response.set_header("X-Kvx-Height", std::to_string(result.picture.height));
  response.set_header("X-Kvx-Opaque", opaque ? "1" : "0");
  response.set_header("X-Kvx-Exact", result.exact ? "1" : "0");
  response.set_header("X-Kvx-Milliseconds", fmt::format("{:.1f}", result.milliseconds));
  response.set_header("X-Kvx-Frames", std::to_string(project.Total(clip_)));
}

void StudioServer::Thumbnail(const Request& request, Response& response) {
  const EffectInfo& effect = plugin_.Effects().Find(request.get_param_value("effect"));
  const std::shared_ptr<Page> page = PageOf(request);
  const auto picture = thumbnails_.Get(effect, request.has_param("strip"),
                                       [this, page] { return stopping_ || page->IsGone(kReloadGrace); });
  response.headers.erase("Cache-Control");
  response.set_header("Cache-Control", "private, max-age=86400, immutable");
  response.set_content(*picture, "image/jpeg");
}

void StudioServer::SavePicture(const Request& request, Response& response) {
  const ordered_json body = ParseBody(request);
  const Project project = ParseProject(body);
  const std::shared_ptr<Page> page = PageOf(request);
  const int64_t frame = std::min(NumberOf(body, "frame", 0, 0, int64_t{1} << 40), project.Total(clip_) - 1);
  const auto stopped = [this, page] { return stopping_ || page->IsGone(kReloadGrace); };
  Picture picture = previewer_.RenderExactly(project, frame, stopped);
  response.body = PngOf(clip_, *clip_.At(frame, stopped), std::move(picture));
  response.set_header("Content-Type", "image/png");
}

void StudioServer::Lines(const Request& request, Response& response) const {
  const ordered_json body = ParseBody(request);
  const Project project = ParseProject(body);
  const std::string suggested = SuggestName(project, clip_);
  if (project.chain.Empty()) {
    SendJson(response, {{"name", suggested}, {"recipe", ""}, {"lines", ordered_json::array()}});
    return;
  }
  const std::string name = TextOf(body, "name");
  ordered_json lines = ordered_json::array();
  const auto add = [&](const char* program, const ProgramLine& line, bool found) {
    const char* missing = "needs the kvx module for this program, which was not found beside this kvx";
    lines.push_back({{"program", program},
                     {"line", line.line},
                     {"note", !line.note.empty() ? line.note
                              : found            ? ""
                                                 : missing}});
  };
  add("kvx", KvxLine(project, clip_, name.empty() ? suggested : name), true);
  add("gst-launch-1.0", GstLine(project, clip_), HasGstModule());
  add("melt", MeltLine(project, clip_), HasMltModule());
  SendJson(response, {{"name", suggested}, {"recipe", RecipeText(project.chain)}, {"lines", std::move(lines)}});
}

void StudioServer::StartRender(const Request& request, Response& response) {
  const ordered_json body = ParseBody(request);
  Project project = ParseProject(body);
  if (project.chain.Empty()) throw UsageError("there is no effect to render");
  const std::shared_ptr<Page> page = PageOf(request);
  job_.Start(std::move(project), clip_, TextOf(body, "name"), [page] { return page->IsGone(kReloadGrace); });
  SendJson(response, JobJson(job_.State()));
}

void StudioServer::KeepFavourites(const Request& request, Response& response) const {
  const ordered_json body = ParseBody(request);
  const auto found = body.find("favourites");
  if (found == body.end() || !found->is_array()) throw UsageError("\"favourites\" must be a list of ids");
  std::vector<int32_t> ids;
  for (const ordered_json& id : *found) {
    const EffectInfo* effect = id.is_number_integer() ? plugin_.Effects().WithId(id.get<int32_t>()) : nullptr;
    if (!effect) throw UsageError("an id among the favourites is not known");
    if (std::find(ids.begin(), ids.end(), effect->id) == ids.end()) ids.push_back(effect->id);
  }
  WriteFavourites(ids);
  SendJson(response, ordered_json::object());
}

// A stream that lives as long as the page does, and tells it how the render goes.
void StudioServer::Events(const Request& request, Response& response) {
  const std::shared_ptr<Page> page = PageOf(request);
  if (!pages_.OpenStream(*page)) {
    Refuse(response, 503, "too many pages of this studio are open; close one");
    return;
  }
  auto told = std::make_shared<std::string>();
  response.set_chunked_content_provider(
      "text/event-stream",
      [this, told](size_t, httplib::DataSink& sink) {
        const std::string state = "data: " + Dump(JobJson(job_.State())) + "\n\n";
        const std::string text = state == *told ? std::string(": still here\n\n") : state;
        *told = state;
        if (stopping_ || !sink.is_writable() || !sink.write(text.data(), text.size())) return false;
        std::this_thread::sleep_for(kHeartbeat);
        return true;
      },
      [this, page](bool) { pages_.CloseStream(*page); });
}

}  // namespace kvx
