// Ctrl-C, SIGTERM and SIGHUP: a run ends in order, with nothing half written under a user's name.
#ifndef KVX_HOSTS_KVX_SIGNALS_H_
#define KVX_HOSTS_KVX_SIGNALS_H_

#include <string>

namespace kvx {

// From now on such a signal sets a flag that the work looks at. A second one, or ten seconds in which nobody looked,
// end the process at once; registered temporary files are removed then too. SIGPIPE is ignored: writing says what
// happened.
void CatchSignals();

// True once a signal came.
bool StopAsked();

// What the process ends with after a signal: 130 for Ctrl-C, 143 for the others.
int StopStatus();

// The work saw the flag and is putting things in order, which may take as long as it takes.
void AcknowledgeStop();

// Thrown by work that stopped because it was asked to.
struct Interrupted {};
void ThrowIfStopAsked();

// A file that a sudden end removes, for as long as the object lives.
class DoomedFile {
 public:
  explicit DoomedFile(const std::string& path);
  ~DoomedFile();
  DoomedFile(const DoomedFile&) = delete;
  DoomedFile& operator=(const DoomedFile&) = delete;

 private:
  int slot_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_SIGNALS_H_
