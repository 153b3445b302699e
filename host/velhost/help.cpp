#include "host/velhost/help.h"

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velhost {

namespace {

constexpr std::size_t kColumn = 28;
constexpr std::size_t kWidth = 80;

constexpr const char* kSummary =
    "Collects chipset error registers and capture files from a server's service processor.";
constexpr const char* kExamples =
    "\nExamples:\n"
    "  velhost collect                      collect everything from the demo server\n"
    "  velhost collect --sp inband          collect from this server's BMC\n"
    "  velhost COMMAND --help               show the options of a command\n";

// Wraps the text to the screen; every line but the first is indented.
std::string Wrapped(std::string text, std::size_t firstColumn, std::size_t indent) {
  std::string lines;
  for (std::size_t column = firstColumn; column + text.size() > kWidth; column = indent) {
    const std::size_t cut = text.rfind(' ', kWidth - column);
    lines += text.substr(0, cut) + "\n" + std::string(indent, ' ');
    text.erase(0, cut + 1);
  }
  return lines + text + "\n";
}

// "  --name VALUE   what it is"
std::string Entry(const std::string& name, const std::string& help) {
  std::string head = "  " + name;
  const bool fits = head.size() < kColumn;
  head += fits ? std::string(kColumn - head.size(), ' ') : "\n" + std::string(kColumn, ' ');
  return head + Wrapped(help, kColumn, kColumn);
}

// "--output", "-o"; "-v", "-vv", "-vvv"
std::vector<std::string> NamesOf(const TOption& option) {
  std::vector<std::string> names;
  if (option.letter != 0) names.push_back(std::string("-") + option.letter);
  names.push_back(option.name);
  for (int level = 1; level < option.levels; ++level) names.push_back(names.back() + option.name.back());
  return names;
}

std::string Entry(const TOption& option) {
  const std::string names = fmt::format("{}", fmt::join(NamesOf(option), ", "));
  return Entry(option.TakesValue() ? names + " " + option.value.name : names, option.help);
}

std::string CommandsOf(const TOption& option) {
  std::vector<std::string> names;
  for (const EVerb verb : option.verbs) names.push_back(EntryOf(verb).name);
  return names.empty() ? "*" : fmt::format("{}", fmt::join(names, ","));
}

std::string Described(bool takesWord, const std::string& completion) {
  if (!takesWord) return "none";
  return completion.empty() ? "any" : completion;
}

}  // namespace

std::string Help() {
  std::string text = Wrapped(kSummary, 0, 0) + "Usage: velhost [OPTIONS] COMMAND\n\nOptions common to all commands:\n";
  for (const TOption& option : Options()) {
    if (option.verbs.empty()) text += Entry(option);
  }
  text += "\nCommands:\n";
  for (const TVerb& verb : Verbs()) text += Entry(verb.name, verb.help);
  return text + kExamples;
}

std::string HelpOf(const TVerb& verb) {
  const bool takesOperands = !verb.operands.usage.empty();
  const std::string command = "velhost " + verb.name;
  std::string text = Wrapped(command + ": " + verb.help, 0, 0) + "Usage: " + command + " [OPTIONS]";
  text += takesOperands ? " " + verb.operands.usage + "\n\n" + Entry(verb.operands.usage, verb.operands.help) : "\n";
  std::string options;
  for (const TOption& option : Options()) {
    if (!option.verbs.empty() && option.BelongsTo(verb.verb)) options += Entry(option);
  }
  if (!options.empty()) text += "\nOptions:\n" + options;
  return text + "\nSee \"velhost --help\" for the options common to all commands.\n\nExample:\n  " + verb.example +
         "\n";
}

std::string OptionList() {
  std::string text;
  for (const TVerb& verb : Verbs()) {
    text += "command " + verb.name + " " + Described(verb.operands.most > 0, verb.operands.completion) + "\n";
  }
  for (const TOption& option : Options()) {
    for (const std::string& name : NamesOf(option)) {
      text += "option " + name + " " + CommandsOf(option) + " " +
              Described(option.TakesValue(), option.value.completion) + "\n";
    }
  }
  return text;
}

}  // namespace velhost
