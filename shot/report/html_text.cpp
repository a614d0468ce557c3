// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/html_text.h"

#include <nlohmann/json.hpp>

namespace cornerpin {

namespace {

using Json = nlohmann::json;

constexpr const char* kReplacement = "\xef\xbf\xbd";

std::string inUtf8(std::string_view text) {
  return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace));
}

void append(std::string& html, char c) {
  constexpr unsigned char kFirstPrinted = 0x20;
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
    case '\t':
    case '\n':
      html += c;
      break;
    default:
      if (static_cast<unsigned char>(c) < kFirstPrinted) {
        html += kReplacement;
      } else {
        html += c;
      }
  }
}

}  // namespace

std::string htmlText(std::string_view text) {
  std::string html;
  for (const char c : inUtf8(text)) append(html, c);
  // Two code points that are no characters, and that XML refuses.
  for (const char* none : {"\xef\xbf\xbe", "\xef\xbf\xbf"}) {
    for (std::size_t at = 0; (at = html.find(none, at)) != std::string::npos;)
      html.replace(at, 3, kReplacement);
  }
  return html;
}

}  // namespace cornerpin
