// The command line of velhost, as plain data.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/secret.h"
#include "host/meaning/classmeaning.h"

namespace velhost {

enum class EVerb { kCollect, kClasses, kDescribe, kPlugin, kCheck, kSimulate, kShow, kDiff };
enum class ELogFormat { kText, kJsonLines };
/// When to use a terminal feature: if there is a terminal, always, or never.
enum class EWhen { kAuto, kAlways, kNever };

struct TCommonOptions {
  std::string plugin;                          ///< empty: the one next to velhost
  std::vector<std::string> schema;             ///< empty: the one installed or built with velhost
  std::vector<std::string> serviceProcessors;  ///< empty: the shipped demo server
  std::optional<std::string> machineType;
  std::string log;
  std::optional<ELogFormat> logFormat;  ///< empty: text
  int verbosity = 0;                    ///< the number of -v
  EWhen color = EWhen::kAuto;
  bool noPager = false;
  std::string passwordFile;
  std::optional<TSecret> passwordVariable;  ///< from VELHOST_IPMI_PASSWORD; never from the arguments
  std::optional<int> cipherSuite;
  std::string privilege;  ///< empty: admin
  bool replayTiming = false;
};

struct TCollectOptions {
  std::vector<std::string> classes;
  std::string format;  ///< empty: table on a terminal, else json
  std::string output;  ///< empty: standard output
  bool onlyFindings = false;
  std::optional<ESeverity> failOn;
  std::string baseline;  ///< empty: none
  std::map<std::string, std::string> labels;
  bool dryRun = false;
  std::string record;
  std::optional<double> timeoutSeconds;
  bool singleRequest = false;
  std::string captureDir;
  EWhen progress = EWhen::kAuto;
};

struct TClassesOptions {
  std::vector<std::string> classes;
  bool json = false;
};

struct TDescribeOptions {
  std::string name;  ///< "CLASS" or "CLASS.REGISTER"
  bool json = false;
};

struct TPluginOptions {
  bool json = false;
};

struct TCheckOptions {
  std::vector<std::string> files;  ///< empty: the schema
  bool json = false;
};

struct TSimulateArguments {
  std::string file;
  int node = 0;
  int port = 9623;
  std::optional<int> serialPort;
};

struct TShowOptions {
  std::vector<std::string> files;
  std::string format;  ///< empty: table on a terminal, else json
  std::string output;  ///< empty: standard output
};

struct TDiffArguments {
  std::string before;
  std::string after;
  bool json = false;
};

struct TCommandLine {
  EVerb verb = EVerb::kCollect;
  TCommonOptions common;
  TCollectOptions collect;
  TClassesOptions classes;
  TDescribeOptions describe;
  TPluginOptions plugin;
  TCheckOptions check;
  TSimulateArguments simulate;
  TShowOptions show;
  TDiffArguments diff;
  /// To be printed before the command runs: "--log has no effect with check", one for each option without effect.
  std::vector<std::string> warnings;
};

/// Parses the arguments (without the program's name). A request for help or the version sets `text` and returns an
/// empty result; there is nothing more to do. For wrong usage throws THostError (kInvalidArgument) that names the
/// argument and, if there is a near match, suggests it.
std::optional<TCommandLine> ParseCommandLine(const std::vector<std::string>& arguments, std::string& text);

/// "sim" of "sim:FILE".
std::string SchemeOf(const std::string& spec);
/// "FILE" of "sim:FILE"; empty if there is no colon.
std::string RestOf(const std::string& spec);

/// What --schema takes for the schema installed or built with velhost.
inline constexpr std::string_view kExampleSchema = "example";
/// Whether a value of --schema has the form "+PATH".
inline bool AddsToDefaultSchema(const std::string& given) { return given.starts_with('+'); }

/// "; did you mean NAME?", or empty if no candidate is near and none begins with the word.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);

/// A word of the command line as messages show it: in quotes, safe for a terminal.
std::string QuotedWord(const std::string& word);

}  // namespace velhost
