#include "ManPage.h"

#include <sstream>

#include "CommandLine.h"

const char DOCS_kOptionsPlaceholder[] = ".\\\" OPTIONS-TABLE";

std::string DOCS_RoffText(const std::string& text) {
  std::string out;
  bool lineStart = true;
  for (const char c : text) {
    if (lineStart && (c == '.' || c == '\'')) out += "\\&";
    lineStart = c == '\n';
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else {
      out += c;
    }
  }
  return out;
}

std::string DOCS_OptionEntries() {
  std::string out;
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    const HOST_Option& option = HOST_kOptions[i];
    out += ".TP\n";
    std::string forms;
    if (option.shortName != 0) forms += "\\fB\\-" + std::string(1, option.shortName) + "\\fR, ";
    forms += "\\fB\\-\\-" + DOCS_RoffText(option.longName) + "\\fR";
    if (option.valueName != nullptr) forms += " \\fI" + DOCS_RoffText(option.valueName) + "\\fR";
    if (option.key != nullptr) forms += "  [\\fB" + DOCS_RoffText(option.key) + "\\fR]";
    out += forms + "\n";
    // The description's lines are filled as one paragraph, except that its default starts a line of its
    // own, as in --help.
    std::istringstream lines(option.description);
    std::string line;
    while (std::getline(lines, line)) {
      if (line.rfind("default:", 0) == 0) out += ".br\n";
      out += DOCS_RoffText(line) + "\n";
    }
  }
  return out;
}

std::string DOCS_FillManPage(const std::string& page) {
  std::istringstream lines(page);
  std::string out;
  std::string line;
  while (std::getline(lines, line)) {
    out += line == DOCS_kOptionsPlaceholder ? DOCS_OptionEntries() : line + "\n";
  }
  return out;
}
