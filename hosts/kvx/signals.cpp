#include "hosts/kvx/signals.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>

namespace kvx {

namespace {

constexpr int kSlots = 16;
constexpr int kPatience = 10;  // seconds

std::atomic<int> g_signal{0};
// A handler may only read what stands still: a path is whole before its slot points to it.
std::atomic<char*> g_doomed[kSlots];

int StatusOf(int signal) {
  return signal == SIGINT ? 130 : 143;
}

[[noreturn]] void EndAtOnce(int status) {
  for (auto& slot : g_doomed) {
    if (const char* path = slot.load()) unlink(path);
  }
  _exit(status);
}

void OnSignal(int signal) {
  if (g_signal != 0) EndAtOnce(StatusOf(g_signal));
  g_signal = signal;
  std::signal(SIGALRM, OnSignal);
  alarm(kPatience);
}

}  // namespace

void CatchSignals() {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    // nohup means it.
    if (signal != SIGHUP || before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // beyond a limit of file size writing says so too
}

bool StopAsked() {
  return g_signal != 0;
}

int StopStatus() {
  return StatusOf(g_signal);
}

void AcknowledgeStop() {
  alarm(0);
}

void ThrowIfStopAsked() {
  if (StopAsked()) throw Interrupted();
}

DoomedFile::DoomedFile(const std::string& path) : slot_(-1) {
  char* copy = strdup(path.c_str());
  for (int i = 0; copy && i < kSlots; ++i) {
    char* empty = nullptr;
    if (g_doomed[i].compare_exchange_strong(empty, copy)) {
      slot_ = i;
      return;
    }
  }
  free(copy);
}

DoomedFile::~DoomedFile() {
  if (slot_ >= 0) free(g_doomed[slot_].exchange(nullptr));
}

}  // namespace kvx
