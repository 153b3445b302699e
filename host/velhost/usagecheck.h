// What is wrong with a command line, in plain words.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace velhost {

/// One option, under each of its names.
struct TOptionUse {
  std::string name;        ///< "--output", also where "-o" is used
  std::string value;       ///< "FILE"; empty for one that takes none
  bool repeatable = true;  ///< options without a value are
  /// The commands that it belongs to; empty for one that stands anywhere.
  std::vector<std::string> verbs;
};

struct TUsage {
  std::vector<std::string> verbs;
  std::map<std::string, TOptionUse> options;  ///< by name, with the dashes
};

/// The command of a command line: its first argument that is neither option nor value. Empty without.
std::string VerbOf(const TUsage& usage, const std::vector<std::string>& arguments);

/// Whether an option of one of the names is given.
bool HasOption(const TUsage& usage, const std::vector<std::string>& arguments, const std::vector<std::string>& names);

/// Throws THostError (kUsage) for an unknown command or option, an option of another command or before
/// its own, one that is given twice, or without its value. What the values are is not looked at.
void CheckUsage(const TUsage& usage, const std::vector<std::string>& arguments);

/// "; did you mean NAME?", or nothing where none is near and none begins so.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);

/// A word of the command line as a message shows it: in quotes, safe for a terminal.
std::string QuotedWord(const std::string& word);

}  // namespace velhost
