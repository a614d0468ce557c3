// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cornerpin/shot.h"
#include "shot/files/explanation_csv.h"
#include "shot/files/export.h"
#include "shot/files/output_file.h"
#include "shot/interface/boundary.h"
#include "shot/interface/result.h"
#include "shot/report/page.h"
#include "shot/report/picture_files.h"
#include "shot/report/plot_png.h"
#include "shot/report/plot_svg.h"
#include "shot/report/shot_pictures.h"

namespace cornerpin::shot {

namespace {

// A scale beyond these is a slip.
constexpr double kSmallestScale = 0.001;
constexpr double kLargestScale = 1000.0;

[[noreturn]] void refuse(const std::string& text) { throw std::invalid_argument(text); }

void requireFile(const std::string& path) {
  if (path.empty()) refuse("path: the name of a file is wanted");
  if (path == "-") refuse("path: the name of a file is wanted, not - for standard output");
}

ExportKind kindOf(const std::string& word) {
  if (word == "pin") return ExportKind::Pin;
  if (word == "stabilise") return ExportKind::Stabilise;
  if (word == "matrix") return ExportKind::Matrix;
  if (word == "tracks") return ExportKind::Tracks;
  refuseWord("as", word, {"pin", "stabilise", "matrix", "tracks"});
}

PinStyle styleOf(const WriteOptions& options, Format format) {
  PinStyle style;
  if (options.nk == "matrix") {
    style.nk = PinStyle::Nk::Matrix;
  } else if (options.nk == "both") {
    style.nk = PinStyle::Nk::Both;
  } else if (options.nk != "points") {
    refuseWord("nk", options.nk, {"points", "matrix", "both"});
  }
  if (options.keyframes == "transform") {
    style.keyframes = PinStyle::Keyframes::Transform;
  } else if (options.keyframes != "pin") {
    refuseWord("keyframes", options.keyframes, {"pin", "transform"});
  }
  requirePositive("fps", options.fps);
  requirePositive("par", options.par);
  if (format == Format::Keyframes && !options.fps) {
    refuse("fps: keyframes files need to know how many frames a second has");
  }
  style.framesPerSecond = options.fps.value_or(style.framesPerSecond);
  style.pixelAspect = options.par;
  return style;
}

// By the word or the path's ending; refuses one that does not hold what it is to hold.
Format formatFor(const std::string& path, const std::string& word, ExportKind kind) {
  std::optional<Format> format = formatOfWord("to", word);
  if (!format) format = formatOf(path);
  if (!format) refuse(fmt::format("to: the name \"{}\" tells no format: give one", path));
  const std::string flaw = flawOf(*format, kind);
  if (!flaw.empty()) refuse(fmt::format("\"{}\": {}", path, flaw));
  return *format;
}

Export exportOf(const std::string& path, const WriteOptions& options) {
  Export what;
  what.path = path;
  what.kind = kindOf(options.as);
  what.format = formatFor(path, options.to, what.kind);
  what.style = styleOf(options, what.format);
  return what;
}

// What messages and pages call the shot.
std::string nameOf(const std::optional<InputFile>& input) {
  return input && !input->name.empty() ? input->name : "shot";
}
std::string nameOf(const ShotResult& result) { return nameOf(result.provenance.input); }

std::optional<ShotPictures> picturesOf(const PageOptions& options, const PageSubject& subject) {
  const std::optional<double>& scale = options.pictureScale;
  if (options.pictures.empty()) {
    if (scale) refuse("picture_scale: no pictures are given");
    if (options.link) refuse("link: no pictures are given");
    return std::nullopt;
  }
  if (scale && (!(*scale >= kSmallestScale) || !(*scale <= kLargestScale))) {
    refuse(
        fmt::format("picture_scale: the width of the pictures over that of the tracks' picture "
                    "is wanted, such as 0.5, not {}",
                    *scale));
  }
  try {
    const PictureFiles files(options.pictures);
    ShotPictures pictures(files, options.pictures, subject.result.frames.front().frame,
                          subject.result.frames.back().frame);
    if (options.link) pictures.refuseLinks();
    pictures.fit(subject.result.provenance.picture, scale, subject.tracks);
    return pictures;
  } catch (const std::invalid_argument& error) {
    const std::string text = error.what();
    const std::string option = "--pictures: ";
    refuse("pictures: " + (text.rfind(option, 0) == 0 ? text.substr(option.size()) : text));
  }
}

}  // namespace

Written Tracks::write(const std::string& path, const std::string& to) const {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    requireFile(path);
    const Format format = formatFor(path, to, ExportKind::Tracks);
    OutputFile out(path);
    const cornerpin::Written written =
        writeTracks(data_->tracks, format, nameOf(data_->input), out);
    out.commit();
    return Written{written.notes, readBackText(path, format, written), written.size};
  });
}

Written Result::write(const std::string& path, const WriteOptions& options,
                      const Progress& progress) const {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    requireFile(path);
    const Export what = exportOf(path, options);
    if (what.kind == ExportKind::Tracks && data_->tracks == nullptr) {
      refuse("as: a result that was read from a file holds no tracks: solve them again");
    }
    const std::string name = nameOf(data_->result);
    OutputFile out(path);
    const cornerpin::Written written =
        writeExport(what, data_->result, data_->tracks.get(), name, out, report);
    out.commit();
    return Written{written.notes, readBackText(path, what.format, written), written.size};
  });
}

std::vector<std::string> Result::report(const std::string& path, const PageOptions& options,
                                        const Progress& progress) const {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    requireFile(path);
    const ShotResult& result = data_->result;
    const PageSubject subject = {result, data_->tracks.get(),
                                 options.title.empty() ? nameOf(result) : options.title};
    const std::optional<ShotPictures> pictures = picturesOf(options, subject);
    OutputFile out(path);
    std::vector<std::string> broken;
    if (pictures) {
      const PictureUse use = {*pictures, options.link ? path : std::string()};
      broken = writePage(subject, &use, out, report);
    } else {
      writePage(subject, nullptr, out, report);
    }
    out.commit();
    return broken;
  });
}

void Result::plot(const std::string& path) const {
  requireFile(path);
  const std::string ending = std::filesystem::path(path).extension().string();
  if (ending != ".svg" && ending != ".png") {
    refuse(fmt::format("path: \"{}\" ends neither in .svg nor in .png", path));
  }
  const std::string svg = plotSvg(data_->result, nameOf(data_->result));
  const std::string picture = ending == ".png" ? pngOf(svg) : svg;
  OutputFile out(path);
  out.write(picture);
  out.commit();
}

void Result::writeExplanation(const std::string& path, const Progress& progress) const {
  atBoundary(progress, [&](const cornerpin::Progress& report) {
    requireFile(path);
    if (!data_->explained) {
      refuse("influences: the result does not hold them: solve with this option");
    }
    OutputFile out(path);
    writeExplanationCsv(data_->result, *data_->tracks, out, report);
    out.commit();
    return true;
  });
}

}  // namespace cornerpin::shot
