// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shot/files/base64.h"
#include "shot/files/sha256.h"
#include "shot/report/gzip.h"
#include "shot/report/html_text.h"
#include "shot/report/page_data.h"
#include "shot/report/page_parts.h"
#include "shot/report/page_pictures.h"
#include "shot/report/view.h"

namespace cornerpin {

namespace {

std::string hashOf(std::string_view text) {
  Sha256 digest;
  digest.add(text.data(), text.size());
  return "'sha256-" + digest.base64() + "'";
}

// Nothing from anywhere but what is in the page, or pictures from where it is itself.
std::string policy(bool linked) {
  return fmt::format(
      "default-src 'none'; script-src {} {}; style-src {}; img-src data:{}; base-uri 'none'; "
      "form-action 'none'",
      hashOf(pageLibraries()), hashOf(pageScript()), hashOf(pageStyle()),
      linked ? " 'self' file:" : "");
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

struct Content {
  Shown shown;
  View view;
};

// As much as the page has room for.
Content contentOf(const PageSubject& subject, const PictureUse* use) {
  std::optional<PictureSize> size;
  if (use != nullptr) size = use->pictures.size();
  for (PageLimits limits;; limits = limits.halved()) {
    Content content;
    content.shown = shownOf(subject, limits);
    content.view = viewOf(subject, content.shown, size);
    const std::size_t bytes =
        base64(gzip(pageDataJson(subject, content.shown, content.view, std::nullopt))).size();
    if (bytes + sizeOfParts() <= kMostBytes || limits.frames <= 1) return content;
  }
}

PagePictures picturesOf(const PageSubject& subject, const Shown& shown, const PictureUse& use,
                        const Progress& progress) {
  std::vector<int> frames;
  frames.reserve(shown.frames.size());
  for (const std::size_t f : shown.frames) frames.push_back(subject.result.frames[f].frame);
  return use.linkedFrom.empty() ? embedded(use.pictures, frames, progress)
                                : linked(use.pictures, frames, use.linkedFrom);
}

// A URL, which needs no escapes, or null, for each frame.
std::string listOf(const std::vector<std::string>& urls) {
  std::string list;
  for (const std::string& url : urls) {
    list += list.empty() ? "[" : ",\n";
    list += url.empty() ? "null" : "\"" + url + "\"";
  }
  return list + "]";
}

}  // namespace

std::vector<std::string> writePage(const PageSubject& subject, const PictureUse* use,
                                   OutputFile& out, const Progress& progress) {
  const Content content = contentOf(subject, use);
  std::optional<PagePictures> pictures;
  if (use != nullptr) pictures = picturesOf(subject, content.shown, *use, progress);
  const std::string json =
      pageDataJson(subject, content.shown, content.view,
                   pictures ? std::optional<PictureNote>(pictures->note) : std::nullopt);
  const std::string rules = policy(pictures && pictures->note.linked);
  const std::string title = htmlText(subject.title);
  const std::string data = base64(gzip(json));
  const std::string urls = pictures ? listOf(pictures->urls) : "null";
  fill({{"policy", rules},
        {"title", title},
        {"style", pageStyle()},
        {"data", data},
        {"pictures", urls},
        {"libraries", pageLibraries()},
        {"script", pageScript()}},
       out);
  return pictures ? pictures->broken : std::vector<std::string>();
}

}  // namespace cornerpin
