#include "hosts/kvx/studio/studio.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <thread>

#include "hosts/kvx/studio/clip.h"
#include "hosts/kvx/studio/server.h"

namespace kvx {

namespace {

void OpenBrowser(const std::string& address) {
  const char* const arguments[] = {"xdg-open", address.c_str(), nullptr};
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t child = 0;
  const int failure =
      posix_spawnp(&child, arguments[0], nullptr, &attributes, const_cast<char* const*>(arguments), environ);
  posix_spawnattr_destroy(&attributes);
  if (failure != 0) {
    fmt::print(stderr, "kvx: no browser was found to open the page with; open the address yourself\n");
    return;
  }
  std::thread([child] { waitpid(child, nullptr, 0); }).detach();
}

}  // namespace

bool RunStudio(Plugin& plugin, const StudioOptions& options) {
  // Before any thread begins, so that all of them leave these to sigwait.
  sigset_t ends;
  sigemptyset(&ends);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&ends, signal);
  pthread_sigmask(SIG_BLOCK, &ends, nullptr);

  Clip clip(options.input);
  StudioServer server(plugin, clip, options.port);
  fmt::print("{}\nThe page works while this runs; Ctrl-C ends it.\n", server.Address());
  if (std::fflush(stdout) != 0) throw Error("standard output cannot be written");
  if (options.open) OpenBrowser(server.Address());
  std::thread serving([&] { server.Run(); });
  int signal = 0;
  sigwait(&ends, &signal);
  const bool rendering = server.Rendering();
  server.Stop();
  serving.join();
  if (rendering) fmt::print(stderr, "kvx: the render was stopped; nothing was written\n");
  return !rendering;
}

}  // namespace kvx
