// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page_pictures.h"

#include <fmt/format.h>

#include <filesystem>
#include <functional>
#include <string_view>

#include "shot/files/base64.h"
#include "shot/files/input_error.h"
#include "shot/report/small_picture.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostListed = 5;

using UrlOf = std::function<std::string(const std::string& path)>;

PagePictures picturesOf(const ShotPictures& pictures, const std::vector<int>& frames,
                        const UrlOf& urlOf, const Progress& progress) {
  PhaseCount count(progress, Phase::Writing, frames.size());
  PagePictures page;
  std::vector<int> missing;
  for (const int frame : frames) {
    count.add();
    const std::string path = pictures.of(frame);
    page.urls.emplace_back();
    if (path.empty()) {
      missing.push_back(frame);
      continue;
    }
    try {
      page.urls.back() = urlOf(path);
      ++page.note.frames;
    } catch (const InputError& error) {
      page.broken.emplace_back(error.what());
    }
  }
  if (!missing.empty()) {
    page.note.missing =
        fmt::format("there is no file for {} of {}: {}", missing.size(),
                    counted(frames.size(), "frame"), textOf(stretchesOf(missing), kMostListed));
  }
  for (const std::string& text : page.broken) {
    page.note.missing += (page.note.missing.empty() ? "" : "; ") + text;
  }
  return page;
}

}  // namespace

PagePictures embedded(const ShotPictures& pictures, const std::vector<int>& frames,
                      const Progress& progress) {
  const auto asJpeg = [](const std::string& path) {
    return "data:image/jpeg;base64," + base64(smallPicture(path, kWidestPicture));
  };
  return picturesOf(pictures, frames, asJpeg, progress);
}

PagePictures linked(const ShotPictures& pictures, const std::vector<int>& frames,
                    const std::string& page) {
  const auto fromPage = [&](const std::string& path) { return urlFrom(page, path); };
  PagePictures all = picturesOf(pictures, frames, fromPage, {});
  all.note.linked = true;
  return all;
}

std::string urlFrom(const std::string& page, const std::string& path) {
  const fs::path folder = fs::absolute(page).lexically_normal().parent_path();
  const std::string way = fs::absolute(path).lexically_normal().lexically_relative(folder).string();
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
  std::string url;
  for (const char c : way) {
    if (kPlain.find(c) != std::string_view::npos) {
      url += c;
    } else {
      url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return url;
}

}  // namespace cornerpin
