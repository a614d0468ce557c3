// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SHOT_H
#define CORNERPIN_SHOT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// \file
/// Whole shots: tracks in, a transform for every frame and what it is worth out. It is what the
/// command `cornerpin` does, to the bit: `Result::toJson` is the file that `cornerpin solve -o`
/// writes of the same tracks and options.
///
/// Words are those of the command and of the result's JSON: "tukey", "solved", "expected-error".
/// Lengths and places are in the pixels of the tracks, frames are counted as they count them. A
/// number that is not known is NaN.
///
/// Nothing is printed unless it is written to "-", standard output. Different tracks and results
/// may be used in different threads at the same time, and so may copies of the same.
///
/// Every function throws `std::bad_alloc` where memory is out, and besides what it says itself:
/// - `InputError` for a file that cannot be read or is refused,
/// - `std::invalid_argument` for an argument or option that makes no sense. The text names it and
///   says what it got and what it wants; what the command has an option for, it may call by that
///   option's name ("--size" is `Picture::width` and `height`),
/// - `std::system_error` for a file that cannot be written, with its path,
/// - `Cancelled` where a `Progress` has ended the work, and whatever that threw itself.
///
/// A file that is written appears whole or not at all, whatever is thrown.

/// Marks what the library exports. Define `CORNERPIN_SHOT_STATIC` when linking the static library
/// by hand; the CMake target and the pkg-config file define it by themselves.
#if defined(CORNERPIN_SHOT_STATIC)
#define CORNERPIN_SHOT_API
#elif defined(_WIN32) && defined(CORNERPIN_SHOT_BUILDING)
#define CORNERPIN_SHOT_API __declspec(dllexport)
#elif defined(_WIN32)
#define CORNERPIN_SHOT_API __declspec(dllimport)
#elif defined(__GNUC__)
#define CORNERPIN_SHOT_API __attribute__((visibility("default")))
#else
#define CORNERPIN_SHOT_API
#endif

/// The host layer: whole shots, in double precision and in the caller's pixels.
namespace cornerpin::shot {

/// A file that cannot be read or is refused. `what` is "FILE:LINE: text", or "FILE: text" where no
/// line is to blame; of several flaws, one below the other, and file and line are the first one's.
class CORNERPIN_SHOT_API InputError : public std::runtime_error {
 public:
  /// \param text  all that `what` says
  InputError(const std::string& text, const std::string& file, std::uint32_t line);
  InputError(const InputError&) = default;
  InputError& operator=(const InputError&) = default;
  ~InputError() override;

  std::string file;        ///< as it was given
  std::uint32_t line = 0;  ///< from 1; 0 for none
};

/// The work was ended by its `Progress`.
class CORNERPIN_SHOT_API Cancelled : public std::exception {
 public:
  Cancelled() = default;
  Cancelled(const Cancelled&) = default;
  Cancelled& operator=(const Cancelled&) = default;
  ~Cancelled() override;
  /// "cancelled".
  const char* what() const noexcept override;
};

/// Is told how far the work is, and says whether it goes on: false ends it with `Cancelled`, and so
/// does an exception, which comes out of the call. Nothing is left behind then.
///
/// Called at the beginning of a phase, with nothing done, and again as it goes on; a total of 0 is
/// one that nobody knows. The phases are "reading" (in bytes), "choosing the base frame" (in frames
/// that are compared), "solving" (in frames of all sweeps, at most so many), "handing over" (in
/// steps of the joint fit, at most so many), "figures of trust" (in frames), "smoothing",
/// "filling", "looking for what helps" (in kinds of tries) and "writing" (in frames).
///
/// It is called from the thread that started the work and from those that `Options::threads`
/// allows, one at a time.
using Progress = std::function<bool(const char* phase, std::size_t done, std::size_t total)>;

/// What made a result, and what is running.
struct Version {
  std::string program;  ///< "cornerpin"
  std::string version;  ///< "0.2.0"
  std::string commit;  ///< of its source, with "-modified" where that was changed; empty: not known
};

/// Of this library.
CORNERPIN_SHOT_API Version version();

/// A format of files. `docs/formats.md` describes them.
struct FileFormat {
  std::string word;           ///< for `ReadOptions::from` and `WriteOptions::to`
  std::string what;           ///< for people: "a node script"
  std::string extension;      ///< of the files' names: ".nk"; empty: they have no one of their own
  bool readsTracks = false;   ///< or pins
  bool writesTracks = false;  ///< `Tracks::write`
  bool writesPins = false;    ///< `Result::write`
};

/// All formats.
CORNERPIN_SHOT_API std::vector<FileFormat> fileFormats();

/// The word of the format whose files end like the path, in any case; empty where it tells none.
CORNERPIN_SHOT_API std::string fileFormatOf(const std::string& path);

/// What a file is by what it begins with. Whoever reads it may still refuse it.
struct FileKind {
  std::string holds;   ///< "tracks", which may be those of a pin, "result", or empty for all else
  std::string format;  ///< the word of its format, "csv" where nothing speaks for another one;
                       ///< empty for what is no text
};

/// Looks at the beginning of a file, plain or gzip, such as of all that are in a folder.
///
/// Throws `InputError` for a file that cannot be read, and for "-": standard input could not be
/// read from its beginning afterwards.
CORNERPIN_SHOT_API FileKind fileKindOf(const std::string& path);

/// A text from a file, such as a name in an error, as a terminal may be given it: on one line, with
/// ? in the place of each control character.
CORNERPIN_SHOT_API std::string printable(const std::string& text);

/// A word as a shell reads it back, as in `Result::trackAdvice`: in quotes where it needs them.
CORNERPIN_SHOT_API std::string shellWord(const std::string& word);

/// How many slips lead from one word to the other: a byte too many, one missing, another one, or
/// two neighbours swapped. Names that nothing has are refused with those that are few slips away.
CORNERPIN_SHOT_API std::size_t slipsBetween(const std::string& a, const std::string& b);

/// Frames lie between this and its negative.
constexpr int kFurthestFrame = 1'000'000'000;

/// What is known of the picture and the clip that tracks are from; what is not known is not there.
/// x always grows to the right. A solve needs none of it, files in other formats do.
struct Picture {
  std::optional<int> width;           ///< in pixels (--size)
  std::optional<int> height;          ///< in pixels (--size)
  std::string y;                      ///< "up" or "down", where y grows to; empty: not known
  std::optional<double> pixelCentre;  ///< of the first pixel: 0, or 0.5 where whole numbers are
                                      ///< edges (--pixel-center)
  std::optional<int> firstFrame;      ///< the number of the clip's first frame (--first-frame)
};

/// How tracks are read from a file.
struct ReadOptions {
  std::string from;    ///< the format, as --from names it; empty: found by what is in the file
  std::string frames;  ///< where a frame is far from all others, only these are read, as
                       ///< `Options::frames` has them; empty: such a frame is refused
  Picture picture;     ///< what the file does not say itself
  bool digest = true;  ///< take the SHA-256 of the file, which results in JSON tell
};

/// An array of numbers that somebody else owns, which is only looked at during a call. No copy is
/// made of it.
class CORNERPIN_SHOT_API Array {
 public:
  /// No array.
  Array();
  /// \param data     the first element
  /// \param shape    how many there are in each dimension
  /// \param strides  how many elements it is from one to the next in each dimension, negative
  ///                 backwards; empty: the last dimension is packed, and so on
  Array(const double* data, std::vector<std::size_t> shape,
        std::vector<std::ptrdiff_t> strides = {});
  /// The same in single precision.
  Array(const float* data, std::vector<std::size_t> shape,
        std::vector<std::ptrdiff_t> strides = {});

  /// Whether there is none.
  bool isNone() const;
  /// How many elements there are in each dimension.
  const std::vector<std::size_t>& shape() const;
  /// The element with so many numbers as there are dimensions; none of them is checked.
  double at(std::initializer_list<std::size_t> index) const;

 private:
  const double* doubles_ = nullptr;
  const float* floats_ = nullptr;
  std::vector<std::size_t> shape_;
  std::vector<std::ptrdiff_t> strides_;
};

/// Tracks as arrays of all frames and tracks.
struct TrackArrays {
  /// frames x tracks x 2: x and y. NaN in both where a track is absent.
  Array positions;
  /// frames x tracks; 0 where a track is absent, whatever its position is then. None: 1 everywhere.
  /// A residual r is multiplied by its weight w, so that its cost is w^2 r^2.
  Array weights;
  /// One for each track, all different. None: "t" and the track's index, with as many zeros in
  /// front as the largest index needs: "t00" to "t99" of 100 tracks.
  std::vector<std::string> names;
  int firstFrame = 0;  ///< the number of the first of the frames, which follow one another
  Picture picture;     ///< what is known of it
};

/// The place of one track in one frame.
struct Observation {
  std::size_t track = 0;  ///< index into the names
  int frame = 0;          ///< in which it was seen
  double x = 0.0;         ///< in pixels
  double y = 0.0;         ///< in pixels
  double weight = 1.0;    ///< 0: absent; taken in single precision
};

/// What is to be said of a file that was written.
struct Written {
  std::vector<std::string> notes;  ///< what the format cannot carry
  std::string readBack;  ///< how it compares: "read back: largest difference 0 px"; empty where
                         ///< nothing was read again, as of standard output and pipes
  std::string size;      ///< of the picture, such as 1920x1080, where something depended on it
};

class Result;
struct Options;

/// The tracks of a shot. Copies share them; nothing changes them.
class CORNERPIN_SHOT_API Tracks {
 public:
  struct Data;  ///< what they are made of
  /// Made by `readTracks`, `tracksFromArrays` and `tracksFromRows`.
  explicit Tracks(std::shared_ptr<const Data> data);
  Tracks(const Tracks&) = default;
  /// Leaves nothing but to be assigned or destroyed.
  Tracks(Tracks&&) noexcept = default;
  Tracks& operator=(const Tracks&) = default;
  /// Leaves nothing but to be assigned or destroyed.
  Tracks& operator=(Tracks&&) noexcept = default;
  ~Tracks();

  /// In order, byte by byte, so that nothing depends on the order in which they came. Results have
  /// the tracks in this order.
  std::vector<std::string> names() const;
  /// By frame, then by track: those of weight 0 too, as far as they were read.
  std::vector<Observation> observations() const;
  /// The number of the first frame.
  int firstFrame() const;
  /// The number of the last frame.
  int lastFrame() const;
  /// What is known of their picture.
  Picture picture() const;
  /// What was skipped in the file, "FILE:LINE: text", for people.
  std::vector<std::string> notes() const;

  /// frames x tracks x 2, packed, from the first frame to the last: NaN where a track is absent.
  std::vector<double> positions() const;
  /// frames x tracks, packed: 0 where a track is absent.
  std::vector<double> weights() const;

  /// Writes them to a file, in the coordinates and frames of its format, and reads it again to
  /// compare; "-" is standard output.
  ///
  /// \param to  the format, as --to names it; empty: by the path's ending
  ///
  /// Throws `std::invalid_argument` for a format that holds no tracks, and for what it needs to
  /// know and `Picture` does not tell.
  Written write(const std::string& path, const std::string& to = {}) const;

  /// Of the library alone.
  const Data& data() const { return *data_; }

 private:
  friend CORNERPIN_SHOT_API Result solve(Tracks tracks, const Options& options,
                                         const Progress& progress);

  std::shared_ptr<const Data> data_;
};

/// Reads tracks from a file in any format that `docs/formats.md` lists, plain or gzip; "-" is
/// standard input. Frames and coordinates stay as the file has them, in pixels.
///
/// Throws `InputError` for what is not as its format has it, for a file without tracks and for a
/// corner pin; `std::invalid_argument` where the options contradict the file, or lack the size of
/// the picture that coordinates are parts of.
CORNERPIN_SHOT_API Tracks readTracks(const std::string& path, const ReadOptions& options = {},
                                     const Progress& progress = {});

/// Takes tracks from arrays. What is absent takes no memory.
///
/// Throws `std::invalid_argument` for a wrong shape, no frame or track, a name that is empty, has a
/// zero byte in it or is there twice, NaN in one coordinate alone, a position or weight beyond
/// single precision, a negative weight or NaN, where no track is seen anywhere, and for more than
/// 2,000,000 frames or one beyond `kFurthestFrame`.
CORNERPIN_SHOT_API Tracks tracksFromArrays(const TrackArrays& arrays);

/// Takes tracks from their observations, in any order.
///
/// \param names    one for each track, all different; none: as `TrackArrays::names` has it, from 0
///                 to the largest track
/// \param picture  what is known of it
///
/// Throws `std::invalid_argument` as `tracksFromArrays` does, and for a track that is given twice
/// in a frame and one that has no name.
CORNERPIN_SHOT_API Tracks tracksFromRows(const std::vector<Observation>& rows,
                                         const std::vector<std::string>& names = {},
                                         const Picture& picture = {});

/// Four corners of something on the surface.
struct Quad {
  std::string name;                 ///< of each quad another
  std::array<double, 8> corners{};  ///< x0, y0, ... x3, y3, in order around
};

/// How a shot is solved: what the command's options of the same names say, and what the result's
/// `options` tell.
struct Options {
  std::optional<int> base;         ///< frame to fit from; none: chosen (--base)
  std::optional<int> reference;    ///< frame that transforms start from and quads belong to; none:
                                   ///< the base frame (--reference)
  std::string frames;              ///< solve these only: "10-60", "60-"; empty: all (--frames)
  std::vector<std::string> keep;   ///< use only these tracks: "t00?", "t042:1-50" (--keep)
  std::vector<std::string> drop;   ///< leave these out: "t007", "n*", "t042:60-81" (--drop)
  bool baseOnly = false;           ///< only tracks seen in the base frame take part (--base-only)
  bool hold = false;               ///< frames with too few tracks take their neighbour's transform
  std::string units = "fit";       ///< "fit", or "raw" for pixels near 1: the library's (--units)
  std::string loss = "tukey";      ///< "tukey", "cauchy", "huber" or "none" (--loss)
  std::uint64_t seed = 1;          ///< of random choices (--seed)
  std::optional<double> maxError;  ///< px above which a frame is doubtful; none: 0.5 % of the
                                   ///< surface's extent (--max-error)
  std::optional<double> smooth;    ///< take jitter out, moving no corner by more (--smooth)
  bool fill = false;               ///< interpolate held and reduced frames (--fill)
  std::vector<double> at;          ///< transforms between frames, too: 10.5 (--at)
  std::vector<Quad>
      quads;  ///< what the figures of trust are about, as read in the reference frame;
              ///< none: one named "tracks", the box around the base frame's tracks

  // What changes no bit of the transforms.
  unsigned threads = 2;     ///< at once, 1 to 1024
  bool advice = true;       ///< look for what makes doubtful frames better; two solves at most
  bool influences = false;  ///< keep what `Result::writeExplanation` writes: 40 bytes a place
};

/// Frames next to each other, both ends included, and what is said of them.
struct Stretch {
  int first = 0;     ///< frame
  int last = 0;      ///< frame
  std::string text;  ///< for people
};

/// What makes a frame doubtful.
struct Doubt {
  std::string code;  ///< "expected-error", "no-figures" ..., as docs/result.md lists them
  std::string text;  ///< for people
};

/// One frame of a result. `docs/result.md` says what each figure is.
struct Frame {
  int frame = 0;                      ///< its number
  std::array<double, 9> transform{};  ///< reference frame to this one, row by row; the last is 1
  std::string status;                 ///< "base", "solved", "reduced" or "held"
  std::string model;                  ///< "projective", "affine" ...; empty for the base frame
  bool onTop = false;                 ///< the model moves a transform that it keeps
  std::vector<int> keptFrom;          ///< the frames that this is from
  std::string reason;                 ///< why it is reduced or held; empty for others
  std::string why;                    ///< why its transform was found from where it was
  std::string stage;                  ///< of solved frames, where the search started
  int tracks = 0;                     ///< that take part
  int handedOver = 0;                 ///< of these, absent from the base frame
  int good = 0;                       ///< that keep to the transform
  double rms = 0.0;                   ///< of all residuals, in pixels; NaN without tracks
  double goodRms = 0.0;               ///< of the good tracks'; NaN where not solved
  double sigma = 0.0;                 ///< of one coordinate of a good track
  double noise = 0.0;                 ///< of a coordinate, by the good tracks' residuals
  std::string loss;                   ///< that the fit ended with
  double width = 0.0;                 ///< the residual at which that loss bends
  bool isDoubtful = false;            ///< its verdict
  std::vector<Doubt> doubts;          ///< why
  double expectedError = 0.0;         ///< of the worst corner, in pixels; NaN: no figure
  double smoothed = 0.0;              ///< how far smoothing moved a corner, in pixels
  bool filled = false;                ///< interpolated
};

/// A transform between two frames.
struct BetweenFrame {
  double frame = 0.0;                 ///< the time
  std::array<double, 9> transform{};  ///< from the reference frame, row by row
};

/// Frames next to each other, both ends included, in which a track is the same.
struct TrackRun {
  int first = 0;    ///< frame
  int last = 0;     ///< frame
  std::string use;  ///< "good", "ignored" or "absent"
};

/// What became of a track.
struct Track {
  std::string name;                    ///< of the track
  double x = 0.0;                      ///< its place in the reference frame; NaN: not known
  double y = 0.0;                      ///< the same
  std::array<double, 4> covariance{};  ///< of the place, 2 x 2, in pixels^2; NaN: not known
  std::vector<TrackRun> runs;          ///< from the first frame to the last
};

/// A track that takes part in no frame.
struct LeftOutTrack {
  std::string name;  ///< of the track
  std::string why;   ///< "no-weight", "dropped" ..., as docs/result.md lists them
};

/// A track that the result leans on.
struct WorstTrack {
  std::string track;       ///< its name
  int first = 0;           ///< frame
  int last = 0;            ///< frame
  int peak = 0;            ///< the frame in which it moves a corner most
  double moves = 0.0;      ///< how far the worst corner moves there without it, in pixels
  double off = 0.0;        ///< its residual there, in deviations of ordinary tracks
  bool standsOut = false;  ///< noise does not explain it, and it matters
};

/// How many frames there are of each kind: the base frame, solved, reduced and held ones.
struct FrameCounts {
  std::size_t frames = 0;    ///< all
  std::size_t solved = 0;    ///< with a full transform of their own, but the base frame
  std::size_t reduced = 0;   ///< with a simpler one
  std::size_t held = 0;      ///< with their neighbour's
  std::size_t doubtful = 0;  ///< with a doubt, of all these
};

/// How `Result::summary` is put.
struct SummaryOptions {
  bool verbose = false;  ///< also how the base frame was chosen, what fits began with, more frames
  bool colour = false;   ///< what is doubtful in yellow, for a terminal
  std::string rows;      ///< further lines in front of the closing ones
};

/// How a file is written.
struct WriteOptions {
  std::string to;                 ///< the format, as --to names it; empty: by the path's ending
  std::string as;                 ///< "pin", "stabilise", "matrix" or "tracks" (--as); empty: a pin
  std::string nk = "points";      ///< pins in nk files by "points", "matrix" or "both" (--nk)
  std::string keyframes = "pin";  ///< keyframes of corners, "pin", or of the layer's "transform"
  std::optional<double> fps;      ///< frames a second; keyframes files need it (--fps)
  double par = 1.0;               ///< width of a pixel over its height, for keyframes (--par)
  bool readBack = true;           ///< read the file again and compare
};

/// The page that shows whether a result is good.
struct PageOptions {
  std::string pictures;  ///< "img_%04d.jpg", "img_####.jpg", a folder or a list; empty: none
                         ///< (--pictures)
  std::optional<double> pictureScale;  ///< their width over that of the tracks' picture; none: by
                                       ///< the sizes (--picture-scale)
  bool link = false;                   ///< leave the pictures beside the page (--link)
  std::string title;                   ///< empty: the name of the tracks' file, or of the result's,
                                       ///< or "shot"
};

/// A file that tracks were read from.
struct InputFile {
  std::string name;      ///< without its folder; empty where it has none
  std::string sha256;    ///< of its bytes, in lower-case hexadecimal; empty: not known
  std::string format;    ///< as --from names it; empty: not known
  std::size_t rows = 0;  ///< that were read
};

/// A solved shot. Copies share it; nothing changes it.
class CORNERPIN_SHOT_API Result {
 public:
  struct Data;  ///< what it is made of
  /// Made by `solve` and `readResult`.
  explicit Result(std::shared_ptr<const Data> data);
  Result(const Result&) = default;
  Result& operator=(const Result&) = default;
  ~Result();

  int baseFrame() const;        ///< that the others were fitted from
  std::string baseWhy() const;  ///< why it was chosen; empty where it was given
  int referenceFrame() const;   ///< that the transforms start from
  double maxError() const;      ///< above which a frame is doubtful, in pixels; NaN: none

  /// From the first frame to the last, gaps included.
  std::vector<Frame> frames() const;
  /// Of the same frames: their numbers.
  std::vector<int> frameNumbers() const;
  /// frames x 3 x 3: each carries (x, y, 1) from the reference frame to that frame, in pixels, up
  /// to a factor. Its last element is 1.
  std::vector<double> transforms() const;
  /// One for each frame, in pixels: the root of the mean squared distance that the worst corner may
  /// be off. NaN where there is no figure.
  std::vector<double> expectedErrors() const;
  /// Those that `Options::at` asked for, by rising time.
  std::vector<BetweenFrame> between() const;

  /// What the figures of trust are about, in the reference frame.
  std::vector<Quad> quads() const;
  /// frames x 4 x 2: where the corners of a quad are in each frame, in pixels; NaN on or behind the
  /// horizon. This and the next two throw `std::invalid_argument` for a quad that is not there.
  std::vector<double> corners(std::size_t quad = 0) const;
  /// frames x 4 x 2 x 2: how far noise lets each corner be off, in pixels^2; NaN without a figure.
  std::vector<double> covariance(std::size_t quad = 0) const;
  /// frames x 4: the root of the trace of each of these, in pixels.
  std::vector<double> deviation(std::size_t quad = 0) const;

  /// What it was solved from; none where that was no file, or an older file of a result does not
  /// tell.
  std::optional<InputFile> input() const;
  /// What was skipped in the file of the tracks that are at hand, "FILE:LINE: text", for people.
  std::vector<std::string> notes() const;
  /// In the order of `Tracks::names`.
  std::vector<Track> tracks() const;
  /// Those of them that take part nowhere, and why; empty where an older file does not tell.
  std::vector<LeftOutTrack> leftOutTracks() const;
  /// Those that move corners most, first those that stand out; at most five.
  std::vector<WorstTrack> worstTracks() const;

  /// What it comes to: "Good: 144 of 192 frames. Doubtful: 0-9, 11, 90-126."
  std::string closingSentence() const;
  /// Of the three worst stretches of doubtful frames, why, and what was found to help.
  std::vector<Stretch> closingStretches() const;
  /// What was found to make doubtful frames better, by trying it.
  std::vector<Stretch> advice() const;
  /// How many frames are solved, and how many doubtful.
  FrameCounts counts() const;
  /// "11 of 192 frames are doubtful: 0-9, 55"; empty where none is.
  std::string doubtfulFrames() const;
  /// All of it as the command prints it: several lines.
  std::string summary(const SummaryOptions& options = {}) const;
  /// The tracks that are worth a look, as `cornerpin explain` names them: those that move corners
  /// most and those that are ignored most, each with the `Options::drop` that leaves it out there.
  /// That this helps is not known: nothing is solved.
  std::string trackAdvice() const;

  /// The result as the JSON that `cornerpin solve -o` writes (`docs/result.md`).
  std::string toJson() const;
  /// The result as CSV, a row for each frame and quad.
  std::string toCsv() const;

  /// The same relative to another reference frame. Nothing is fitted anew; transforms are
  /// multiplied by one inverse, and quads, places and covariances are carried along.
  ///
  /// Throws `std::invalid_argument` for a frame outside the shot, a held one, and one that does not
  /// show all corners.
  Result rebase(int reference) const;

  /// The same with the tracks that it was made from, for `write` and `report`, where it was read
  /// from a file.
  ///
  /// Throws `InputError` where the file is not the one that was solved: by its digest, or, where
  /// the result does not tell that, by its tracks.
  Result withTracks(const std::string& path, const Progress& progress = {}) const;

  /// Writes the result, a pin, its inverse, the transforms or the good tracks to a file, as
  /// `WriteOptions` and the path's ending say, in the coordinates and frames of the format, and
  /// reads it again to compare. Results are written to .json and .csv; "-" is standard output.
  ///
  /// Throws `std::invalid_argument` for a format that does not hold it, what the format needs to
  /// know and `Picture` does not tell, a pin of several quads, and tracks that are not at hand, as
  /// of a result that was read from a file.
  Written write(const std::string& path, const WriteOptions& options = {},
                const Progress& progress = {}) const;
  /// Writes the page that shows whether the result is good: one file for a browser, which asks for
  /// no other unless pictures are linked; "-" is standard output. Returns which pictures were left
  /// out, as they are broken.
  ///
  /// Throws `std::invalid_argument` for pictures that are not there or do not fit.
  std::vector<std::string> report(const std::string& path, const PageOptions& options = {},
                                  const Progress& progress = {}) const;
  /// Writes a quick look at the frames as a picture, .svg or .png: how far corners may be off, the
  /// residuals and how many tracks are in use.
  ///
  /// Throws `std::invalid_argument` for another ending, `std::runtime_error` where rsvg-convert,
  /// which draws PNG, is missing.
  void plot(const std::string& path) const;
  /// Writes what every track does to every frame as CSV: track, frame, residual, weight, leverage,
  /// influence. Throws `std::invalid_argument` unless it was solved with `Options::influences`.
  void writeExplanation(const std::string& path, const Progress& progress = {}) const;

  /// Of the library alone.
  const Data& data() const { return *data_; }

 private:
  std::shared_ptr<const Data> data_;
};

/// Finds for every frame the transform that carries the surface from the reference frame to it.
///
/// Tracks that do not keep to the surface are found by how closely the others agree, and ignored;
/// `docs/robustness.md` describes the method, which fits a mixture of two kinds of errors in the
/// sense of McLachlan and Peel, Finite Mixture Models (2000), by samples of four tracks as in
/// Fischler and Bolles, Random Sample Consensus (1981). A homography's uncertainty goes back to
/// Hartley and Zisserman, Multiple View Geometry (2004), chapter 5. With the loss "none" transforms
/// are those of `MMatchmove`, to the bit.
///
/// \param tracks  Where some are left out, a copy of the others is made, but of those that are
/// moved
///                in and that nobody else has.
///
/// Throws `std::invalid_argument` for options that make no sense for these tracks.
CORNERPIN_SHOT_API Result solve(Tracks tracks, const Options& options = {},
                                const Progress& progress = {});

/// Throws where a file of that path cannot be written, as far as that can be told beforehand;
/// nothing is left behind. "-" is standard output.
///
/// With the four below it is known before a shot is solved what could only fail behind it. They
/// refuse what the functions would that they are called after, with the same exceptions.
CORNERPIN_SHOT_API void checkWritable(const std::string& path);

/// Throws `std::invalid_argument` for options that `solve` refuses whatever the tracks are.
CORNERPIN_SHOT_API void checkSolve(const Options& options);

/// What `Result::write` refuses of a result that is solved with these options.
///
/// \param tracks  that it is to be solved from; null: not known yet
CORNERPIN_SHOT_API void checkWrite(const std::string& path, const WriteOptions& options,
                                   const Options& solved = {}, const Tracks* tracks = nullptr);

/// What `Result::report` refuses of a result that is solved with these options: pictures.
///
/// \param tracks  that it is to be solved from; null: not known yet
CORNERPIN_SHOT_API void checkReport(const PageOptions& options, const Options& solved = {},
                                    const Tracks* tracks = nullptr);

/// What `Result::plot` refuses of any result.
CORNERPIN_SHOT_API void checkPlot(const std::string& path);

/// Reads a result from the JSON file of a solve; "-" is standard input. `toJson` gives the bytes of
/// the file again where this version has written it.
///
/// \param picture  what the result does not say of the tracks' picture itself, for `Result::write`
///
/// Throws `InputError` for a file that is no result, and `std::invalid_argument` for a picture that
/// contradicts the file.
CORNERPIN_SHOT_API Result readResult(const std::string& path, const Picture& picture = {});

/// Quads from a file.
struct QuadFile {
  std::vector<Quad> quads;   ///< in the order of the file's list, or of their names
  std::optional<int> frame;  ///< on which they were read, where the file says it
};

/// Reads quads from a JSON file: an object with names and corners,
/// {"sign": [[x,y],[x,y],[x,y],[x,y]]}, or one with a list `quads` of objects with `name` and
/// `corners`, and if it likes `reference_frame`, such as a result. "-" is standard input.
///
/// Throws `InputError` for a file that is nothing of the kind, and for quads that `solve` refuses.
CORNERPIN_SHOT_API QuadFile readQuads(const std::string& path);

/// How two results differ in a frame that both have.
struct FrameDifference {
  int frame = 0;           ///< its number
  double distance = 0.0;   ///< how far apart they put the corner that differs most, in pixels;
                           ///< infinite where one alone puts it on or behind the horizon
  std::size_t quad = 0;    ///< of that corner, of the first result's
  std::size_t corner = 0;  ///< in that quad
  bool transform = false;  ///< whether any bit of the transforms differs
  bool status = false;     ///< whether the status does
  bool verdict = false;    ///< whether one is doubtful and the other is not
};

/// How two results differ.
struct ResultDifference {
  bool isDifferent = false;             ///< whether anything counts
  bool onlyProgram = false;             ///< whether nothing differs but the program that made them
  bool options = false;                 ///< whether they were solved with different options
  bool input = false;                   ///< from different tracks, or nothing tells
  std::vector<FrameDifference> frames;  ///< that both have; none where no way leads from one
                                        ///< reference frame to the other
  std::string why;                      ///< why there is no way; empty where there is one
  std::vector<int> onlyFirst;           ///< frames that the second lacks
  std::vector<int> onlySecond;          ///< frames that the first lacks
  std::string text;                     ///< as `cornerpin diff` prints it, several lines
};

/// Compares two results: where they put the corners of the first one's quads, and which options,
/// tracks and frames only one has. Where they start from different reference frames, one is made
/// relative to the other's.
///
/// \param most  so many pixels a corner may be off, and nothing else counts but frames that only
///              one has; none: all counts
CORNERPIN_SHOT_API ResultDifference compare(const Result& first, const Result& second,
                                            const std::optional<double>& most = {});

/// How two files are compared.
struct CompareOptions {
  std::string fromFirst;       ///< their formats, as `ReadOptions::from` has them
  std::string fromSecond;      ///< the same
  Picture picture;             ///< what a file does not say itself
  std::optional<double> most;  ///< so many pixels a coordinate may be off, and nothing else counts
                               ///< but positions that only one has; none: all counts
};

/// How two files of tracks or pins differ.
struct FileDifference {
  bool isDifferent = false;        ///< whether anything counts
  std::size_t positions = 0;       ///< that both have
  std::size_t apart = 0;           ///< of these, elsewhere by more than the files' digits allow
  std::string explanation;         ///< "y flipped about 1080, frame +1"; empty for none
  std::string text;                ///< as `cornerpin check` prints it, several lines
  std::vector<std::string> notes;  ///< what was skipped in the files, "FILE:LINE: text"
};

/// Compares two files of the same tracks or of the same pin, in any formats, and names what
/// explains the difference. Of a result, in JSON or CSV, the corners of its quads are compared.
///
/// Throws `InputError` for a file that is refused, and `std::invalid_argument` for options that
/// make no sense and where the one is a result and the other has no four tracks.
CORNERPIN_SHOT_API FileDifference compareFiles(const std::string& first, const std::string& second,
                                               const CompareOptions& options = {});

/// A file that was converted.
struct Converted {
  Written written;                 ///< what is to be said of the new one
  std::vector<std::string> notes;  ///< what was skipped in the old one, and what became of it
};

/// Writes tracks, a pin or a result, in JSON or CSV, in another format: tracks as tracks, the
/// others as a pin, unless `WriteOptions::as` says more. Nothing is solved. "-" is standard input
/// and output.
///
/// Throws as `readTracks` and `Result::write` do.
CORNERPIN_SHOT_API Converted convert(const std::string& input, const std::string& output,
                                     const ReadOptions& read = {}, const WriteOptions& write = {});

/// What a file is.
struct FileDescription {
  std::string text;                ///< as `cornerpin info` prints it, several lines
  std::vector<std::string> notes;  ///< what was skipped in it, "FILE:LINE: text"
};

/// Says of a file of tracks what is in it, and of a result what made it and how good it is; "-" is
/// standard input.
///
/// \param colour  what is doubtful in yellow, for a terminal
///
/// Throws `InputError` for a file that is refused.
CORNERPIN_SHOT_API FileDescription describeFile(const std::string& path, bool colour = false);

/// Removes the unfinished files of this process, at most 16: for one that is about to end. Safe in
/// a signal handler.
CORNERPIN_SHOT_API void removeTemporaryFiles() noexcept;

}  // namespace cornerpin::shot

#endif
