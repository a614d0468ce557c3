// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/skip_notes.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kEnds = " \t{}()\"";  // of words

std::string_view withoutBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// What stands around the rows: words, texts in quotes, and braces and brackets, over any number of
// lines.
class Rz2Words {
 public:
  explicit Rz2Words(LineReader& lines) : lines_(lines) {}

  // Moves to the next word, text or sign; false at the end of the file.
  bool next() {
    if (!fill()) return false;
    isText_ = rest_[0] == '"';
    if (isText_) {
      takeText();
    } else {
      const std::size_t end = rest_.find_first_of(kEnds);
      take(end == 0 ? 1 : std::min(end, rest_.size()));
    }
    return true;
  }

  // The same inside of what began on a line; throws where the file ends.
  void require(std::uint32_t begun, const char* what) {
    if (!next()) refuseEnd(begun, what);
  }

  // What is left of the line, or the next line that has anything, up to a closing brace.
  std::string_view requireRow(std::uint32_t begun, const char* what) {
    if (!fill()) refuseEnd(begun, what);
    take(std::min(rest_.find('}'), rest_.size()));
    return word_;
  }

  bool isText() const { return isText_; }
  bool is(std::string_view word) const { return !isText_ && word_ == word; }
  // Of a text that goes over several lines nothing.
  std::string_view word() const { return word_; }
  bool isEndOfLine() const { return withoutBlanks(rest_).empty(); }

  // From an opening brace or bracket behind the one that closes it.
  void skip(std::string_view open, std::string_view close, const char* what) {
    const std::uint32_t begun = lines_.line();
    for (std::size_t depth = 1; depth > 0;) {
      require(begun, what);
      if (is(open)) ++depth;
      if (is(close)) --depth;
    }
  }

 private:
  bool fill() {
    rest_ = withoutBlanks(rest_);
    while (rest_.empty()) {
      if (!lines_.next()) return false;
      rest_ = withoutBlanks(lines_.text());
    }
    return true;
  }

  [[noreturn]] void refuseEnd(std::uint32_t begun, const char* what) const {
    throw InputError(lines_.file(), begun, fmt::format("the {} has no end", what));
  }

  void take(std::size_t length) {
    word_ = rest_.substr(0, length);
    rest_.remove_prefix(length);
  }

  void takeText() {
    rest_.remove_prefix(1);
    const std::uint32_t begun = lines_.line();
    std::size_t end = rest_.find('"');
    const bool isOneLine = end != std::string_view::npos;
    for (; end == std::string_view::npos; end = rest_.find('"')) {
      if (!lines_.next()) {
        throw InputError(lines_.file(), begun, "the quotes that open here do not close");
      }
      rest_ = lines_.text();
    }
    take(end);
    if (!isOneLine) word_ = {};
    rest_.remove_prefix(1);
  }

  LineReader& lines_;
  std::string_view rest_;  // of the line
  std::string_view word_;
  bool isText_ = false;
};

bool isKind(std::string_view word) {
  if (word.size() != 2) return false;
  return word[0] == 'k' ||
         (word[0] == 'p' && std::string_view("+-*").find(word[1]) != std::string_view::npos);
}

// Blocks `pointTrack "name" { rows }` behind a block `imageSequence "name" { width height f( path )
// b( first last step ) }`. Rows are frame, x, y and then words with brackets: one of the kinds of
// positions with its confidence, and areas around it.
class Rz2Reader {
 public:
  explicit Rz2Reader(const TrackInput& input)
      : file_(input),
        words_(file_.lines),
        owned_(file_.tracks),
        skipped_(file_.lines.file(), input.trace.notes, {"blocks"}) {}

  Tracks read() {
    file_.readAll([&] {
      while (words_.next()) readBlock();
    });
    skipped_.close();
    return file_.finish(picture_);
  }

 private:
  // The sequence that the tracks are of.
  struct Size {
    int width = 0;
    int height = 0;
    int first = 0;  // where the file has no range
    bool operator!=(const Size& other) const {
      return width != other.width || height != other.height || first != other.first;
    }
  };

  void readBlock() {
    if (words_.is("imageSequence")) {
      readSequence();
    } else if (words_.is("pointTrack")) {
      readTrack();
    } else {
      skipBlock();
    }
  }

  // Other blocks, and what stands between blocks, up to the end of the line.
  void skipBlock() {
    if (!words_.is("{")) {
      skipped_.add(0, file_.lines.line(),
                   [&] { return fmt::format("{} is skipped", shown(words_.word())); });
    }
    while (!words_.is("{")) {
      if (words_.isEndOfLine()) return;
      words_.next();
    }
    words_.skip("{", "}", "block");
  }

  // What stands between a block's word and its brace; the name, or its number where there is
  // none or it is empty.
  std::string takeHeader(std::size_t number) {
    const std::uint32_t begun = file_.lines.line();
    std::string name = fmt::format("{}", number);
    bool isNamed = false;
    for (words_.require(begun, "block"); !words_.is("{"); words_.require(begun, "block")) {
      if (words_.is("(")) words_.skip("(", ")", "bracket");
      if (words_.isText() && !isNamed && !words_.word().empty()) name = words_.word();
      isNamed = isNamed || words_.isText();
    }
    return name;
  }

  void readSequence() {
    const std::uint32_t begun = file_.lines.line();
    sequence_ = takeHeader(++sequences_);
    Size size;
    std::size_t numbers = 0;
    bool isRange = false;
    for (words_.require(begun, "block"); !words_.is("}"); words_.require(begun, "block")) {
      if (words_.is("(")) {
        words_.require(begun, "bracket");
        if (isRange && !words_.is(")")) size.first = wholeOf("the first frame");
        if (!words_.is(")")) words_.skip("(", ")", "bracket");
      } else if (numbers < 2 && !words_.isText() && !words_.is("f") && !words_.is("b")) {
        (numbers++ == 0 ? size.width : size.height) = lengthOf("the picture's size");
      }
      isRange = words_.is("b");
    }
    if (numbers < 2) throw InputError(file_.lines.file(), begun, "the sequence has no size");
    setSize(begun, size);
  }

  std::int32_t wholeOf(const char* name) const {
    Words words(file_.lines, words_.word());
    return words.takeWhole(name);
  }

  std::int32_t lengthOf(const char* name) const {
    const std::int32_t length = wholeOf(name);
    if (length > 0) return length;
    throw file_.lines.error(words_.word(),
                            fmt::format("{} must be above 0: {}", name, shown(words_.word())));
  }

  void setSize(std::uint32_t line, const Size& size) {
    if (sequences_ > 1 && size != size_) {
      throw InputError(file_.lines.file(), line,
                       "the sequence has another size or first frame than the one before: split "
                       "the file");
    }
    size_ = size;
    picture_.width = size.width;
    picture_.height = size.height;
    picture_.firstFrame = size.first;
  }

  void readTrack() {
    const std::uint32_t begun = file_.lines.line();
    const std::string name = takeHeader(++tracks_);
    std::int32_t track = -1;
    for (;;) {
      const std::string_view text = words_.requireRow(begun, "track");
      if (text.empty()) break;
      file_.takeRow(Words(file_.lines, text), [&](Words& words, Observation& row) {
        row.frame = words.takeFrame();
        const bool isThere = takePlace(file_.lines, words, row);
        takeConfidence(words.rest(), row);
        if (!isThere) return false;
        if (track < 0) track = owned_.track(name, sequence_);
        row.track = track;
        return true;
      });
    }
    words_.next();
  }

  void takeConfidence(std::string_view rest, Observation& row) const {
    while (!rest.empty()) {
      const std::string_view word = rest.substr(0, rest.find_first_of(" \t("));
      rest = withoutBlanks(rest.substr(word.size()));
      if (rest.empty() || rest[0] != '(') continue;
      const std::size_t end = rest.find(')');
      if (end == std::string_view::npos) {
        throw file_.lines.error(rest, "the bracket that opens here does not close");
      }
      Words inside(file_.lines, rest.substr(1, end - 1));
      if (isKind(word) && !inside.atEnd()) {
        row.weight = takeWeight(file_.lines, inside, "the confidence");
      }
      rest = withoutBlanks(rest.substr(end + 1));
    }
  }

  LineTracks file_;
  Rz2Words words_;
  OwnedTracks owned_;
  SkipNotes skipped_;
  Picture picture_ = factsOf(Format::Rz2).picture;
  Size size_;
  std::string sequence_;
  std::size_t sequences_ = 0;
  std::size_t tracks_ = 0;
};

}  // namespace

Tracks readRz2(const TrackInput& input) { return Rz2Reader(input).read(); }

}  // namespace cornerpin
