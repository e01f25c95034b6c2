#include <fmt/format.h>

#include <memory>

#include "hosts/kvx/command_line.h"
#include "hosts/kvx/farm/join.h"
#include "hosts/kvx/farm/plan.h"
#include "hosts/kvx/farm/run.h"
#include "hosts/kvx/farm/status.h"
#include "hosts/kvx/farm/submit.h"
#include "hosts/kvx/render_words.h"

namespace kvx {

namespace {

struct PlanWords {
  RenderWords render;
  PlanOptions options;

  // Takes the words apart: JOB EFFECT INPUT... OUTPUT. Throws Error.
  Chain Build(const EffectList& list, const CLI::App& sub) {
    std::vector<std::string>& words = render.chain.words;
    const bool named = render.chain.effects.empty() && render.chain.recipe.empty();
    const size_t least = 2 + (named ? 1 : 0) + (options.inputs.filesFrom.empty() ? 1 : 0);
    if (words.size() < least) {
      throw UsageError(fmt::format("wanted are the folder of the job, {}{}the output", named ? "an effect, " : "",
                                   options.inputs.filesFrom.empty() ? "the inputs, " : ""));
    }
    options.folder = words.front();
    words.erase(words.begin());
    Chain chain = render.chain.Build(list, words.size() - (named ? 1 : 0));
    const std::string output = words.back();
    words.pop_back();
    options.inputs.paths = words;
    words = {options.inputs.paths.empty() ? "" : options.inputs.paths.front(), output};
    for (const std::string& word : options.inputs.paths) {
      if (word == "-") throw UsageError("a pipe can be read once and by one: a job needs files");
    }
    if (output == "-") throw UsageError("the output of a job is a file or a folder, not a pipe");
    TakeOptions(sub);
    return chain;
  }

 private:
  void TakeOptions(const CLI::App& sub) {
    const auto refuse = [&](std::initializer_list<const char*> names, const char* wants) {
      for (const char* name : names) {
        if (sub.get_option(name)->count() > 0) throw UsageError(fmt::format("{} {}", name, wants));
      }
    };
    refuse({"--jobs", "--quiet"}, "is for kvx farm run");
    refuse({"--progress"}, "is for kvx render; kvx farm status tells how far a job is");
    refuse({"--raw"}, "is for pipes");
    render.TakeOptions(sub);
    options.render = render.options;
    const std::string& output = options.render.output.path;
    if (IsForFiles(options.inputs, output)) {
      refuse({"--size", "--start-number", "--gaps", "--literal"}, "is for one input");
    } else {
      render.RefuseIdleOptions(sub);
      if (IsPictureName(output) && !IsSequenceName(options.render.output)) {
        throw UsageError(fmt::format("{}: a single picture is the work of kvx render", output));
      }
    }
  }
};

void AddPlan(CommandLine& line, CLI::App& farm) {
  auto words = std::make_shared<PlanWords>();
  CLI::App* sub = farm.add_subcommand("plan", "Cut a clip, a sequence or a list of files into pieces");
  words->render.AddTo(
      *sub, "JOB EFFECT INPUT... OUTPUT",
      "JOB is a folder to make, where all machines see it; EFFECT is a name, id or GUID (not given with "
      "-e or --recipe); one INPUT (video, sequence, demo) becomes one OUTPUT (video, sequence); several, "
      "a folder or a pattern in quotes become files in the folder OUTPUT");
  sub->add_option("--files-from", words->options.inputs.filesFrom,
                  "File with the names of inputs, a line each, or with a zero byte behind each; - for standard input");
  CLI::Option* pieces = sub->add_option("--pieces", words->options.cut.pieces, "Number of pieces")
                            ->check(CLI::Range(int64_t{1}, int64_t{1000000}));
  sub->add_option("--frames-per-piece", words->options.cut.framesPerPiece,
                  "Frames in a piece; 1000 unless either is given. A picture is a frame")
      ->check(CLI::Range(int64_t{1}, int64_t{1000000000}))
      ->excludes(pieces);
  sub->callback([&line, words, sub] {
    words->render.chain.ReadRecipeText();
    line.OfferSeed(words->render.chain.RecipeSeed());
    line.Choose([&line, words, sub](Plugin& plugin) {
      const Chain chain = words->Build(plugin.Effects(), *sub);
      words->options.seed = line.Shared().seed;
      words->options.version = KVX_VERSION;
      PlanJob(plugin, chain, words->options);
      return true;
    });
  });
}

void AddRun(CommandLine& line, CLI::App& farm) {
  auto options = std::make_shared<RunOptions>();
  auto piece = std::make_shared<int64_t>(0);
  CLI::App* sub = farm.add_subcommand("run", "Render one piece of a job");
  sub->add_option("JOB", options->job, "The job's folder")->required();
  const CLI::Option* given =
      sub->add_option("PIECE", *piece, "Its number, from 0; left out where the batch system names it")
          ->check(CLI::NonNegativeNumber);
  sub->add_option("--offset", options->offset, "The piece that the batch system's first index stands for")
      ->check(CLI::NonNegativeNumber);
  sub->add_option("-j,--jobs", options->jobs, "Threads that render; what Slurm gave unless given, or all cores")
      ->check(CLI::Range(1, 256));
  sub->add_flag("-q,--quiet", options->quiet, "No progress line");
  sub->callback([&line, options, piece, given] {
    line.Choose([options, piece, given](const Common& common) {
      if (given->count() > 0) options->piece = *piece;
      RunPiece(OptionsOf(common), KVX_VERSION, *options);
      return true;
    });
  });
}

void AddSubmit(CommandLine& line, CLI::App& farm) {
  struct Words {
    std::string job;
    bool slurm = false, kubernetes = false, print = false;
    SlurmOptions toSlurm;
    KubernetesOptions toKubernetes;
  };
  auto words = std::make_shared<Words>();
  CLI::App* sub = farm.add_subcommand("submit", "Hand the pieces that are missing to a batch system");
  sub->add_option("JOB", words->job, "The job's folder")->required();
  CLI::Option* slurm = sub->add_flag("--slurm", words->slurm, "To Slurm: an array job, and one behind it that joins");
  CLI::Option* kubernetes =
      sub->add_flag("--kubernetes", words->kubernetes, "Print a manifest with an Indexed Job and one that joins");
  CLI::Option* print =
      sub->add_flag("--print", words->print, "Print a command for each piece: for GNU parallel, make or ssh");
  slurm->excludes(kubernetes)->excludes(print);
  kubernetes->excludes(print);
  sub->add_option("SBATCH", words->toSlurm.words, "Behind --: options for sbatch, such as --partition=long")
      ->needs(slurm);
  sub->add_flag("--wait", words->toSlurm.wait, "Follow the job to its end and end as it does")->needs(slurm);
  KubernetesOptions& to = words->toKubernetes;
  sub->add_option("--image", to.image, "Container image with kvx in it")->needs(kubernetes);
  sub->add_option("--claim", to.claim, "Persistent volume claim of the volume that holds job, inputs and output")
      ->needs(kubernetes);
  sub->add_option("--mount", to.mount, "Where it is mounted; the first folder of the job's path unless given")
      ->needs(kubernetes);
  sub->add_option("--cpu", to.cpu, "Cores for a piece")->needs(kubernetes);
  sub->add_option("--memory", to.memory, "Memory for a piece")->needs(kubernetes);
  sub->add_option("--parallelism", to.parallelism, "Pieces at once")->check(CLI::PositiveNumber)->needs(kubernetes);
  sub->callback([&line, words] {
    line.Choose([words](const Common& common) {
      const CommandWords command = OwnCommand(common.pluginPath, common.resourceRoot);
      if (words->print) {
        PrintCommands(words->job, command);
      } else if (words->kubernetes) {
        if (words->toKubernetes.image.empty() || words->toKubernetes.claim.empty()) {
          throw UsageError("--kubernetes wants --image and --claim");
        }
        PrintManifest(words->job, words->toKubernetes);
      } else if (words->slurm) {
        // Behind -- they were made to look like names of files.
        for (std::string& word : words->toSlurm.words) {
          if (word.starts_with("./-")) word.erase(0, 2);
        }
        return SubmitToSlurm(words->job, command, words->toSlurm);
      } else {
        throw UsageError("to what? --slurm, --kubernetes or --print");
      }
      return true;
    });
  });
}

}  // namespace

void AddFarm(CommandLine& line) {
  CLI::App* farm = line.App().add_subcommand("farm", "Render on many machines: cut, run and join a job");
  farm->require_subcommand(1);
  AddPlan(line, *farm);
  AddRun(line, *farm);

  auto job = std::make_shared<std::string>();
  auto flag = std::make_shared<bool>(false);
  const auto add = [&](const char* name, const char* help, auto act) {
    CLI::App* sub = farm->add_subcommand(name, help);
    sub->add_option("JOB", *job, "The job's folder")->required();
    sub->callback([&line, act] { line.Choose([act](const Common&) { return act(); }); });
    return sub;
  };
  add("join", "Put the pieces of a job together", [=] {
    return JoinJob(*job, *flag);
  })->add_flag("--wait", *flag, "Wait until all pieces are there");
  add("status", "How far a job is", [=] {
    ShowStatus(*job, *flag);
    return true;
  })->add_flag("--json", *flag, "As JSON");
  AddSubmit(line, *farm);
  add("clean", "Remove the folder of a job; what was joined stays", [=] {
    CleanJob(*job);
    return true;
  });
}

}  // namespace kvx
