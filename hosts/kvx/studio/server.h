// The studio behind HTTP, on this machine alone.
#ifndef KVX_HOSTS_KVX_STUDIO_SERVER_H_
#define KVX_HOSTS_KVX_STUDIO_SERVER_H_

#include <httplib.h>

#include <atomic>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "hosts/kvx/studio/clip.h"
#include "hosts/kvx/studio/pages.h"
#include "hosts/kvx/studio/preview.h"
#include "hosts/kvx/studio/render_job.h"
#include "hosts/kvx/studio/thumbnails.h"

namespace kvx {

// Every request needs the token as the first part of its path, and names this machine in Host and, if there is one, in
// Origin. No request names a path of the file system.
class StudioServer {
 public:
  // Listens on 127.0.0.1 at `port`, 0 for any that is free. Throws Error.
  StudioServer(Plugin& plugin, Clip& clip, int port);
  ~StudioServer();

  // With the token.
  std::string Address() const;
  // Serves until Stop is called from another thread.
  void Run();
  void Stop();
  bool Rendering() const { return job_.Running(); }

 private:
  using Request = httplib::Request;
  using Response = httplib::Response;
  using Handler = std::function<void(const Request&, Response&)>;

  bool Admit(const Request& request, Response& response) const;
  void AddRoutes();
  void AddPageFiles();
  // Handlers may throw; the page is told.
  Handler Guarded(Handler handler) const;

  void Describe(Response& response) const;
  void Preview(const Request& request, Response& response);
  void Thumbnail(const Request& request, Response& response);
  void SavePicture(const Request& request, Response& response);
  void Lines(const Request& request, Response& response) const;
  void StartRender(const Request& request, Response& response);
  void Events(const Request& request, Response& response);
  void KeepFavourites(const Request& request, Response& response) const;

  Project ParseProject(const nlohmann::ordered_json& value) const;
  std::shared_ptr<Page> PageOf(const Request& request);

  Plugin& plugin_;
  Clip& clip_;
  Previewer previewer_;
  Thumbnails thumbnails_;
  RenderJob job_;
  Pages pages_;
  std::string token_;
  int port_ = 0;
  std::atomic<bool> stopping_{false};
  httplib::Server http_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_SERVER_H_
