// SPDX-License-Identifier: BSD-3-Clause
// Pins a layer's corners to a quad, and hands the result on to a part of the host that knows only
// affine layers: a matrix, or a scale and a position.
#include <cornerpin/cornerpin.h>

#include <cstdio>

int main() {
  // A layer of 1000 x 600 pixels, and where its corners go, in the same order.
  const LvVector2<double> layer[4] = {{0, 0}, {1000, 0}, {1000, 600}, {0, 600}};
  const LvVector2<double> quad[4] = {{300, 300}, {1500, 200}, {1275, 750}, {400, 1000}};
  LvMatrix44Tmpl<double> pin;
  MComputeQuadToQuadProjectionMatrix(layer[0], layer[1], layer[2], layer[3], quad[0], quad[1],
                                     quad[2], quad[3], pin);

  // The affine map that touches the pin in the middle of the layer.
  const LvVector3<double> middle(500, 300, 0);
  LvMatrix44Tmpl<double> affine;
  perspectiveToAffine(pin, middle, &affine);
  std::printf("affine  %6.3f %6.3f %7.1f\n", affine(0, 0), affine(0, 1), affine(0, 3));
  std::printf("        %6.3f %6.3f %7.1f\n", affine(1, 0), affine(1, 1), affine(1, 3));

  LvVector3<double> scale;
  LvVector3<double> move;
  getScaleTranslate(pin, middle, &scale, &move);
  std::printf("scale %.3f %.3f, moved by %.1f %.1f\n", scale._x, scale._y, move._x, move._y);

  // Right in the middle of the layer, and less so the farther away.
  for (const LvVector2<double>& p : {LvVector2<double>(500, 300), layer[0]}) {
    LvVector2<double> pinned;
    LvVector2<double> touching;
    pin.transform(p, pinned);
    affine.transform(p, touching);
    std::printf("(%g, %g): pinned %.1f %.1f, affine %.1f %.1f\n", p._x, p._y, pinned._x, pinned._y,
                touching._x, touching._y);
  }
}
