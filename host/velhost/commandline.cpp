#include "host/velhost/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "host/core/hosterror.h"
#include "host/core/nearestname.h"

namespace NKROVEL20 {

namespace {

constexpr int kHelpColumn = 28;
const std::map<std::string, EWhen> kWhen = {
    {"auto", EWhen::kAuto}, {"always", EWhen::kAlways}, {"never", EWhen::kNever}};
const std::map<std::string, ELogFormat> kLogFormats = {{"text", ELogFormat::kText}, {"jsonl", ELogFormat::kJsonLines}};

// One of a few words; the message lists them.
template <typename T>
void AddChoice(CLI::App& app, const std::string& name, T& target, const std::map<std::string, T>& choices,
               const std::string& words, const std::string& description) {
  app.add_option_function<std::string>(
         name,
         [&target, &choices, name, words](const std::string& word) {
           const auto found = choices.find(word);
           if (found == choices.end()) throw CLI::ValidationError(name, "\"" + word + "\" is none of " + words);
           target = found->second;
         },
         description)
      ->type_name(words);
}

void AddCommonOptions(CLI::App& app, TCommonOptions& options) {
  app.add_option("--plugin", options.plugin, "the collector's library")->type_name("FILE");
  app.add_option("--schema", options.schema, "a MOF file or a folder of them; may be repeated")
      ->type_name("PATH")
      ->take_all()
      ->allow_extra_args(false);  // what follows the value is a class or file of its own
  app.add_option("--sp", options.serviceProcessors,
                 "the service processor: sim[:FILE], replay:FILE, inband[:DEVICE], lan:[USER@]HOST[:PORT]")
      ->type_name("SPEC")
      ->take_all()
      ->allow_extra_args(false);  // what follows the value is a class or file of its own
  app.add_option("--machine-type", options.machineType, "overrides the machine type")->type_name("NNNN");
  app.add_option("--log", options.log, "also write the collector's trace there")->type_name("FILE");
  AddChoice(app, "--log-format", options.logFormat, kLogFormats, "text|jsonl", "form of that file");
  app.add_flag("-v", options.verbosity, "trace on standard error: -v status, -vv debug, -vvv verbose");
  AddChoice(app, "--color", options.color, kWhen, "auto|always|never", "colour in the table");
  app.add_option("--password-file", options.passwordFile, "lan: password file; or VELHOST_IPMI_PASSWORD")
      ->type_name("FILE");
  app.add_option("--cipher-suite", options.cipherSuite, "lan: cipher suite; default 17, then 3")
      ->type_name("N")
      ->check(CLI::Range(0, 17).description(""));
  app.add_option("--privilege", options.privilege, "lan: privilege level; default admin")
      ->type_name("user|operator|admin")
      ->check(CLI::IsMember({"user", "operator", "admin"}).description(""));
  app.add_flag("--replay-timing", options.replayTiming, "replay: wait as long as the recording did");
}

void AddCollect(CLI::App& app, TCollectOptions& options) {
  app.add_option("CLASS", options.classes, "classes to collect; default: all that this machine serves")->type_name("");
  app.add_option("--format", options.format, "output form; default: table on a terminal, else json")
      ->type_name("table|json|jsonl|mof|cimxml")
      ->check(CLI::IsMember({"table", "json", "jsonl", "mof", "cimxml"}).description(""));
  app.add_option("-o,--output", options.output, "write there instead of standard output")->type_name("FILE");
  app.add_option("--record", options.record, "record every exchange with the service processor")->type_name("FILE");
  app.add_option("--timeout", options.timeoutSeconds, "deadline for the whole collection")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.001, 1e9).description(""));
  app.add_flag("--single-request", options.singleRequest, "ask for all classes in one request, in this order");
  app.add_option("--capture-dir", options.captureDir, "also write each capture file there")->type_name("DIR");
  AddChoice(app, "--progress", options.progress, kWhen, "auto|always|never", "progress on standard error");
  app.footer("Example:\n  velhost collect --sp sim:failing.toml --format json -o errors.json");
}

void AddCheck(CLI::App& app, TCheckOptions& options) {
  app.add_option("MOF", options.mofs, "MOF files or folders; default: those of --schema")->type_name("");
  app.add_option_function<std::string>(
         "--format",
         [&options](const std::string& word) {
           if (word != "text" && word != "json") {
             throw CLI::ValidationError("--format", "\"" + word + "\" is none of text|json");
           }
           options.json = word == "json";
         },
         "form of the findings; default text")
      ->type_name("text|json");
  app.footer("Example:\n  velhost check my-schema/ --format json");
}

void AddSimulate(CLI::App& app, TSimulateArguments& options) {
  app.add_option("FILE", options.file, "the server file")->required()->type_name("");
  app.add_option("--node", options.node, "which BMC node answers; default 0")
      ->type_name("N")
      ->check(CLI::Range(0, 255).description(""));
  app.add_option("--port", options.port, "UDP port on 127.0.0.1; default 9623")
      ->type_name("PORT")
      ->check(CLI::Range(1, 65535).description(""));
  app.add_option("--serial-port", options.serialPort, "also serve as a virtual machine's BMC on this TCP port")
      ->type_name("PORT")
      ->check(CLI::Range(1, 65535).description(""));
  app.footer("Example:\n  velhost simulate demo.toml --port 9623");
}

struct TParser {
  TCommandLine result;
  CLI::App app{"Collects chipset error registers and capture files from a server's service processor.", "velhost"};
  CLI::App* collect = nullptr;
  CLI::App* check = nullptr;
  std::map<CLI::App*, EVerb> verbs;

  CLI::App* AddVerb(EVerb verb, const std::string& name, const std::string& description) {
    CLI::App* const added = app.add_subcommand(name, description);
    added->fallthrough();
    verbs[added] = verb;
    return added;
  }

  TParser() {
    app.get_formatter()->column_width(kHelpColumn);
    app.set_version_flag("--version", std::string("velhost ") + VELHOST_VERSION);
    app.require_subcommand(1);
    AddCommonOptions(app, result.common);
    collect = AddVerb(EVerb::kCollect, "collect", "run one collection and print the instances");
    AddCollect(*collect, result.collect);
    CLI::App* const classes =
        AddVerb(EVerb::kClasses, "classes", "list the collectable classes and whether this machine serves them");
    classes->footer("Example:\n  velhost classes --machine-type 4411");
    CLI::App* const plugin = AddVerb(EVerb::kPlugin, "plugin", "load the collector and print its identity");
    plugin->footer("Example:\n  velhost plugin --plugin ./libtorgareg.pi.so");
    check = AddVerb(EVerb::kCheck, "check", "check a schema: syntax, semantics, and what the collector needs of it");
    AddCheck(*check, result.check);
    AddSimulate(*AddVerb(EVerb::kSimulate, "simulate", "serve a simulated server over IPMI on the network"),
                result.simulate);
    app.footer(
        "Examples:\n  velhost collect                      everything the demo server has\n"
        "  velhost collect --sp inband          from this server's BMC\n"
        "  velhost COMMAND --help               what a command takes");
  }
};

// Every long and short option name of an app, with its dashes, and whether it takes a value.
void CollectOptionNames(const CLI::App& app, std::map<std::string, bool>& names) {
  for (const CLI::Option* option : app.get_options()) {
    const bool takesValue = option->get_items_expected_max() > 0;
    for (const std::string& name : option->get_lnames()) names["--" + name] = takesValue;
    for (const std::string& name : option->get_snames()) names["-" + name] = takesValue;
  }
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  const std::vector<std::string_view> views(candidates.begin(), candidates.end());
  const std::string_view nearest = NearestName(word, views);
  return nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
}

// CLI11 says that an argument was not expected; people also want to know what was probably meant.
std::string ExplainUnknown(const TParser& parser, const std::vector<std::string>& arguments) {
  std::map<std::string, bool> options;
  std::vector<std::string> verbs;
  CollectOptionNames(parser.app, options);
  for (const auto& [app, verb] : parser.verbs) {
    verbs.push_back(app->get_name());
    CollectOptionNames(*app, options);
  }
  std::vector<std::string> names;
  for (const auto& [name, takesValue] : options) names.push_back(name);
  bool haveVerb = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument.rfind("--", 0) == 0 && argument.size() > 2) {
      const std::string name = argument.substr(0, argument.find('='));
      const auto found = options.find(name);
      if (found == options.end()) return "unknown option " + name + Suggestion(name, names);
      if (found->second && name == argument) ++i;
    } else if (argument == "-o") {
      ++i;
    } else if (argument.rfind('-', 0) != 0 && !std::exchange(haveVerb, true)) {
      if (std::find(verbs.begin(), verbs.end(), argument) == verbs.end()) {
        return "unknown command \"" + argument + "\"" + Suggestion(argument, verbs);
      }
    }
  }
  return {};
}

std::string ExplainError(const TParser& parser, const std::vector<std::string>& arguments,
                         const CLI::ParseError& error) {
  std::string message = ExplainUnknown(parser, arguments);
  if (message.empty() && arguments.empty()) message = "no command is given";
  if (message.empty()) message = error.what();
  return message + "\nSee \"velhost --help\".";
}

}  // namespace

std::optional<TCommandLine> ParseCommandLine(const std::vector<std::string>& arguments, std::string& text) {
  TParser parser;
  // CLI11 takes the arguments last first.
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
  try {
    parser.app.parse(std::move(reversed));
  } catch (const CLI::CallForHelp&) {
    const auto used = parser.app.get_subcommands();
    text = used.empty() ? parser.app.help()
                        : used.front()->help(parser.app.get_name()) +
                              "\nThe options of \"velhost --help\" stand for every command.\n";
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    text = std::string(version.what()) + "\n";
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw THostError(EExitStatus::kUsage, ExplainError(parser, arguments, error));
  }
  parser.result.verb = parser.verbs.at(parser.app.get_subcommands().front());
  return parser.result;
}

}  // namespace NKROVEL20
