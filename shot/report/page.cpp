// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "shot/files/base64.h"
#include "shot/files/sha256.h"
#include "shot/report/gzip.h"
#include "shot/report/page_data.h"
#include "shot/report/page_parts.h"
#include "shot/report/view.h"

namespace cornerpin {

namespace {

// What a page's text or attribute shows as this text.
std::string htmlText(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

std::string hashOf(std::string_view text) {
  Sha256 digest;
  digest.add(text.data(), text.size());
  return "'sha256-" + digest.base64() + "'";
}

// Nothing from anywhere but what is in the page.
std::string policy() {
  return fmt::format(
      "default-src 'none'; script-src {} {}; style-src {}; img-src data:; base-uri 'none'; "
      "form-action 'none'",
      hashOf(pageLibraries()), hashOf(pageScript()), hashOf(pageStyle()));
}

using Places = std::map<std::string_view, std::string_view>;

// Writes the template with its places filled; what fills one is not looked into.
void fill(const Places& places, OutputFile& out) {
  std::string_view rest = pageTemplate();
  for (std::size_t open = 0; (open = rest.find("{{")) != std::string_view::npos;) {
    const std::size_t close = rest.find("}}", open);
    out.write(rest.substr(0, open));
    out.write(places.at(rest.substr(open + 2, close - open - 2)));
    rest.remove_prefix(close + 2);
  }
  out.write(rest);
}

std::size_t sizeOfParts() {
  return pageTemplate().size() + pageStyle().size() + pageLibraries().size() + pageScript().size();
}

}  // namespace

void writePage(const PageSubject& subject, OutputFile& out) {
  std::string data;
  PageLimits limits;
  do {
    const Shown shown = shownOf(subject, limits);
    const View view = viewOf(subject, shown);
    data = base64(gzip(pageDataJson(subject, shown, view, std::nullopt)));
    limits = limits.halved();
  } while (data.size() + sizeOfParts() > kMostBytes && limits.frames > 0);
  const std::string title = htmlText(subject.title);
  const std::string rules = policy();
  fill({{"policy", rules},
        {"title", title},
        {"style", pageStyle()},
        {"data", data},
        {"pictures", "null"},
        {"libraries", pageLibraries()},
        {"script", pageScript()}},
       out);
}

}  // namespace cornerpin
