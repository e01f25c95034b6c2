// What a project is as a line for a shell: for kvx itself and for the programs that our adapters serve.
#ifndef KVX_HOSTS_KVX_STUDIO_COMMAND_LINES_H_
#define KVX_HOSTS_KVX_STUDIO_COMMAND_LINES_H_

#include <string>

#include "hosts/kvx/studio/clip.h"
#include "hosts/kvx/studio/preview.h"

namespace kvx {

// Either a line, or why there is none; `note` is what the user should know about it.
struct ProgramLine {
  std::string line;
  std::string note;
};

// `output` is the name of the file to write, in the clip's folder.
ProgramLine KvxLine(const Project& project, const Clip& clip, const std::string& output);
// These two play the clip.
ProgramLine GstLine(const Project& project, const Clip& clip);
ProgramLine MeltLine(const Project& project, const Clip& clip);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_COMMAND_LINES_H_
