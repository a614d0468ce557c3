// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_MMOD_H
#define CORNERPIN_GEOMETRY_MMOD_H

/// \file
/// Remainders and walks round a ring.

#include "cornerpin/export.h"

/// Reports a misuse of the helpers below: throws `LvIllegalArgumentException` with the message,
/// the file and the line. A null text counts as empty.
[[noreturn]] CORNERPIN_API void _MMod_error(const char* message, const char* file, int line);

/// Integer arithmetic on a ring of n positions, 0 .. n - 1, such as the corners of a quad or the
/// vertices of a closed outline.
namespace MMod {

/// The r with 0 <= r < n that differs from a by a multiple of n; the built-in remainder follows
/// the sign of a instead. So -1 gives n - 1.
///
/// n must be positive: otherwise `LvIllegalArgumentException` "MMod::mod: the divisor must be
/// positive", file "MMod".
inline int mod(int a, int n) {
  if (n <= 0) _MMod_error("MMod::mod: the divisor must be positive", "MMod", __LINE__);
  const int r = a % n;
  return r < 0 ? r + n : r;
}

/// Which way a walk goes round the ring.
enum Direction : int {
  Forward = 1,    ///< ascending, n - 1 is followed by 0
  Backward = -1,  ///< descending, 0 is followed by n - 1
};

/// A walk once round a ring; made by `MMod::loop`.
class Loop {
 public:
  /// One step of the walk. For `for`; two of them compare by how far the walk has come.
  class Iterator {
   public:
    /// At `position` after `visited` steps.
    Iterator(int n, int position, Direction direction, int visited)
        : n_(n), position_(position), direction_(direction), visited_(visited) {}

    /// The position, 0 .. n - 1.
    int operator*() const { return position_; }
    /// On to the next position.
    Iterator& operator++() {
      if (direction_ == Forward) {
        position_ = position_ == n_ - 1 ? 0 : position_ + 1;
      } else {
        position_ = position_ == 0 ? n_ - 1 : position_ - 1;
      }
      ++visited_;
      return *this;
    }
    /// \{
    /// Steps taken, not positions: the end of a walk lies where it began.
    bool operator==(const Iterator& other) const { return visited_ == other.visited_; }
    bool operator!=(const Iterator& other) const { return visited_ != other.visited_; }
    /// \}

   private:
    int n_;
    int position_;
    Direction direction_;
    int visited_;
  };

  /// Use `MMod::loop`, which checks n and reduces the start to a position `first`.
  Loop(int n, int first, Direction direction) : n_(n), first_(first), direction_(direction) {}

  /// \{
  /// The start of the walk, and the start again after all n positions.
  Iterator begin() const { return Iterator(n_, first_, direction_, 0); }
  Iterator end() const { return Iterator(n_, first_, direction_, n_); }
  /// \}
  /// n, the number of positions.
  int size() const { return n_; }

 private:
  int n_;
  int first_;
  Direction direction_;
};

/// Visits each of the n positions of a ring once, beginning at any `start`, which is reduced with
/// `mod`, so that -1 is the last position:
///
///     for (int i : MMod::loop(4, corner)) use(quad[i], quad[MMod::mod(i + 1, 4)]);
///     for (int i : MMod::loop(n, -1, MMod::Backward)) ...   // n - 1, ..., 1, 0
///
/// n must be positive: otherwise `LvIllegalArgumentException` "MMod::loop: the number of
/// positions must be positive". A direction other than the two, which only a cast can make, is
/// refused with "MMod::loop: the direction must be Forward or Backward". File "MMod" in both.
inline Loop loop(int n, int start = 0, Direction direction = Forward) {
  if (n <= 0) {
    _MMod_error("MMod::loop: the number of positions must be positive", "MMod", __LINE__);
  }
  if (direction != Forward && direction != Backward) {
    _MMod_error("MMod::loop: the direction must be Forward or Backward", "MMod", __LINE__);
  }
  return Loop(n, mod(start, n), direction);
}

}  // namespace MMod

#endif
