// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_MGEOMETRY_H
#define CORNERPIN_GEOMETRY_MGEOMETRY_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_matrix44.h"
#include "cornerpin/foundation/lv_vector.h"

/// \file
/// Projective quad mappings, and affine approximations of projective transforms.

/// \name Projective quad mappings
///
/// Errors are not reported.
///
/// A quad is given by its corners in order round it: p0, p1, p2 and p3 are the images of the unit
/// square's (0, 0), (1, 0), (1, 1) and (0, 1). It should be convex; a quad that is not has points
/// inside it at infinity. Any unit of length.
///
/// The planar homography [[a, b, c], [d, e, f], [g, h, i]] is carried by the 4 x 4 matrix with the
/// rows (a, b, 0, c), (d, e, 0, f), (0, 0, i, 0) and (g, h, 0, i): transforming points of the
/// plane z = 0 applies it. A z coordinate is carried as i * z and divided by the same w.
///
/// Degenerate quads: p1, p2 and p3 on one line give infinities or NaNs; other quads without an
/// area give a singular matrix.
///
/// Accuracy: for corners within 0.2 of the unit square's, points of either square or quad land
/// within 10 * eps of where exact arithmetic sends them, and from quad to quad within 20 * eps, as
/// tested. The error grows as p1, p2 and p3 near one line: a hundredfold for 0.3 instead of 0.2.
/// Cost: closed forms without allocation.
///
/// Method: P. S. Heckbert, "Fundamentals of Texture Mapping and Image Warping", University of
/// California, Berkeley, 1989, section 2.2.3.
/// \{

/// The unit square onto the quad, with element (3, 3) and so (2, 2) equal to 1. Exactly affine,
/// with the bottom row (0, 0, 0, 1), where p0 - p1 + p2 - p3 is exactly zero: a parallelogram.
///
/// \param out  overwritten whole.
CORNERPIN_API void MComputeSquareToQuadProjectionMatrix(const LvVector2<double>& p0,
                                                        const LvVector2<double>& p1,
                                                        const LvVector2<double>& p2,
                                                        const LvVector2<double>& p3,
                                                        LvMatrix44Tmpl<double>& out);

/// The quad onto the unit square: the adjugate of the square-to-quad homography. It is not divided
/// by the determinant, so the product of the two matrices is a multiple of the identity on the
/// plane; the size of element (3, 3) = (2, 2) follows the area of the quad.
///
/// \param out  overwritten whole.
CORNERPIN_API void MComputeQuadToSquareProjectionMatrix(const LvVector2<double>& p0,
                                                        const LvVector2<double>& p1,
                                                        const LvVector2<double>& p2,
                                                        const LvVector2<double>& p3,
                                                        LvMatrix44Tmpl<double>& out);

/// The source quad s onto the target quad t, by way of the unit square.
///
/// The whole matrix is scaled so that its bottom row has length 1, unless that length is below
/// 1e-7, as it is for a source quad of tiny area: the matrix then stays as it is. Element (2, 2)
/// is the product of the two factors' and no longer equals element (3, 3), so a z coordinate
/// other than 0 is not kept.
///
/// \param out  overwritten whole.
CORNERPIN_API void MComputeQuadToQuadProjectionMatrix(
    const LvVector2<double>& s0, const LvVector2<double>& s1, const LvVector2<double>& s2,
    const LvVector2<double>& s3, const LvVector2<double>& t0, const LvVector2<double>& t1,
    const LvVector2<double>& t2, const LvVector2<double>& t3, LvMatrix44Tmpl<double>& out);

/// The image of the point `uv` of the unit square in the quad, without building a matrix.
///
/// \param out  may be any of the inputs. Infinite or NaN where uv lies on the line that the
///             mapping sends to infinity.
CORNERPIN_API void MProjectionMapSquareToQuad(const LvVector2<double>& p0,
                                              const LvVector2<double>& p1,
                                              const LvVector2<double>& p2,
                                              const LvVector2<double>& p3,
                                              const LvVector2<double>& uv, LvVector2<double>& out);

/// The square coordinates (u, v) of the point `xy` in the quad, without building a matrix.
///
/// \param out  may be any of the inputs. Infinite or NaN where xy lies on the line that the
///             mapping sends to infinity.
CORNERPIN_API void MProjectionMapQuadToSquare(const LvVector2<double>& p0,
                                              const LvVector2<double>& p1,
                                              const LvVector2<double>& p2,
                                              const LvVector2<double>& p3,
                                              const LvVector2<double>& xy, LvVector2<double>& out);

/// \}

/// \name Affine approximation of a projective transform
///
/// Near a point p, a projective transform m is replaced by its tangent: the affine map with m's
/// value and first derivatives at p. Where the projective denominator, row 3 of m times (p, 1), is
/// zero, the results are infinite or NaN; no errors are reported. Pointers must be valid. The
/// derivative numbers used within release their arrays before the functions return.
/// \{

/// Writes q + J * (x - p) as a matrix, with q the image of p and J the Jacobian of m at p: J in the
/// upper left block, q - J * p in column 3, and the bottom row (0, 0, 0, 1).
///
/// Zero components of p and of q are skipped, so that a Jacobian column that is not finite stays
/// out of the translation where p is zero.
///
/// \param aff  overwritten whole. May be &m.
CORNERPIN_API void perspectiveToAffine(const LvMatrix44Tmpl<double>& m, const LvVector3<double>& p,
                                       LvMatrix44Tmpl<double>* aff);

/// What m does at p as a layer's scale and position would say it.
///
/// \param weights    multiply the output coordinates before lengths are taken: component i of
///                   `scale` is the length of (J(0, i) * wx, J(1, i) * wy, J(2, i) * wz).
/// \param scale      one factor for each input axis, never negative: a mirroring does not show.
///                   May be &p or &weights.
/// \param translate  how far p moves: its image minus p. May be &p or &weights.
CORNERPIN_API void getScaleTranslate(const LvMatrix44Tmpl<double>& m, const LvVector3<double>& p,
                                     const LvVector3<double>& weights, LvVector3<double>* scale,
                                     LvVector3<double>* translate);

/// The same with the weights (1, 1, 1).
CORNERPIN_API void getScaleTranslate(const LvMatrix44Tmpl<double>& m, const LvVector3<double>& p,
                                     LvVector3<double>* scale, LvVector3<double>* translate);

/// The same at the origin, with the weights (1, 1, 1).
CORNERPIN_API void getScaleTranslate(const LvMatrix44Tmpl<double>& m, LvVector3<double>* scale,
                                     LvVector3<double>* translate);

/// \}

#endif
