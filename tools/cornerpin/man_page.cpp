// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/man_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include "tools/cornerpin/help_text.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/program.h"

namespace cornerpin {

namespace {

// A page names a day. This one goes with the version, so that every build makes the same page.
constexpr const char* kHeading =
    ".TH CORNERPIN 1 2026-11-23 \"cornerpin " CORNERPIN_VERSION "\" \"User Commands\"\n";

// Text whose characters stand for themselves: a dash can be copied.
std::string escaped(std::string_view text) {
  std::string roff;
  for (char c : text) {
    if (c == '\\') {
      roff += "\\e";
    } else if (c == '-') {
      roff += "\\-";
    } else if (c == '^') {
      roff += "\\(ha";
    } else {
      roff += c;
    }
  }
  return roff;
}

// The same in lines of moderate length, of which none starts a request.
std::string filled(const std::string& text) {
  constexpr std::size_t kLongest = 78;
  std::istringstream words(text);
  std::string roff;
  std::size_t length = 0;
  for (std::string word; words >> word;) {
    const bool looksLikeRequest = word.front() == '.' || word.front() == '\'';
    word = (looksLikeRequest ? "\\&" : "") + escaped(word);
    const bool fits = length + 1 + word.size() <= kLongest;
    if (length > 0) roff += fits ? ' ' : '\n';
    length = (length > 0 && fits ? length + 1 : 0) + word.size();
    roff += word;
  }
  return roff;
}

// Paragraphs; one that is indented keeps its lines.
std::string paragraphs(const std::string& text) {
  std::string roff;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", start), text.size());
    std::string part = text.substr(start, end - start);
    if (!part.empty() && part.back() == '\n') part.pop_back();
    const bool kept = part.rfind("  ", 0) == 0;
    roff += ".PP\n" + (kept ? ".nf\n" + escaped(part) + "\n.fi\n" : filled(part) + "\n");
    start = end + 2;
  }
  return roff;
}

// "\fB\-o\fR, \fB\-\-output\fR \fIFILE\fR" and the text below it.
std::string item(const ListedOption& option, bool isOption) {
  std::string names;
  for (const std::string& name : option.names) {
    names += (names.empty() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
  }
  if (isOption && option.takesValue()) names += " \\fI" + escaped(option.value) + "\\fR";
  return ".TP\n" + names + "\n" + filled(option.text) + "\n";
}

std::string options(const Command& command) {
  std::string common;
  std::string more;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    (option.common ? common : more) += item(option, true);
  }
  return ".SS Options\n" + common + (more.empty() ? "" : ".SS More options\n" + more);
}

std::string section(const Command& command) {
  const std::string name = command.text->name;
  std::string roff = ".SH cornerpin " + name + "\n.B " + escaped(usageOf(command)) + "\n";
  roff += paragraphs(command.text->help) + paragraphs(command.text->details);
  std::string arguments;
  for (const ListedOption& argument : argumentsOf(*command.parser)) {
    arguments += item(argument, false);
  }
  if (!arguments.empty()) roff += ".SS Arguments\n" + arguments;
  return roff + options(command);
}

std::string exitCodes() {
  std::string roff = ".SH EXIT STATUS\n";
  for (const ExitCodeText& code : exitCodeTexts()) {
    roff += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(code.code), filled(code.text));
  }
  return roff;
}

}  // namespace

std::string manPageOf(const Program& program) {
  std::string synopsis;
  std::string commands;
  std::string sections;
  std::string examples;
  for (const Command& command : program.commands()) {
    synopsis += (synopsis.empty() ? ".B " : ".br\n.B ") + escaped(usageOf(command)) + "\n";
    commands += fmt::format(".TP\n.B {}\n{}\n", command.text->name, escaped(command.text->summary));
    sections += section(command);
    examples += ".PP\n.B " + escaped(command.text->example) + "\n";
  }
  return ".\\\" SPDX-License-Identifier: BSD-3-Clause\n" + std::string(kHeading) +
         ".SH NAME\ncornerpin \\- " + escaped(program.itself().text->summary) + "\n.SH SYNOPSIS\n" +
         synopsis + ".SH DESCRIPTION\n" + paragraphs(program.itself().text->help).substr(4) +
         ".SH COMMANDS\n" + commands + options(program.itself()) + sections + exitCodes() +
         ".SH EXAMPLES\n" + examples.substr(4);
}

}  // namespace cornerpin
