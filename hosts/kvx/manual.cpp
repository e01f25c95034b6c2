// Usage: kvx_manual. Prints the manual page, made from what the parser knows, so that it tells every option.
#include <cstdio>
#include <string>

#include "hosts/kvx/command_line.h"

namespace {

// Dashes are to be found and copied as they are typed.
std::string Escape(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\' || c == '-') out += '\\';
    if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) out += "\\&";
    out += c;
  }
  return out;
}

std::string NameOf(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.get_lnames()) names += (names.empty() ? "--" : ", --") + name;
  return names;
}

// What stands behind an option: VALUE, in words where that helps.
std::string ValueOf(const CLI::Option& option) {
  return option.get_type_size() == 0 ? "" : " " + option.get_type_name();
}

void PrintOption(const CLI::Option& option) {
  const std::string name = NameOf(option);
  if (name.empty()) {
    std::printf(".TP\n.I %s\n%s\n", Escape(option.get_name()).c_str(), Escape(option.get_description()).c_str());
    return;
  }
  std::printf(".TP\n.BR \"%s\" \"%s\"\n%s\n", Escape(name).c_str(), Escape(ValueOf(option)).c_str(),
              Escape(option.get_description()).c_str());
}

void PrintCommand(const CLI::App& app, const std::string& path) {
  const auto subs = app.get_subcommands([](const CLI::App*) { return true; });
  if (subs.empty()) {
    std::string words;
    for (const CLI::Option* option : app.get_options()) {
      const bool positional = option->get_positional();
      if (positional) words += " " + option->get_name(true);
    }
    std::printf(".SS \"%s%s\"\n%s.\n", Escape(path).c_str(), Escape(words).c_str(),
                Escape(app.get_description()).c_str());
    for (const CLI::Option* option : app.get_options()) {
      if (option->get_name() != "--help" && NameOf(*option) != "-h, --help") PrintOption(*option);
    }
  }
  for (const CLI::App* sub : subs) PrintCommand(*sub, path + " " + sub->get_name());
}

constexpr char kHead[] = R"(.TH KVX 1 "" "kvx" "User commands"
.SH NAME
kvx \- video effects on pictures, sequences and videos
.SH SYNOPSIS
.B kvx
.I COMMAND
.RI [ WORDS ]...
.SH DESCRIPTION
.B kvx
runs the effects of the kvx plug\-in, all on the CPU. An effect goes by its name, id or GUID; case does not matter.
INPUT is a PNG or JPEG file, a numbered sequence such as
.IR in_%04d.png ,
a video, the word
.B demo
for the built\-in picture, or
.B \-
for standard input. OUTPUT likewise: a picture gets the last frame, a sequence or video gets every frame. Behind
.B \-\-
a word with a dash in front is a file's name.
.SH COMMANDS
)";

constexpr char kTail[] = R"(.SH ENVIRONMENT
.TP
.BR KVX_PLUGIN ", " KVX_RESOURCES
Where plug\-in and resources lie, instead of where the command finds them.
.SH EXIT STATUS
0 done; 1 failed, or the input was damaged; 2 wrong command line or recipe; 130 or 143 ended by Ctrl\-C or another signal.
.SH EXAMPLES
.nf
kvx render Brightness \-p Bringhtness=80 photo.jpg out.png
kvx render clip.mp4 out.mp4 \-e Warm \-e "Vignette1:opacity=60"
ffmpeg \-i clip.mov \-f yuv4mpegpipe \- | kvx render Snow \- \- | ffmpeg \-i \- out.mkv
.fi
)";

}  // namespace

int main() {
  kvx::CommandLine line;
  std::fputs(kHead, stdout);
  for (const CLI::App* sub : line.App().get_subcommands([](CLI::App*) { return true; })) {
    PrintCommand(*sub, "kvx " + sub->get_name());
  }
  std::fputs(".SH COMMON OPTIONS\n", stdout);
  for (const CLI::Option* option : line.App().get_options()) PrintOption(*option);
  std::fputs(kTail, stdout);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
