// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "text.h"
#include "watched.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

using shot::Result;

py::array_t<double> matrixOf(const std::array<double, 9>& elements) {
  return arrayOf(std::vector<double>(elements.begin(), elements.end()), {3, 3});
}

py::ssize_t frameCount(const Result& result) {
  return static_cast<py::ssize_t>(result.frameNumbers().size());
}

// What help() says of each.
constexpr const char* kDoubt = R"(What makes a frame doubtful.

Attributes
----------
code : str
    "expected-error", "no-figures" ..., as docs/result.md lists them.
text : str
    For people.
)";

constexpr const char* kFrame = R"(One frame of a result. A number that is not known is NaN.

Attributes
----------
frame : int
    Its number.
transform : ndarray, shape (3, 3)
    From the reference frame to this one, in pixels; the last element is 1.
status : {"base", "solved", "reduced", "held"}
model : str
    "projective", "affine" ...; empty for the base frame.
on_top : bool
    The model moves a transform that it keeps.
kept_from : list of int
    The frames that this is from.
reason : str
    Why it is reduced or held; empty for others.
why : str
    Why its transform was found from where it was.
stage : str
    Of solved frames, where the search started.
tracks, handed_over, good : int
    That take part; of these, absent from the base frame; that keep to the transform.
rms, good_rms : float
    Of all residuals, and of the good tracks', in pixels.
sigma, noise : float
    Of one coordinate of a good track; the same by the good tracks' residuals.
loss : str
    That the fit ended with.
width : float
    The residual at which that loss bends.
is_doubtful : bool
doubts : list of Doubt
    What makes it so.
expected_error : float
    Of the worst corner, in pixels.
smoothed : float
    How far smoothing moved a corner, in pixels.
filled : bool
    Whether it is interpolated.
)";

constexpr const char* kTrackRun = R"(Frames next to each other in which a track is the same.

Attributes
----------
first, last : int
    Both included.
use : {"good", "ignored", "absent"}
)";

constexpr const char* kTrack = R"(What became of a track.

Attributes
----------
name : str
x, y : float
    Its place in the reference frame, in pixels; NaN where it is not known.
covariance : ndarray, shape (2, 2)
    Of that place, in pixels squared; NaN where it is not known.
runs : list of TrackRun
    From the first frame to the last.
)";

constexpr const char* kLeftOutTrack = R"(A track that takes part in no frame.

Attributes
----------
name : str
why : str
    "no-weight", "dropped" ..., as docs/result.md lists them.
)";

constexpr const char* kWorstTrack = R"(A track that the result leans on.

Attributes
----------
track : str
    Its name.
first, last : int
    The frames, both included.
peak : int
    The frame in which it moves a corner most.
moves : float
    How far the worst corner moves there without it, in pixels.
off : float
    Its residual there, in deviations of ordinary tracks.
stands_out : bool
    Noise does not explain it, and it matters.
)";

template <class Struct>
auto text(std::string Struct::*member) {
  return [member](const Struct& self) { return textOf(self.*member); };
}

void bindFrame(py::module_& module) {
  using shot::Doubt;
  using shot::Frame;
  py::class_<Doubt>(module, "Doubt", kDoubt)
      .def_property_readonly("code", text(&Doubt::code))
      .def_property_readonly("text", text(&Doubt::text));
  py::class_<Frame>(module, "Frame", kFrame)
      .def_readonly("frame", &Frame::frame)
      .def_property_readonly("transform",
                             [](const Frame& self) { return matrixOf(self.transform); })
      .def_property_readonly("status", text(&Frame::status))
      .def_property_readonly("model", text(&Frame::model))
      .def_readonly("on_top", &Frame::onTop)
      .def_readonly("kept_from", &Frame::keptFrom)
      .def_property_readonly("reason", text(&Frame::reason))
      .def_property_readonly("why", text(&Frame::why))
      .def_property_readonly("stage", text(&Frame::stage))
      .def_readonly("tracks", &Frame::tracks)
      .def_readonly("handed_over", &Frame::handedOver)
      .def_readonly("good", &Frame::good)
      .def_readonly("rms", &Frame::rms)
      .def_readonly("good_rms", &Frame::goodRms)
      .def_readonly("sigma", &Frame::sigma)
      .def_readonly("noise", &Frame::noise)
      .def_property_readonly("loss", text(&Frame::loss))
      .def_readonly("width", &Frame::width)
      .def_readonly("is_doubtful", &Frame::isDoubtful)
      .def_readonly("doubts", &Frame::doubts)
      .def_readonly("expected_error", &Frame::expectedError)
      .def_readonly("smoothed", &Frame::smoothed)
      .def_readonly("filled", &Frame::filled);
}

void bindTracksOfResult(py::module_& module) {
  using shot::LeftOutTrack;
  using shot::Track;
  using shot::TrackRun;
  using shot::WorstTrack;
  py::class_<TrackRun>(module, "TrackRun", kTrackRun)
      .def_readonly("first", &TrackRun::first)
      .def_readonly("last", &TrackRun::last)
      .def_property_readonly("use", text(&TrackRun::use));
  py::class_<Track>(module, "Track", kTrack)
      .def_property_readonly("name", text(&Track::name))
      .def_readonly("x", &Track::x)
      .def_readonly("y", &Track::y)
      .def_property_readonly("covariance",
                             [](const Track& self) {
                               const auto& c = self.covariance;
                               return arrayOf(std::vector<double>(c.begin(), c.end()), {2, 2});
                             })
      .def_readonly("runs", &Track::runs);
  py::class_<LeftOutTrack>(module, "LeftOutTrack", kLeftOutTrack)
      .def_property_readonly("name", text(&LeftOutTrack::name))
      .def_property_readonly("why", text(&LeftOutTrack::why));
  py::class_<WorstTrack>(module, "WorstTrack", kWorstTrack)
      .def_property_readonly("track", text(&WorstTrack::track))
      .def_readonly("first", &WorstTrack::first)
      .def_readonly("last", &WorstTrack::last)
      .def_readonly("peak", &WorstTrack::peak)
      .def_readonly("moves", &WorstTrack::moves)
      .def_readonly("off", &WorstTrack::off)
      .def_readonly("stands_out", &WorstTrack::standsOut);
}

void bindOptions(py::module_& module) {
  using shot::PageOptions;
  using shot::WriteOptions;
  py::class_<WriteOptions>(module, "WriteOptions")
      .def(py::init<>())
      .def_readwrite("format", &WriteOptions::to)
      .def_readwrite("as_", &WriteOptions::as)
      .def_readwrite("nk", &WriteOptions::nk)
      .def_readwrite("keyframes", &WriteOptions::keyframes)
      .def_readwrite("fps", &WriteOptions::fps)
      .def_readwrite("par", &WriteOptions::par)
      .def_readwrite("read_back", &WriteOptions::readBack);
  py::class_<PageOptions>(module, "PageOptions")
      .def(py::init<>())
      .def_readwrite("pictures", &PageOptions::pictures)
      .def_readwrite("picture_scale", &PageOptions::pictureScale)
      .def_readwrite("link", &PageOptions::link)
      .def_readwrite("title", &PageOptions::title);
}

py::array_t<double> corners(const Result& result, std::size_t quad) {
  return arrayOf(result.corners(quad), {frameCount(result), 4, 2});
}

py::array_t<double> covariance(const Result& result, std::size_t quad) {
  return arrayOf(result.covariance(quad), {frameCount(result), 4, 2, 2});
}

py::array_t<double> deviation(const Result& result, std::size_t quad) {
  return arrayOf(result.deviation(quad), {frameCount(result), 4});
}

// Their names and corners.
py::list quadsOf(const Result& result) {
  py::list quads;
  for (const shot::Quad& quad : result.quads()) {
    const std::vector<double> flat(quad.corners.begin(), quad.corners.end());
    quads.append(py::make_tuple(textOf(quad.name), arrayOf(flat, {4, 2})));
  }
  return quads;
}

// Name, digest, format and rows; None where it is not known.
py::object inputOf(const Result& result) {
  const std::optional<shot::InputFile> input = result.input();
  if (!input) return py::none();
  return py::make_tuple(textOf(input->name), textOf(input->sha256), textOf(input->format),
                        input->rows);
}

// Frames and transforms.
py::list betweenOf(const Result& result) {
  py::list frames;
  for (const shot::BetweenFrame& frame : result.between()) {
    frames.append(py::make_tuple(frame.frame, matrixOf(frame.transform)));
  }
  return frames;
}

// First frames, last frames and texts.
py::list tuplesOf(const std::vector<shot::Stretch>& stretches) {
  py::list tuples;
  for (const shot::Stretch& stretch : stretches) {
    tuples.append(py::make_tuple(stretch.first, stretch.last, textOf(stretch.text)));
  }
  return tuples;
}

shot::Written write(const Result& result, const std::string& path,
                    const shot::WriteOptions& options, const py::object& progress) {
  return watched(progress,
                 [&](const shot::Progress& report) { return result.write(path, options, report); });
}

py::list report(const Result& result, const std::string& path, const shot::PageOptions& options,
                const py::object& progress) {
  return textsOf(watched(
      progress, [&](const shot::Progress& told) { return result.report(path, options, told); }));
}

void writeExplanation(const Result& result, const std::string& path, const py::object& progress) {
  watch(progress, [&](const shot::Progress& report) { result.writeExplanation(path, report); });
}

Result withTracks(const Result& result, const std::string& path, const py::object& progress) {
  return watched(progress,
                 [&](const shot::Progress& report) { return result.withTracks(path, report); });
}

}  // namespace

void bindResult(py::module_& module) {
  bindFrame(module);
  bindTracksOfResult(module);
  bindOptions(module);
  py::class_<Result>(module, "Result")
      .def_property_readonly("base_frame", &Result::baseFrame)
      .def_property_readonly("base_why", [](const Result& self) { return textOf(self.baseWhy()); })
      .def_property_readonly("reference_frame", &Result::referenceFrame)
      .def_property_readonly("max_error", &Result::maxError)
      .def("frames", &Result::frames)
      .def("frame_numbers",
           [](const Result& self) { return arrayOf(self.frameNumbers(), {frameCount(self)}); })
      .def("transforms",
           [](const Result& self) {
             return arrayOf(self.transforms(), {frameCount(self), 3, 3});
           })
      .def("expected_errors",
           [](const Result& self) { return arrayOf(self.expectedErrors(), {frameCount(self)}); })
      .def("between", betweenOf)
      .def("input", inputOf)
      .def("quads", quadsOf)
      .def("corners", corners)
      .def("covariance", covariance)
      .def("deviation", deviation)
      .def("tracks", &Result::tracks)
      .def("left_out_tracks", &Result::leftOutTracks)
      .def("worst_tracks", &Result::worstTracks)
      .def("closing_sentence", [](const Result& self) { return textOf(self.closingSentence()); })
      .def("closing_stretches",
           [](const Result& self) { return tuplesOf(self.closingStretches()); })
      .def("advice", [](const Result& self) { return tuplesOf(self.advice()); })
      .def("summary", [](const Result& self) { return textOf(self.summary()); })
      .def("to_json", [](const Result& self) { return textOf(self.toJson()); })
      .def("to_csv", [](const Result& self) { return textOf(self.toCsv()); })
      .def("rebase", &Result::rebase, py::call_guard<py::gil_scoped_release>())
      .def("with_tracks", withTracks)
      .def("write", write)
      .def("report", report)
      .def("plot", &Result::plot, py::call_guard<py::gil_scoped_release>())
      .def("write_explanation", writeExplanation);
  module.def("read_result", &shot::readResult, py::call_guard<py::gil_scoped_release>());
}

}  // namespace cornerpin::python
