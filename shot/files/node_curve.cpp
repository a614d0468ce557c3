// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/node_curve.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string_view>

#include "shot/files/number_text.h"

namespace cornerpin {

namespace {

using Kind = NodeWords::Kind;

constexpr double kFirstFrame = std::numeric_limits<std::int32_t>::min();
constexpr double kLastFrame = std::numeric_limits<std::int32_t>::max();

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// A digit, maybe behind a sign or a point.
bool beginsLikeNumber(std::string_view word) {
  const std::size_t digit = word.find_first_not_of("+-.");
  return digit < 2 && word[digit] >= '0' && word[digit] <= '9';
}

Parsed parseNumber(std::string_view text, double& value) {
  return parsesPlain(text, value) ? Parsed::Number : parse(text, value);
}

// Which frame a key has that does not tell it.
class FrameSteps {
 public:
  double frameOf(std::optional<double> told) {
    const double frame = told ? *told : last_ + step_;
    if (any_) step_ = frame - last_;
    any_ = true;
    last_ = frame;
    return frame;
  }

 private:
  bool any_ = false;
  double last_ = -1.0;
  double step_ = 1.0;
};

class KeyReader {
 public:
  KeyReader(NodeWords& words, std::size_t most, NodeCurve& curve)
      : words_(words), most_(most), curve_(curve) {}

  // Up to the curve's brace; false for what is no key, with `flaw` or as an expression.
  bool read() {
    for (;;) {
      const Kind kind = words_.next();
      if (kind == Kind::Word) {
        if (!take(words_.text())) return false;
      } else if (kind == Kind::Close) {
        return true;
      } else if (kind != Kind::LineEnd) {
        if (kind == Kind::Open) words_.skipGroup();
        return false;
      }
    }
  }

  std::optional<InputError> flaw;

 private:
  bool take(std::string_view word) {
    double value = 0.0;
    if (parsesPlain(word, value)) return addKey(value);
    if (word[0] == 'x') return takeFrame(word.substr(1));
    if (word.size() == 1) return isLetter(word[0]);
    const bool isTangent = std::string_view("stuv").find(word[0]) != std::string_view::npos;
    if (isTangent) return parse(word.substr(1), value) != Parsed::Nothing;
    const Parsed parsed = parse(word, value);
    if (parsed == Parsed::Number) return addKey(value);
    return beginsLikeNumber(word) && fail(flawOfNumber("the value", word, parsed));
  }

  bool takeFrame(std::string_view text) {
    double frame = 0.0;
    const Parsed parsed = parseNumber(text, frame);
    if (parsed == Parsed::Nothing) return false;
    if (parsed == Parsed::OutOfRange || !inRange(frame)) return failFrame();
    told_ = frame;
    return true;
  }

  bool addKey(double value) {
    const double frame = steps_.frameOf(told_);
    told_.reset();
    if (!inRange(frame)) return failFrame();
    if (frame != std::floor(frame)) {
      ++curve_.between;
      return true;
    }
    if (std::isnan(value)) return true;
    if (!(std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max()))) {
      return fail(flawOfPosition("the value", words_.text(), value));
    }
    if (curve_.frames.size() == most_) {
      return fail(fmt::format("the curve has more than {} keys", most_));
    }
    curve_.frames.push_back(static_cast<std::int32_t>(frame));
    curve_.values.push_back(value);
    return true;
  }

  static bool inRange(double frame) { return frame >= kFirstFrame && frame <= kLastFrame; }

  bool failFrame() {
    return fail(fmt::format("the frame of {} is no whole number of 32 bits", shown(words_.text())));
  }

  bool fail(const std::string& text) {
    flaw = words_.error(text);
    return false;
  }

  NodeWords& words_;
  std::size_t most_;
  NodeCurve& curve_;
  FrameSteps steps_;
  std::optional<double> told_;
};

// An element that is one word, or stands in braces of its own.
std::optional<InputError> takeConstant(const NodeWords& words, NodeCurve& curve) {
  double value = 0.0;
  const Parsed parsed = parseNumber(words.text(), value);
  if (parsed == Parsed::Nothing) {
    curve.expression = words.text().substr(0, kShownLength + 1);
  } else if (!std::isnan(value)) {
    const std::string flaw = parsed == Parsed::Number
                                 ? flawOfPosition("the value", words.text(), value)
                                 : flawOfNumber("the value", words.text(), parsed);
    if (!flaw.empty()) return words.error(flaw);
    curve.constant = value;
  }
  return std::nullopt;
}

// Behind a first word, goes behind the group.
void takeExpression(NodeWords& words, NodeWords::Mark from, NodeCurve& curve) {
  words.skipGroup();
  curve.clear();
  curve.expression = words.since(from, kShownLength + 1);
  if (curve.expression.empty()) curve.expression = "{...}";
}

std::optional<InputError> takeKeys(NodeWords& words, NodeWords::Mark from, std::size_t most,
                                   NodeCurve& curve) {
  KeyReader keys(words, most, curve);
  if (keys.read()) return std::nullopt;
  takeExpression(words, from, curve);
  if (keys.flaw) curve.clear();
  return keys.flaw;
}

// Whether the group ends here; what stands there instead has been skipped.
bool closes(NodeWords& words) {
  const Kind kind = words.nextItem();
  if (kind == Kind::Open) words.skipGroup();
  return kind == Kind::Close;
}

std::optional<InputError> takeGroup(NodeWords& words, std::size_t most, NodeCurve& curve) {
  const NodeWords::Mark from = words.mark();
  const Kind kind = words.nextItem();
  if (kind == Kind::Close) return std::nullopt;
  if (kind == Kind::Open) {
    words.skipGroup();
    takeExpression(words, from, curve);
    return std::nullopt;
  }
  if (trimmed(words.text()) == "curve") return takeKeys(words, from, most, curve);
  std::optional<InputError> flaw = takeConstant(words, curve);
  if (flaw) {
    words.skipGroup();
  } else if (!closes(words)) {
    takeExpression(words, from, curve);
  } else if (!curve.expression.empty()) {
    curve.expression = "{" + curve.expression + "}";
  }
  return flaw;
}

template <class T>
std::vector<T> inOrder(const std::vector<T>& from, const std::vector<std::uint32_t>& order) {
  std::vector<T> to;
  to.reserve(order.size());
  for (const std::uint32_t i : order) to.push_back(from[i]);
  return to;
}

}  // namespace

void NodeCurve::clear() {
  constant.reset();
  frames.clear();
  values.clear();
  between = 0;
  expression.clear();
}

std::optional<InputError> readNodeCurve(NodeWords& words, NodeWords::Kind kind,
                                        std::size_t mostKeys, NodeCurve& curve) {
  curve.clear();
  return kind == Kind::Open ? takeGroup(words, mostKeys, curve) : takeConstant(words, curve);
}

std::optional<std::int32_t> sortKeys(NodeCurve& curve) {
  auto& frames = curve.frames;
  if (!std::is_sorted(frames.begin(), frames.end())) {
    std::vector<std::uint32_t> order(frames.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
      return frames[a] != frames[b] ? frames[a] < frames[b] : a < b;
    });
    curve.values = inOrder(curve.values, order);
    frames = inOrder(frames, order);
  }
  const auto twice = std::adjacent_find(frames.begin(), frames.end());
  if (twice == frames.end()) return std::nullopt;
  return *twice;
}

Unpaired pairKeys(const NodeCurve& x, const NodeCurve& y, std::vector<NodeKey>& to) {
  Unpaired unpaired;
  const auto skip = [&](std::size_t& count, std::int32_t frame) {
    if (unpaired.x + unpaired.y == 0) unpaired.first = frame;
    ++count;
  };
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < x.frames.size() || j < y.frames.size()) {
    const bool isX = i < x.frames.size() && (j == y.frames.size() || x.frames[i] <= y.frames[j]);
    const bool isY = j < y.frames.size() && (i == x.frames.size() || y.frames[j] <= x.frames[i]);
    const std::int32_t frame = isX ? x.frames[i] : y.frames[j];
    const std::optional<double> atX = isX ? x.values[i++] : x.constant;
    const std::optional<double> atY = isY ? y.values[j++] : y.constant;
    if (atX && atY) {
      to.push_back({*atX, *atY, frame, 1.0f});
    } else {
      skip(isX ? unpaired.x : unpaired.y, frame);
    }
  }
  return unpaired;
}

void enableKeys(const NodeCurve& enable, NodeKey* first, NodeKey* last) {
  std::size_t i = 0;
  for (NodeKey* key = first; key != last; ++key) {
    while (i + 1 < enable.frames.size() && enable.frames[i + 1] <= key->frame) ++i;
    const double value = enable.hasKeys() ? enable.values[i] : enable.constant.value_or(1.0);
    key->weight = value != 0.0 ? 1.0f : 0.0f;
  }
}

}  // namespace cornerpin
