// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_MGEOMETRY_H
#define CORNERPIN_GEOMETRY_MGEOMETRY_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/array.h"
#include "cornerpin/foundation/lv_vector.h"

/// \file
/// Geometry of the plane: nearest points on segments and ellipses.

// ---- Segments and ellipses ----------------------------------------------------------------------

/// The point of the segment from s0 to s1 that is nearest to p. A segment of length zero gives
/// NaNs: there is no special case for it.
CORNERPIN_API LvVector2<float> nearestPointOnSegment(const LvVector2<float>& s0,
                                                     const LvVector2<float>& s1,
                                                     const LvVector2<float>& p);

/// The points of an ellipse whose normal passes through p, by a quartic (`solveQuartic`).
///
/// \param c     the centre.
/// \param A, B  the axis vectors: the ellipse is c + cos t A + sin t B. They are expected to be
///              perpendicular, which is not checked; with skewed ones the computation takes |A| and
///              |B| as semi-axes of x^2 / |A|^2 + y^2 / |B|^2 = 1 in the skewed frame.
/// \param out   resized to the number of points: up to four, in the quartic's order. May hold the
///              other arguments. Left alone when memory runs out.
///
/// When B is zero, or shorter than 1e-8 of A, the ellipse counts as the segment from c + A to
/// c - A and has one point, the nearest of that segment. A short A is no such case.
///
/// Points may be missing, come out as NaN, or lie off the ellipse's true normals; see below.
/// Only `out` allocates.
CORNERPIN_API void normalPointsOnEllipse(const LvVector2<float>& c, const LvVector2<float>& A,
                                         const LvVector2<float>& B, const LvVector2<float>& p,
                                         MArray<LvVector2<float>>& out);

/// The one of those points that is nearest to p, the earliest on a tie. Throws `LvException`
/// "malformed ellipse" when there is none.
///
/// For circles, and for points off the axes of ellipses with an axis ratio of 0.5 or less, right
/// to about 2e-7 |A|, save for one point in ten thousand. It fails where the quartic does:
///
///     ratio |B| / |A|          0.1     0.5     0.9    0.99   0.999  0.99999
///     point anywhere, throws    0 %     0 %   0.4 %   1.3 %   3.5 %    19 %
///                     wrong     0 %  0.01 %     0 %  0.01 %   0.6 %    22 %
///     p on B's axis,  throws   35 %    52 %    93 %    99 %   100 %   100 %
///                     wrong    65 %    48 %     7 %   0.6 %       0       0
///     p on A's axis,  wrong    19 %    13 %     3 %       0       0     2 %
///
/// Points are drawn from the square of half-width 2 |A| about the centre, 20000 each
/// (closed_form_survey). Wrong is an error of more than 0.001 |A|; the largest seen is 1.5 |A|.
/// The centre itself gives an end of the shorter axis up to rounding, or throws, as |A| has it: for
/// 37 % of random lengths and for every power of two.
/// `cornerpin::closestPointOnEllipse` has none of these failures.
CORNERPIN_API LvVector2<float> closestPointOnEllipse(const LvVector2<float>& c,
                                                     const LvVector2<float>& A,
                                                     const LvVector2<float>& B,
                                                     const LvVector2<float>& p);

namespace cornerpin {

/// The point of the ellipse c + cos t A + sin t B that is nearest to p.
///
/// Works for every finite input: flat ellipses (A, B or both zero, or along one line), circles,
/// points at the centre, on the axes and on the evolute, axes of any size and in any order. Skewed
/// axes are taken at their word: the curve is an ellipse all the same, and the nearest point is
/// one of that curve.
///
/// Where several points are equally near, it is the one on the side that the axis vector points
/// to; at the centre of a circle, c + A. Either axis may be the longer one. A coordinate beyond the
/// range of `double` comes out infinite.
///
/// Throws `LvIllegalArgumentException` "NaN" or "infinite number" for such input, nothing else.
///
/// Accuracy: both coordinates to one unit in the last place or 1e-30 of the largest of |c|, |A| and
/// |B|, as tested for axis ratios down to 0.001, skewed axes, and points from 0.001 to 1000 |A|
/// away. Should p lie on a cusp of the evolute of a turned ellipse to all its digits, to 1e-10 |A|.
/// Cost: no allocation; about 2 microseconds.
///
/// Method: after D. Eberly, "Distance from a point to an ellipse, an ellipsoid, or a
/// hyperellipsoid", 2013, in a form without cancellation and in double-double arithmetic.
CORNERPIN_API LvVector2<double> closestPointOnEllipse(const LvVector2<double>& c,
                                                      const LvVector2<double>& A,
                                                      const LvVector2<double>& B,
                                                      const LvVector2<double>& p);

}  // namespace cornerpin

#endif
