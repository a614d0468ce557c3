// SPDX-License-Identifier: BSD-3-Clause
#include "shot/interface/output.h"

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

ExportKind kindOf(const std::string& word) {
  if (word.empty() || word == "pin") return ExportKind::Pin;
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

// What messages call what was read from `source`.
std::string nameOf(const std::string& source) { return source.empty() ? "shot" : source; }

// What pages and plots are called: the file of the tracks, or of the result.
std::string titleOf(const Result::Data& data, const std::string& title) {
  if (!title.empty()) return title;
  const std::optional<cornerpin::InputFile>& input = data.result.provenance.input;
  if (input && !input->name.empty()) return input->name;
  if (data.source == "-") return "standard input";
  return nameOf(std::filesystem::path(data.source).filename().string());
}

// What pictures are looked at with, where it is known.
struct PictureSubject {
  int firstFrame;
  int lastFrame;
  const cornerpin::Picture& picture;  // of the tracks
  const cornerpin::Tracks* tracks;    // null: not known
};

// Without a subject it is only looked where they are.
std::optional<ShotPictures> picturesOf(const PageOptions& options, const PictureSubject* subject) {
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
    if (subject == nullptr) return std::nullopt;
    ShotPictures pictures(files, options.pictures, subject->firstFrame, subject->lastFrame);
    if (options.link) pictures.refuseLinks();
    pictures.fit(subject->picture, scale, subject->tracks);
    return pictures;
  } catch (const std::invalid_argument& error) {
    const std::string text = error.what();
    const std::string option = "--pictures: ";
    refuse("pictures: " + (text.rfind(option, 0) == 0 ? text.substr(option.size()) : text));
  }
}

bool isPng(const std::string& path) { return std::filesystem::path(path).extension() == ".png"; }

void requirePlot(const std::string& path) {
  requireFile(path);
  if (isPng(path) || std::filesystem::path(path).extension() == ".svg") return;
  refuse(fmt::format("path: \"{}\" ends neither in .svg nor in .png", path));
}

}  // namespace

void requireFile(const std::string& path) {
  if (path.empty()) refuse("path: the name of a file is wanted");
}

Export exportOf(const std::string& path, const WriteOptions& options) {
  Export what;
  what.path = path;
  what.kind = kindOf(options.as);
  what.format = formatFor(path, options.to, what.kind);
  what.style = styleOf(options, what.format);
  return what;
}

Written saidOf(const std::string& path, Format format, const cornerpin::Written& written,
               bool readBack) {
  std::error_code ignored;  // of a path that is not there
  const bool isRead = readBack && path != "-" && std::filesystem::is_regular_file(path, ignored);
  return {written.notes, isRead ? readBackText(path, format, written) : "", written.size};
}

void removeTemporaryFiles() noexcept { cornerpin::removeTemporaryFiles(); }

void checkWritable(const std::string& path) {
  requireFile(path);
  OutputFile::check(path);
}

void checkWrite(const std::string& path, const WriteOptions& options, const Options& solved,
                const Tracks* tracks) {
  requireFile(path);
  const Export what = exportOf(path, options);
  const bool isPin =
      what.kind == ExportKind::Pin && what.format != Format::Json && what.format != Format::Csv;
  if (isPin) requireOneQuad(namedQuadsOf(solved.quads));
  if (tracks == nullptr) return;
  const Tracks::Data& data = tracks->data();
  requireKnown(what, data.tracks.picture, nameOf(data.source));
}

void checkReport(const PageOptions& options, const Options& solved, const Tracks* tracks) {
  atBoundary({}, [&](const cornerpin::Progress&) {
    if (tracks == nullptr || options.pictures.empty()) return picturesOf(options, nullptr);
    // Only looked at, in this call.
    const std::shared_ptr<const Tracks::Data> all(std::shared_ptr<void>(), &tracks->data());
    const auto part = takingPart(all, solved, false);
    const PictureSubject shown = {part->firstFrame(), part->lastFrame(), part->picture, part.get()};
    return picturesOf(options, &shown);
  });
}

void checkPlot(const std::string& path) {
  requirePlot(path);
  if (isPng(path)) requirePngRenderer();
}

Written Tracks::write(const std::string& path, const std::string& to) const {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    requireFile(path);
    const Format format = formatFor(path, to, ExportKind::Tracks);
    OutputFile out(path);
    const cornerpin::Written written =
        writeTracks(data_->tracks, format, nameOf(data_->source), out);
    out.commit();
    return saidOf(path, format, written, true);
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
    OutputFile out(path);
    const cornerpin::Written written =
        writeExport(what, data_->result, data_->tracks.get(), nameOf(data_->source), out, report);
    out.commit();
    return saidOf(path, what.format, written, options.readBack);
  });
}

std::vector<std::string> Result::report(const std::string& path, const PageOptions& options,
                                        const Progress& progress) const {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    requireFile(path);
    const PageSubject subject = {data_->result, data_->tracks.get(),
                                 titleOf(*data_, options.title)};
    if (options.link && path == "-") refuse("link: pictures cannot be beside standard output");
    const std::vector<FrameResult>& frames = data_->result.frames;
    const PictureSubject shown = {frames.front().frame, frames.back().frame,
                                  data_->result.provenance.picture, data_->tracks.get()};
    const std::optional<ShotPictures> pictures = picturesOf(options, &shown);
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
  requirePlot(path);
  const std::string svg = plotSvg(data_->result, titleOf(*data_, ""));
  const std::string picture = isPng(path) ? pngOf(svg) : svg;
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
